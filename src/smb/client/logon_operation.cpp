#include "smb/client/logon_operation.h"

#include "runtime/sys_info.h"
#include "smb/client/logon_fields.h"
#include "smb/client/signing.h"
#include "smb/wire/session_sections.h"

namespace {

constexpr const char* kClientName = "Halden 5.60.514";

// The largest message that we take, as servers of the newest dialect may send it; of others, what they take themselves.
constexpr uint16_t kOwnBuffer = 0xFFFF;

ZnUniString NativeOS() {
  return ZnSysInfoProcessor() + " " + ZnSysInfoHostName() + " " + ZnSysInfoOSRelease() + " " + ZnSysInfoOSVersion() +
         " " + ZnSysInfoHardware();
}

// In 100 ns since 1601.
uint64_t Now() { return ZnSMBCTimeDCE::At(ZnTimeVal::now()).value; }

}  // namespace

ZnSmbLogonOperation::ZnSmbLogonOperation(ZnSmbConversation& conversation, const ZnUniString& user,
                                         const ZnUniString& password, ZnSmbDone done)
    : ZnSmbWireOperation(conversation, std::move(done)),
      who_{user, password, conversation.settings().domain, ZnSysInfoHostName()} {
  who_.password.MarkSecret();
}

bool ZnSmbLogonOperation::Accepted(const ZnSMBCDecode& reply, const Part&) {
  return tokens_ ? TokenAnswered(reply) : FieldsAnswered(reply);
}

bool ZnSmbLogonOperation::LogOn() {
  const ZnSMBServerInfo& server = conversation()->server;
  const ZnSMBLogonRules& rules = conversation()->settings().rules;
  outcome_.lastcommand = Values::CmdSessionSetupX;
  if (const Reason refused = ZnSmbRefusalToSign(server, rules); refused != Values::ErrNone) return End(refused);
  conversation()->signs = ZnSmbWantsToSign(server, rules);
  ladder_.emplace(who_, server, rules);
  if (ladder_->Refusal() != Values::ErrNone) return End(ladder_->Refusal());
  return SendSessionSetup();
}

bool ZnSmbLogonOperation::SendSessionSetup() {
  conversation()->uid = 0;
  if (ladder_->Form() != ZnSmbLogonForm::Tokens) return SendFields();
  tokens_.emplace(who_, ZnNtlmssp::Draw(Now()));
  return SendToken(ZnNtlmssp::FirstToken());
}

bool ZnSmbLogonOperation::SendFields() {
  const ZnSMBServerInfo& server = conversation()->server;
  const ZnSmbLogonFields fields(ladder_->Form(), who_, server, Now());
  key_ = fields.signingkey;
  ZnSMBCSessionSetupX_ReqWords words(server.dialect);
  SetLimits(words);
  words.password_length = static_cast<uint16_t>(fields.first.Length());
  words.ntpassword_length = static_cast<uint16_t>(fields.second.Length());

  ZnSMBCSessionSetupX_ReqData data(server.dialect, conversation()->RequestEncoding());
  data.password = fields.first;
  data.ntpassword = fields.second;
  data.name = who_.user;
  data.domain = who_.domain;
  data.nativeos = NativeOS();
  data.nativelanman = kClientName;
  return Ask(Values::CmdSessionSetupX, words, data);
}

bool ZnSmbLogonOperation::FieldsAnswered(const ZnSMBCDecode& reply) {
  ZnSMBCSessionSetupX_RespWords words;
  ZnSMBCSessionSetupX_RespData data(conversation()->RequestEncoding());
  if (!reply.ReadWords(words) || !reply.ReadData(data)) return End(Values::ErrRead);
  return LetIn(reply, words.guest, data.nativeos);
}

