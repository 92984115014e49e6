// Logging on: the form, the bytes that show a password, tokens, signatures. Expected bytes were worked out with
// Python's hashlib and hmac from the protocols' documents, or stand there.

#include <gtest/gtest.h>

#include "smb/client/logon_fields.h"
#include "smb/client/ntlmssp.h"
#include "smb/client/signing.h"
#include "support/hex.h"

namespace {

using Values = ZnSMBClientValues;
using Form = ZnSmbLogonForm;

ZnSMBServerInfo Server(Values::Dialect dialect, unsigned securitymode, bool extended = false) {
  ZnSMBServerInfo server;
  server.dialect = dialect;
  server.securitylevel = (securitymode & 1) != 0 ? Values::SecLevelUser : Values::SecLevelShare;
  server.encryptedpasswords = (securitymode & 2) != 0;
  server.cansign = (securitymode & 4) != 0;
  server.mustsign = (securitymode & 8) != 0;
  server.extendedsecurity = extended;
  server.challenge = Hex("0123456789abcdef");
  return server;
}

constexpr unsigned kWrong = 5 * 256 + 1;

TEST(LogonLadder, FromTheStrongestFormDownToTheWeakestThatIsAllowed) {
  const auto nt = Values::DialectNT, older = Values::DialectWfWg;
  const struct {
    const char* what;
    ZnSmbCredentials who;
    ZnSMBServerInfo server;
    ZnSMBLogonRules rules;
    std::vector<Form> forms;
    Values::Reason refused = Values::ErrNone;
  } cases[] = {
      {"extended security", {"u", "p"}, Server(nt, 3, true), {}, {Form::Tokens}},
      {"and the weakest rule", {"u", "p"}, Server(nt, 3, true), {true, ZnMinAuth::Lm}, {Form::Tokens}},
      {"and the strongest", {"u", "p"}, Server(nt, 3, true), {false, ZnMinAuth::Ntlmv2}, {Form::Tokens}},
      {"and nobody", {}, Server(nt, 3, true), {}, {Form::Tokens}},
      {"none", {"u", "p"}, Server(nt, 3), {}, {Form::Ntlmv2, Form::Ntlm}},
      {"weakest", {"u", "p"}, Server(nt, 3), {false, ZnMinAuth::Lm}, {Form::Ntlmv2, Form::Ntlm, Form::Lm}},
      {"strongest", {"u", "p"}, Server(nt, 3), {false, ZnMinAuth::Ntlmv2}, {Form::Ntlmv2}},
      {"nobody", {}, Server(nt, 3), {}, {Form::None}},
      {"share level", {"u", "p"}, Server(nt, 2), {}, {Form::Ntlm}},
      {"older dialect", {"u", "p"}, Server(older, 3), {}, {}, Values::ErrWeakLogon},
      {"and allowed", {"u", "p"}, Server(older, 3), {false, ZnMinAuth::Lm}, {Form::Lm}},
      {"and no password", {"u", ""}, Server(older, 3), {}, {Form::Lm}},
      {"clear text", {"u", "p"}, Server(nt, 1), {}, {}, Values::ErrClearPassword},
      {"and allowed", {"u", "p"}, Server(nt, 1), {true}, {Form::ClearText}},
      {"and no password", {"u", ""}, Server(nt, 1), {}, {Form::ClearText}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    ZnSmbLogonLadder ladder(test.who, test.server, test.rules);
    EXPECT_EQ(ladder.Refusal(), test.refused);
    if (test.refused != Values::ErrNone) continue;
    std::vector<Form> forms = {ladder.Form()};
    while (ladder.StepDown(kWrong)) forms.push_back(ladder.Form());
    EXPECT_EQ(forms, test.forms);
  }
}

// Where a weaker form can't help, a further try would only count as one more wrong password.
TEST(LogonLadder, OnlyAnErrorOfTheAnswerIsWorthAnother) {
  const std::pair<unsigned, bool> refusals[] = {
      {kWrong, true},          {86 * 256 + 1, true},    {87 * 256 + 1, true},    {1326 * 256 + 1, true},
      {2 * 256 + 2, true},     {2239 * 256 + 2, false}, {2240 * 256 + 2, false}, {2242 * 256 + 2, false},
      {1331 * 256 + 1, false}, {5 * 256 + 2, false},    {1 * 256 + 2, false},    {0, false}};
  for (const auto& [refusal, another] : refusals) {
    ZnSmbLogonLadder ladder({"u", "p"}, Server(Values::DialectNT, 3), {});
    EXPECT_EQ(ladder.StepDown(refusal), another) << refusal;
  }
}

// The responses of MS-NLMP 4.2.2.
TEST(LogonFields, HoldWhatTheFormSays) {
  const ZnSmbCredentials who = {"User", "Password", "Domain", ""};
  const std::string ntlm = "67c43011f30298a2ad35ece64f16331c44bdbed927841f94";
  const struct {
    Form form;
    std::string first, second, key;
  } cases[] = {
      {Form::None, "", "", ""},
      {Form::ClearText, "50415353574f524400", "", ""},
      {Form::Lm, "98def7b87f88aa5dafe2df779688a172def11c7d5ccdef13", "", ""},
      {Form::Ntlm, ntlm, ntlm, "d87262b0cde4b1cb7499becccdf10784" + ntlm},
  };
  for (const auto& test : cases) {
    const ZnSmbLogonFields fields(test.form, who, Server(Values::DialectNT, 3), 0);
    EXPECT_EQ(ToHex(fields.first), test.first);
    EXPECT_EQ(ToHex(fields.second), test.second);
    EXPECT_EQ(ToHex(fields.signingkey), test.key);
    for (const ZnByteBuffer& each : {ZnByteBuffer(fields.first), ZnByteBuffer(fields.second), fields.signingkey}) {
      EXPECT_TRUE(each.IsEmpty() || each.IsSecret());
    }
  }
}

TEST(LogonFields, Ntlmv2TakesTheServersTimeAndAChallengeOfItsOwn) {
  const ZnSmbCredentials who = {"User", "Password", "Domain", ""};
  ZnSMBServerInfo server = Server(Values::DialectNT, 3);
  server.systemtime = 0x0102030405060708;
  const ZnSmbLogonFields fields(Form::Ntlmv2, who, server, 1), others(Form::Ntlmv2, who, server, 1);
  const std::string nt = ToHex(fields.second), drawn = ToHex(fields.first).substr(32);
  EXPECT_EQ(fields.first.Length(), 24U);
  EXPECT_EQ(nt.substr(32), "01010000000000000807060504030201" + drawn + "000000000000000000000000");
  EXPECT_EQ(ToHex(fields.signingkey).substr(32), nt);
  EXPECT_NE(ToHex(others.first), ToHex(fields.first));
  server.systemtime = 0;
  EXPECT_EQ(ToHex(ZnSmbLogonFields(Form::Ntlmv2, who, server, 1).second).substr(48, 16), "0100000000000000");
}

// ---- tokens

// Of a real server.
const std::string kFacts = "020008005000450045005200 010008005000450045005200 04000000 0300040076006d00";
const std::string kTimeFact = "0700080012a459b0717bdd01";
const char kFixedChallenge[] =
    "4e544c4d53535000 02000000 0800080038000000 15828a62 5ead900d89debae1 0000000000000000 3400340040000000"
    "060100000000000f 5000450045005200";
const ZnPacket kChallenge = Hex(kFixedChallenge + kFacts + kTimeFact + "00000000");

constexpr size_t kFlagsAt = 20, kFactsAt = 64;

ZnNtlmssp Logon(const ZnSmbCredentials& who = {"tester", "Secret1", "", "WS"}) {
  return {who, {Hex("aaaaaaaaaaaaaaaa"), Hex("55555555555555555555555555555555"), 0x1122334455667788}};
}

ZnPacket With(size_t at, const char* digits) {
  ZnPacket changed(kChallenge.Data(), kChallenge.Length());
  const ZnPacket bytes = Hex(digits);
  std::copy_n(bytes.Data(), bytes.Length(), changed.Writable() + at);
  return changed;
}

TEST(Tokens, ARealChallengeIsAnswered) {
  EXPECT_EQ(ToHex(ZnNtlmssp::FirstToken()),
            ToHex(Hex("4e544c4d53535000 01000000 15820860 0000000000000000 0000000000000000")));
  ZnNtlmssp logon = Logon();
  ZnPacket token;
  ASSERT_TRUE(logon.Answer(kChallenge, token));
  EXPECT_EQ(ToHex(token),
            ToHex(Hex("4e544c4d53535000 03000000 1800180040000000 6400640058000000 00000000bc000000 0c000c00bc000000"
                      "04000400c8000000 10001000cc000000 15828860"
                      "000000000000000000000000000000000000000000000000 943de5c6da0ec2355e8a139b63f1bcdb"
                      "0101000000000000 12a459b0717bdd01 aaaaaaaaaaaaaaaa 00000000" +
                      kFacts + kTimeFact +
                      "00000000 00000000 740065007300740065007200 57005300 6d01c415a3758a7abeff75c16ee52409")));
  EXPECT_EQ(ToHex(logon.SessionKey()), "55555555555555555555555555555555");
  EXPECT_TRUE(token.IsSecret() && logon.SessionKey().IsSecret());

  ASSERT_TRUE(logon.Answer(With(kFlagsAt, "15828a22"), token)) << "a server that wants no other key";
  EXPECT_EQ(ToHex(logon.SessionKey()), "cc2eefa7422f13ea33a978e81e2dddcf");
}

TEST(Tokens, AServerThatTellsNoTimeGetsOursAndTheOlderResponseToo) {
  ZnNtlmssp logon = Logon();
  ZnPacket token, lm, nt;
  ZnPacket challenge = Hex(kFixedChallenge + kFacts + "00000000");
  challenge.Writable()[40] = challenge.Writable()[42] = 40;
  ASSERT_TRUE(logon.Answer(challenge, token));
  ZnNtlmsspAuthenticate sent;
  ASSERT_TRUE(sent.Read(token) && sent.places[0].Find(token, lm) && sent.places[1].Find(token, nt));
  EXPECT_EQ(ToHex(lm), "41a0e0667c298c182a0f3654f03c360aaaaaaaaaaaaaaaaa");
  EXPECT_EQ(ToHex(nt).substr(0, 32), "6478debdee1f2b6c26992707e3c4106e");
}

TEST(Tokens, NobodyProvesNothing) {
  ZnNtlmssp logon = Logon({"", "", "DOMAIN", ""});
  ZnPacket token;
  ASSERT_TRUE(logon.Answer(kChallenge, token));
  EXPECT_TRUE(logon.SessionKey().IsEmpty());
  ZnNtlmsspAuthenticate sent;
  ASSERT_TRUE(sent.Read(token) && sent.flags.anonymous);
  EXPECT_EQ(token.Length(), sent.HowBig() + 1) << "a single zero in place of all responses";
}

TEST(Tokens, HostileChallenges) {
  const auto answers = [](const ZnByteBuffer& challenge) {
    const auto block = std::make_unique<uint8_t[]>(challenge.Length());  // a sanitizer sees reads behind its end
    std::copy_n(challenge.Data(), challenge.Length(), block.get());
    ZnPacket token;
    const bool answered = Logon().Answer(ZnByteBuffer(block.get(), challenge.Length()), token);
    EXPECT_TRUE(!answered || token.Length() <= 500) << "nothing but what was there comes back";
    return answered;
  };
  for (size_t length = 0; length < kChallenge.Length(); length++) {
    EXPECT_FALSE(answers(ZnPacket(kChallenge.Data(), length))) << length;
  }
  for (size_t at = 0; at < kChallenge.Length(); at++) {
    for (const char* byte : {"00", "01", "7f", "ff"}) answers(With(at, byte));
  }
  const struct {
    const char* what;
    size_t at;
    const char* bytes;
  } lies[] = {
      {"another kind of token", 8, "03"},
      {"texts aren't UTF-16", kFlagsAt, "14"},
      {"facts behind the end", 44, "41000000"},
      {"facts far behind the end", 44, "ffffffff"},
      {"more facts than bytes", 40, "ffff"},
      {"a fact longer than the list", kFactsAt + 2, "ffff"},
      {"a time of four bytes", kFactsAt + 38, "0400"},
      {"a list without end", kFactsAt + 48, "0500"},
  };
  for (const auto& lie : lies) EXPECT_FALSE(answers(With(lie.at, lie.bytes))) << lie.what;
  EXPECT_TRUE(answers(With(16, "ffffffff"))) << "nobody looks at the name";
  ZnPacket large(kChallenge.Data(), kChallenge.Length());
  large.SetLength(5000);
  EXPECT_FALSE(answers(large));
}

// ---- signatures

const char kEcho[] = "ff534d42 2b 00000000 18 0508 0000 0000000000000000 0000 0100 4d00 0200 0300 01 0100 0300 616263";

TEST(Signing, KnownSignatures) {
  ZnSmbSigning signing, withResponse;
  EXPECT_FALSE(signing.IsOn());
  signing.Start(Hex("000102030405060708090a0b0c0d0e0f"));
  EXPECT_TRUE(signing.IsOn());
  const std::pair<uint32_t, const char*> known[] = {
      {0, "2d04b628f8ac15f8"}, {2, "f10d8c98c938cb1d"}, {0x01020304, "7ab90d9723938ead"}};
  for (const auto& [sequence, signature] : known) {
    ZnPacket whole = Hex(kEcho), start(whole.Data(), 35);
    signing.Sign(whole, sequence);
    EXPECT_EQ(ToHex(ZnPacket(whole.Data() + 14, 8)), signature);
    EXPECT_TRUE(signing.Verify(whole.Data(), whole.Length(), sequence));
    signing.Sign(start, sequence, {whole.Data() + 35, whole.Length() - 35});
    EXPECT_EQ(ToHex(start), ToHex(ZnPacket(whole.Data(), 35))) << "the end may stand elsewhere";
  }
  withResponse.Start(Hex("000102030405060708090a0b0c0d0e0f 000000000000000000000000000000000000000000000000"));
  ZnPacket message = Hex(kEcho);
  withResponse.Sign(message, 2);
  EXPECT_EQ(ToHex(ZnPacket(message.Data() + 14, 8)), "530284eea5e26544");
  EXPECT_FALSE(signing.Verify(message.Data(), message.Length(), 2)) << "another key";
}

TEST(Signing, AnyChangeShows) {
  ZnSmbSigning signing;
  signing.Start(Hex("000102030405060708090a0b0c0d0e0f"));
  ZnPacket message = Hex(kEcho);
  signing.Sign(message, 7);
  for (const uint32_t sequence : {0U, 6U, 8U, 7U + (1U << 16)}) {
    EXPECT_FALSE(signing.Verify(message.Data(), message.Length(), sequence)) << sequence;
  }
  for (size_t at = 0; at < message.Length(); at++) {
    message.Writable()[at] ^= 0x10;
    EXPECT_FALSE(signing.Verify(message.Data(), message.Length(), 7)) << at;
    message.Writable()[at] ^= 0x10;
  }
  for (size_t length = 0; length < message.Length(); length++) {
    EXPECT_FALSE(signing.Verify(message.Data(), length, 7)) << length;
  }
  EXPECT_TRUE(signing.Verify(message.Data(), message.Length(), 7));
}

TEST(Signing, WhoSigns) {
  using enum ZnSigning;
  const struct {
    ZnSigning rule;
    unsigned mode;
    Values::Reason refused;
    bool signs;
  } cases[] = {
      {Auto, 3, Values::ErrNone, false},   {Auto, 7, Values::ErrNone, false},
      {Auto, 15, Values::ErrNone, true},   {Never, 3, Values::ErrNone, false},
      {Never, 7, Values::ErrNone, false},  {Never, 15, Values::ErrMustSign, true},
      {Always, 7, Values::ErrNone, true},  {Always, 3, Values::ErrCantSign, true},
      {Always, 15, Values::ErrNone, true}, {Always, 11, Values::ErrNone, true},
  };
  for (const auto& test : cases) {
    const ZnSMBServerInfo server = Server(Values::DialectNT, test.mode);
    const ZnSMBLogonRules rules{.signing = test.rule};
    EXPECT_EQ(ZnSmbRefusalToSign(server, rules), test.refused) << static_cast<int>(test.rule) << test.mode;
    EXPECT_TRUE(test.refused != Values::ErrNone || ZnSmbWantsToSign(server, rules) == test.signs);
  }
}

}  // namespace
