#include <gtest/gtest.h>

#include <array>

#include "crypto/des.h"
#include "crypto/encrypt.h"
#include "support/hex.h"

namespace {

// Key with parity, plain text and cipher text.
// The known answers of NBS Special Publication 500-20: between them they use every entry of the S-boxes.
const std::array<const char*, 3> kKnownAnswers[] = {
    {"7CA110454A1A6E57", "01A1D6D039776742", "690f5b0d9a26939b"},
    {"0131D9619DC1376E", "5CD54CA83DEF57DA", "7a389d10354bd271"},
    {"07A1133E4A0B2686", "0248D43806F67172", "868ebb51cab4599a"},
    {"3849674C2602319E", "51454B582DDF440A", "7178876e01f19b2a"},
    {"04B915BA43FEB5B6", "42FD443059577FA2", "af37fb421f8c4095"},
    {"0113B970FD34F2CE", "059B5E0851CF143A", "86a560f10ec6d85b"},
    {"0170F175468FB5E6", "0756D8E0774761D2", "0cd3da020021dc09"},
    {"43297FAD38E373FE", "762514B829BF486A", "ea676b2cb7db2b7a"},
    {"07A7137045DA2A16", "3BDD119049372802", "dfd64a815caf1a0f"},
    {"04689104C2FD3B2F", "26955F6835AF609A", "5c513c9c4886c088"},
    {"37D06BB516CB7546", "164D5E404F275232", "0a2aeeae3ff4ab77"},
    {"1F08260D1AC2465E", "6B056E18759F5CCA", "ef1bf03e5dfa575a"},
    {"584023641ABA6176", "004BD6EF09176062", "88bf0db6d70dee56"},
    {"025816164629B007", "480D39006EE762F2", "a1f9915541020b56"},
    {"49793EBC79B3258F", "437540C8698F3CFA", "6fbf1cafcffd0556"},
    {"4FB05E1515AB73A7", "072D43A077075292", "2f22e49bab7ca1ac"},
    {"49E95D6D4CA229BF", "02FE55778117F12A", "5a6b612cc26cce4a"},
    {"018310DC409B26D6", "1D9D5C5018F728C2", "5f4c038ed12b2e41"},
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

// The first block of the example of NIST SP 800-67.
TEST(TripleDes, PublishedExample) {
  ZnByteBuffer k1 = WithoutParity(Hex("0123456789ABCDEF")), k2 = WithoutParity(Hex("23456789ABCDEF01")),
               k3 = WithoutParity(Hex("456789ABCDEF0123")), plain = Hex("5468652071756663");
  ZnByteBuffer cipher = ZnEncrypt::Triple_DES_Encrypt(plain, k1, k2, k3);
  EXPECT_EQ(ToHex(cipher), "a826fd8ce53b855f");
  EXPECT_EQ(ZnEncrypt::Triple_DES_Decrypt(cipher, k1, k2, k3), plain);
}

}  // namespace
