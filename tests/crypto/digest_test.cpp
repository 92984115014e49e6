#include <gtest/gtest.h>

#include <tuple>

#include "crypto/message_digest.h"
#include "crypto/sha.h"
#include "support/hex.h"

namespace {

ZnByteBuffer Text(const std::string& text) { return {text.data(), text.size()}; }

// Of the test suites of RFC 1320 and RFC 1321, and texts that end around the border of a block.
const std::tuple<std::string, const char*, const char*> kDigests[] = {
    {"", "31d6cfe0d16ae931b73c59d7e0c089c0", "d41d8cd98f00b204e9800998ecf8427e"},
    {"abc", "a448017aaf21d8525fc10ae87aa6729d", "900150983cd24fb0d6963f7d28e17f72"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "043f8582f241db351ce627e153e7f0e4",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "e33b4ddc9c38f2199c3e7b164fcc0536", "57edf4a22be3c955ac49da2e2107b67a"},
    {std::string(55, 'a'), "c889c81dd86c4d2e025778944ea02881", "ef1772b6dff9a122358552954ad0df65"},
    {std::string(56, 'a'), "d5f9a9e9257077a5f08b0b92f348b0ad", "3b0c8ac703f828b04c6c197006d17218"},
};

TEST(MessageDigest, PublishedVectorsWholeAndInPieces) {
  for (const auto& [text, md4, md5] : kDigests) {
    EXPECT_EQ(ToHex(ZnMessageDigest::MDEncode(Text(text), 4)), md4) << text;
    EXPECT_EQ(ToHex(ZnMessageDigest::MDEncode(Text(text), 0)), md5) << text;
    for (size_t cut = 0; cut <= text.size(); cut++) {
      ZnMessageDigest::MDInit(5);
      ZnMessageDigest::MDUpdate(Text(text.substr(0, cut)));
      ZnMessageDigest::MDUpdate(Text(text.substr(cut)));
      EXPECT_EQ(ToHex(ZnMessageDigest::MDFinal()), md5) << text << cut;
    }
  }
}

// FIPS 180-1, appendices A to C, and the borders of a block.
TEST(Sha, PublishedVectors) {
  const std::pair<std::string, const char*> vectors[] = {
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
  };
  for (const auto& [text, digest] : vectors) EXPECT_EQ(ToHex(ZnSHA::SHAEncrypt(Text(text))), digest) << text.size();
}

}  // namespace
