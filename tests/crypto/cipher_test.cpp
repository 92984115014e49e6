#include <gtest/gtest.h>

#include <array>

#include "crypto/des.h"
#include "crypto/encrypt.h"
#include "support/hex.h"

namespace {

// Key with parity, plain text and cipher text, of NBS Special Publication 500-20.
const std::array<const char*, 3> kKnownAnswers[] = {
    {"7CA110454A1A6E57", "01A1D6D039776742", "690f5b0d9a26939b"},
    {"1C587F1C13924FEF", "305532286D6F295A", "63fac0d034d9f793"},
};

// The 56 key bits of an 8-byte key.
ZnByteBuffer WithoutParity(const ZnByteBuffer& key8) {
  uint64_t bits = 0;
  for (size_t i = 0; i < 8; i++) bits = bits << 7 | key8[i] >> 1;
  ZnByteBuffer key7;
  for (int shift = 48; shift >= 0; shift -= 8) key7.Append(static_cast<uint8_t>(bits >> shift));
  return key7;
}

TEST(Des, KnownAnswers) {
  for (const auto& [key, plain, cipher] : kKnownAnswers) {
    ZnByteBuffer key7 = WithoutParity(Hex(key));
    EXPECT_EQ(ZnDES::str_to_key(key7), Hex(key));  // the published keys have odd parity
    EXPECT_EQ(ToHex(ZnEncrypt::DES_Encrypt(Hex(plain), key7)), cipher) << key;
    EXPECT_EQ(ZnEncrypt::DES_Decrypt(Hex(cipher), key7), Hex(plain)) << key;
  }
  // Short keys and blocks count as filled up with zeros.
  EXPECT_EQ(ZnEncrypt::DES_Encrypt(Hex("aabb"), Hex("010203")),
            ZnEncrypt::DES_Encrypt(Hex("aabb000000000000"), Hex("01020300000000")));
}

// Rivest's test of 1985: any single wrong entry of a table or S-box leads to another end.
TEST(Des, SixteenRoundsUpAndDown) {
  ZnByteBuffer block = Hex("9474B8E8C73BCA7D");
  for (int i = 0; i < 16; i++) {
    const ZnByteBuffer key7 = WithoutParity(block);
    block = i % 2 ? ZnEncrypt::DES_Decrypt(block, key7) : ZnEncrypt::DES_Encrypt(block, key7);
  }
  EXPECT_EQ(ToHex(block), "1b1a2ddb4c642438");
}

// The first block of the example of NIST SP 800-67.
TEST(TripleDes, PublishedExample) {
  ZnByteBuffer k1 = WithoutParity(Hex("0123456789ABCDEF")), k2 = WithoutParity(Hex("23456789ABCDEF01")),
               k3 = WithoutParity(Hex("456789ABCDEF0123")), plain = Hex("5468652071756663");
  ZnByteBuffer cipher = ZnEncrypt::Triple_DES_Encrypt(plain, k1, k2, k3);
  EXPECT_EQ(ToHex(cipher), "a826fd8ce53b855f");
  EXPECT_EQ(ZnEncrypt::Triple_DES_Decrypt(cipher, k1, k2, k3), plain);
}

}  // namespace
