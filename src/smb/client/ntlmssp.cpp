#include "smb/client/ntlmssp.h"

#include <optional>

#include "crypto/encrypt.h"
#include "crypto/entropy.h"

namespace {

using Authenticate = ZnNtlmsspAuthenticate;
using Flags = ZnNtlmsspFlags;

// In bytes. The names of a domain controller take some hundred; the answer repeats them, and has to fit into a message.
constexpr size_t kLargestChallenge = 4096;
constexpr size_t kLargestToken = 0xFFFF;

constexpr uint8_t kNoLmResponse[24] = {};

// What the client asks for, and makes use of if the server agrees.
constexpr bool Flags::*kWanted[] = {&Flags::unicode, &Flags::request_target, &Flags::sign,
                                    &Flags::ntlm,    &Flags::always_sign,    &Flags::extended_security,
                                    &Flags::strong,  &Flags::key_exchange};

Flags Agreed(const Flags& challenge) {
  Flags agreed;
  for (const auto wanted : kWanted) agreed.*wanted = challenge.*wanted;
  agreed.target_info = challenge.target_info;
  return agreed;
}

ZnByteBuffer Utf16(const ZnUniString& text) { return text.AsEncoding(ZnCodeset::Utf16Lsb); }

// A challenge with what its places lead to.
struct Challenge {
  ZnNtlmsspChallenge fixed;
  ZnPacket targetinfo;  // a list with its end, or empty
  std::optional<uint64_t> time;

  bool Read(const ZnByteBuffer& token) {
    return token.Length() <= kLargestChallenge && fixed.Read(token) && fixed.flags.unicode &&
           fixed.targetinfo.Find(token, targetinfo) && (targetinfo.IsEmpty() || ReadFacts());
  }
  bool ReadFacts() {
    ZnSmbReader in(targetinfo);
    ZnNtlmsspFact fact;
    while (in.Record(fact)) {
      if (fact.id == ZnNtlmsspFact::kEnd) return true;
      if (fact.id == ZnNtlmsspFact::kTime && !ZnSmbReader(fact.value).U64le(time.emplace())) return false;
    }
    return false;
  }
};

}  // namespace

ZnNtlmssp::Drawn ZnNtlmssp::Draw(uint64_t time) { return {ZnDrawSecret(8), ZnDrawSecret(16), time}; }

ZnNtlmssp::ZnNtlmssp(const ZnSmbCredentials& who, const Drawn& drawn) : who_(who), drawn_(drawn) {
  who_.password.MarkSecret();
  drawn_.sessionkey.MarkSecret();
}

ZnPacket ZnNtlmssp::FirstToken() {
  ZnNtlmsspNegotiate token;
  for (const auto wanted : kWanted) token.flags.*wanted = true;
  return token.Pack();
}

bool ZnNtlmssp::Answer(const ZnByteBuffer& bytes, ZnPacket& token) {
  Challenge challenge;
  if (!challenge.Read(bytes)) return false;
  Flags flags = Agreed(challenge.fixed.flags);
  ZnNtlmsspParts parts;
  parts[Authenticate::Workstation] = Utf16(who_.workstation);
  if (who_.Anonymous()) {
    flags.anonymous = true;
    flags.key_exchange = false;
    parts[Authenticate::LmResponse] = ZnByteBuffer("", 1);
  } else {
    Prove(
        {challenge.fixed.challenge, drawn_.clientchallenge, challenge.time.value_or(drawn_.time), challenge.targetinfo},
        parts);
    // A server that tells its time knows what to do without the older of the two responses.
    if (challenge.time) parts[Authenticate::LmResponse] = ZnByteBuffer(kNoLmResponse, sizeof kNoLmResponse);
  }
  if (flags.key_exchange) {
    parts[Authenticate::SessionKey] = ZnEncrypt::Arcfour(drawn_.sessionkey, sessionkey_);
    sessionkey_ = drawn_.sessionkey;
  }
  token = Authenticate::Token(flags, parts);
  return token.Length() <= kLargestToken;
}

void ZnNtlmssp::Prove(const ZnNtlmv2Question& question, ZnNtlmsspParts& parts) {
  const ZnNtlmv2Answer answer = ZnAnswerNtlmv2(ZnNtlmv2Hash(who_.user, who_.domain, who_.password), question);
  parts[Authenticate::User] = Utf16(who_.user);
  parts[Authenticate::Domain] = Utf16(who_.domain);
  parts[Authenticate::LmResponse] = answer.lm;
  parts[Authenticate::NtResponse] = answer.nt;
  sessionkey_ = answer.sessionkey;
}