bool ZnSmbLogonOperation::SendToken(const ZnPacket& token) {
  ZnSMBCSessionSetupExtended_ReqWords words;
  SetLimits(words);
  words.token_length = static_cast<uint16_t>(token.Length());
  ZnSMBCSessionSetupExtended_ReqData data(conversation()->RequestEncoding());
  data.token = token;
  data.nativeos = NativeOS();
  data.nativelanman = kClientName;
  return Ask(Values::CmdSessionSetupX, words, data);
}

// A challenge, or the end. Only one is answered.
bool ZnSmbLogonOperation::TokenAnswered(const ZnSMBCDecode& reply) {
  ZnSMBCSessionSetupExtended_RespWords words;
  if (!reply.ReadWords(words)) return End(Values::ErrRead);
  ZnSMBCSessionSetupExtended_RespData data(conversation()->RequestEncoding(), words.token_length);
  if (!reply.ReadData(data)) return End(Values::ErrRead);
  if (reply.header.WantsMore()) return AnswerChallenge(reply.header.uid, data.token);
  key_ = tokens_->SessionKey();
  return LetIn(reply, words.guest, data.nativeos);
}

bool ZnSmbLogonOperation::AnswerChallenge(uint16_t uid, const ZnPacket& challenge) {
  ZnPacket answer;
  if (answered_ || !tokens_->Answer(challenge, answer)) return End(Values::ErrBadValue);
  answered_ = true;
  conversation()->uid = uid;
  return SendToken(answer);
}

// What both forms of a session setup have, and servers of both kinds want to know of us.
template <class Words>
void ZnSmbLogonOperation::SetLimits(Words& words) const {
  const ZnSMBServerInfo& server = conversation()->server;
  words.max_buffer = conversation()->IsNt() ? kOwnBuffer : server.announcedbuffer;
  words.max_mpx = server.maxmpx;
  words.session_key = server.sessionkey;
  const ZnSMBCCapabilities& offered = server.capabilities;
  words.capabilities.unicode = true;
  words.capabilities.large_files = offered.large_files;
  words.capabilities.nt_commands = offered.nt_commands;
  words.capabilities.large_readx = offered.large_readx;
  words.capabilities.large_writex = offered.large_writex;
  words.capabilities.extended_security = server.extendedsecurity;
}

bool ZnSmbLogonOperation::LetIn(const ZnSMBCDecode& reply, bool guest, const ZnUniString& nativeOs) {
  conversation()->uid = reply.header.uid;
  conversation()->server.guest = guest;
  conversation()->server.nativeos = nativeOs;
  const Reason refused = StartSigning(reply);
  return refused == Values::ErrNone ? LoggedOn() : End(refused);
}

// Guests and nobody have no key that the server knows too.
ZnSMBClientValues::Reason ZnSmbLogonOperation::StartSigning(const ZnSMBCDecode& reply) {
  if (!conversation()->signs) return Values::ErrNone;
  conversation()->signs = !conversation()->server.guest && !key_.IsEmpty();
  if (!conversation()->signs) {
    const bool insists = conversation()->settings().rules.signing == ZnSigning::Always;
    return insists ? Values::ErrCantSign : Values::ErrNone;
  }
  ZnSmbSigning signing;
  signing.Start(key_);
  const auto bytes = reply.Bytes();
  if (!signing.Verify(bytes.data(), bytes.size(), 1)) return Values::ErrBadSignature;
  conversation()->connection().SignWith(signing);
  return Values::ErrNone;
}

bool ZnSmbLogonOperation::IsRefusal(const ZnSMBCHeader& reply) const {
  return ZnSmbWireOperation::IsRefusal(reply) && !(tokens_ && reply.WantsMore());
}

bool ZnSmbLogonOperation::Refused(const Part& part) {
  const unsigned refusal = outcome_.errorcode * 256U + outcome_.errorclass;
  const bool another = outcome_.lastcommand == Values::CmdSessionSetupX && ladder_->StepDown(refusal);
  return another ? SendSessionSetup() : ZnSmbWireOperation::Refused(part);
}
