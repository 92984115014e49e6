#include <gtest/gtest.h>

#include <array>

#include "crypto/encrypt.h"
#include "runtime/uni_string.h"
#include "support/hex.h"

namespace {

ZnByteBuffer Text(const std::string& text) { return {text.data(), text.size()}; }

// Well-known answers, those of MS-NLMP 4.2.2 among them: the password in upper case and as it is, its LAN manager and
// NT hashes, and the responses by each to one challenge.
const std::array<const char*, 6> kPasswords[] = {
    {"PASSWORD", "Password", "e52cac67419a9a224a3b108f3fa6cb6d", "a4f49c406510bdcab6824ee7c30fd852",
     "98def7b87f88aa5dafe2df779688a172def11c7d5ccdef13", "67c43011f30298a2ad35ece64f16331c44bdbed927841f94"},
    {"SECRET01", "SecREt01", "ff3750bcc2b22412c2265b23734e0dac", "cd06ca7c7e10c99b1d33b7485a2ed808",
     "c337cd5cbd44fc9782a667af6d427c6de67c20c2d3e77c56", "25a98c1c31e81847466b29b2df4680f39958fb8c213a9cc6"},
};

TEST(Passwords, HashesAndResponses) {
  for (const auto& [upper, password, lm, nt, byLm, byNt] : kPasswords) {
    const ZnByteBuffer lmhash = ZnEncrypt::MSHash(Text(upper));
    const ZnByteBuffer nthash = ZnEncrypt::UNIHash(ZnUniString(password).AsEncoding(ZnCodeset::Utf16Lsb));
    EXPECT_EQ(ToHex(lmhash), lm);
    EXPECT_EQ(ToHex(nthash), nt);
    for (const auto& [hash, expected] : {std::pair(lmhash, byLm), {nthash, byNt}}) {
      const ZnByteBuffer response = ZnEncrypt::Encrypt_hash(hash, Hex("0123456789abcdef"));
      EXPECT_EQ(ToHex(response), expected);
      EXPECT_TRUE(hash.IsSecret() && response.IsSecret());
    }
  }
}

TEST(Passwords, LanManagerTakesFourteenBytesAndFillsUpWithZeros) {
  EXPECT_EQ(ToHex(ZnEncrypt::MSHash({})), "aad3b435b51404eeaad3b435b51404ee");
  const std::string text = "ABCDEFGHIJKLMNOPQRST";
  EXPECT_EQ(ZnEncrypt::MSHash(Text(text)), ZnEncrypt::MSHash(Text(text.substr(0, 14))));
  EXPECT_NE(ZnEncrypt::MSHash(Text(text)), ZnEncrypt::MSHash(Text(text.substr(0, 13))));
}

}  // namespace
