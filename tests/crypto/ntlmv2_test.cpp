#include "crypto/ntlmv2.h"

#include <gtest/gtest.h>

#include "crypto/digest.h"
#include "crypto/encrypt.h"
#include "support/hex.h"

namespace {

std::string HexOf(const ZnDigest& digest) { return ToHex(ZnByteBuffer(digest.data(), digest.size())); }

// The test suites of RFC 1320, 1321 and 2202; the texts are cut anywhere.
TEST(Digests, PublishedVectorsInPieces) {
  const ZnByteBuffer alphabet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", 62);
  const auto text = ZnBytesOf(alphabet);
  for (const size_t cut : {0, 1, 61, 62}) {
    EXPECT_EQ(HexOf(ZnMd4({text.first(cut), text.subspan(cut)})), "043f8582f241db351ce627e153e7f0e4");
    EXPECT_EQ(HexOf(ZnMd5({text.first(cut), text.subspan(cut)})), "d174ab98d277d9f5a5611c2c9f419d9f");
  }
  const ZnByteBuffer what("what do ya want ", 16), fornothing("for nothing?", 12);
  EXPECT_EQ(HexOf(ZnHmacMd5(ZnByteBuffer("Jefe", 4), {ZnBytesOf(what), ZnBytesOf(fornothing)})),
            "750c783e6ab0b503eaa86e310a5db738");
}

// MS-NLMP 4.2.4.
TEST(Ntlmv2, PublishedExample) {
  const ZnByteBuffer hash = ZnNtlmv2Hash("User", "Domain", "Password");
  EXPECT_EQ(ToHex(hash), "0c868a403bfd7a93a3001ef22ef02e3f");
  EXPECT_EQ(ZnNtlmv2Hash("uSER", "Domain", "Password"), hash);
  EXPECT_NE(ZnNtlmv2Hash("User", "DOMAIN", "Password"), hash);

  ZnNtlmv2Question question;
  question.challenge = Hex("0123456789abcdef");
  question.clientchallenge = Hex("aaaaaaaaaaaaaaaa");
  question.targetinfo = Hex("02000c0044006f006d00610069006e00 01000c00530065007200760065007200 00000000");
  const ZnNtlmv2Answer answer = ZnAnswerNtlmv2(hash, question);
  EXPECT_EQ(ToHex(answer.lm), "86c35097ac9cec102554764a57cccc19aaaaaaaaaaaaaaaa");
  EXPECT_EQ(ToHex(answer.nt), "68cd0ab851e51c96aabc927bebef6a1c" +
                                  ToHex(Hex("0101000000000000 0000000000000000 aaaaaaaaaaaaaaaa 00000000")) +
                                  ToHex(question.targetinfo) + "00000000");
  EXPECT_EQ(ToHex(answer.sessionkey), "8de40ccadbc14a82f15cb0ad0de95ca3");
  EXPECT_TRUE(hash.IsSecret() && answer.lm.IsSecret() && answer.nt.IsSecret() && answer.sessionkey.IsSecret());
  EXPECT_EQ(ToHex(ZnEncrypt::Arcfour(Hex("55555555555555555555555555555555"), answer.sessionkey)),
            "c5dad2544fc9799094ce1ce90bc9d03e");

  question.time = 0x01D9'0A0B'0C0D'0E0F;
  EXPECT_EQ(ToHex(ZnAnswerNtlmv2(hash, question).nt).substr(48, 16), "0f0e0d0c0b0ad901");
}

}  // namespace
