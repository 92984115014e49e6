// From nothing to a usable connection: NetBIOS session, dialect, logon, the "IPC$" tree.

#include <optional>

#include "runtime/sys_info.h"
#include "smb/client/logon_fields.h"
#include "smb/client/ntlmssp.h"
#include "smb/client/signing.h"
#include "smb/client/tree_connect.h"
#include "smb/client/wire_operation.h"

using Values = ZnSMBClientValues;

namespace {

constexpr const char* kClientName = "Halden 5.60.514";

// A dialect's place in the list is its number in the reply.
constexpr const char* kDialects[] = {"PC NETWORK PROGRAM 1.0", "Windows for Workgroups 3.1a", "NT LM 0.12"};

// The largest message that we take, as servers of the newest dialect may send it; of others, what they take themselves.
constexpr uint16_t kOwnBuffer = 0xFFFF;

// The domain comes as UTF-16 whatever was agreed on, at times behind one pad byte, and with or without terminators.
// Servers that send eight-bit text are read the same way.
ZnUniString DecodeDomain(const ZnPacket& raw) {
  const uint8_t* bytes = raw.Data();
  size_t length = raw.Length();
  if (length > 0 && (length % 2 != 0 || bytes[0] == 0)) {
    bytes++;
    length--;
  }
  length -= length % 2;
  while (length > 0 && bytes[length - 1] == 0 && bytes[length - 2] == 0) length -= 2;
  return length == 0 ? ZnUniString() : ZnUniString::CreateFrom(bytes, length, ZnCodeset::Utf16Lsb);
}

ZnUniString NativeOS() {
  return ZnSysInfoProcessor() + " " + ZnSysInfoHostName() + " " + ZnSysInfoOSRelease() + " " + ZnSysInfoOSVersion() +
         " " + ZnSysInfoHardware();
}

// In 100 ns since 1601.
uint64_t Now() {
  ZnSMBCTimeDCE now;
  now.FromTimeVal(ZnTimeVal::now());
  return now.value;
}

class ConnectOperation : public ZnSmbWireOperation, private ZnSmbConversation::Connector {
 public:
  ConnectOperation(ZnSmbConversation& conversation, const ZnMachine& machine, const ZnUniString& localName,
                   const ZnUniString& user, const ZnUniString& password, ZnSmbDone done)
      : ZnSmbWireOperation(conversation, std::move(done)),
        machine_(machine),
        who_{user, password, conversation.settings().domain, ZnSysInfoHostName()} {
    who_.password.MarkSecret();
    const bool begun = conversation.Connect(this, ZnMachine(localName, ZnMachine::Workstation), machine);
    if (!begun) EndSoon(Values::ErrConnect);
  }
  ~ConnectOperation() override {
    if (!IsOver() && conversation()) conversation()->Forget();
  }

 private:
  using Step = bool (ConnectOperation::*)(const ZnSMBCDecode&);

  void Connected() override { SendNegotiate(); }
  void ConnectionLost(Reason reason) override { End(reason); }
  void Forgotten() override { EndSoon(Values::ErrDisconnect); }
  bool Accepted(const ZnSMBCDecode& reply, const Part&) override { return (this->*step_)(reply); }
  void Ending(Reason reason) override {
    if (!conversation()) return;
    reason == Values::ErrNone ? conversation()->Established() : conversation()->Forget();
  }

  // Until the logon is over, that the messages are to be signed says that we are able to.
  bool SendNegotiate() {
    conversation()->signs = conversation()->settings().rules.signing != ZnSigning::Never;
    ZnSMBCNegotiate_ReqData data;
    for (const char* name : kDialects) {
      ZnSMBCDialect dialect;
      dialect.string = name;
      data.dialects.Append(dialect);
    }
    step_ = &ConnectOperation::Negotiated;
    return Ask(Values::CmdNegotiate, ZnSMBCNegotiate_ReqWords(), data);
  }

  bool Negotiated(const ZnSMBCDecode& reply) {
    ZnSMBCNegotiate_RespWords words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    if (words.index > Values::DialectNT) return End(Values::ErrNegprot);  // 0xFFFF: none of them suits the server
    TakeNegotiateWords(words, reply.header);
    if (!TakeNegotiateData(words, reply)) return End(Values::ErrNegprot);
    // The oldest dialect has neither logons nor "IPC$", nor a way to say how much it takes at a time.
    return conversation()->IsCore() ? End() : LogOn();
  }

  void TakeNegotiateWords(const ZnSMBCNegotiate_RespWords& words, const ZnSMBCHeader& header) {
    ZnSMBServerInfo& server = conversation()->server;
    const bool nt = words.index == Values::DialectNT;
    server.dialect = static_cast<Values::Dialect>(words.index);
    server.caseless = header.caseless_paths;
    server.unicode = nt && words.capabilities.unicode && header.unicode;
    if (words.index == Values::DialectCORE) return;  // it tells nothing else

    server.securitylevel = words.user_level ? Values::SecLevelUser : Values::SecLevelShare;
    server.encryptedpasswords = words.encrypted_passwords;
    server.cansign = words.signing_enabled;
    server.mustsign = words.signing_required;
    server.maxmpx = words.max_mpx;
    server.maxvcs = words.max_vcs;
    server.announcedbuffer = static_cast<uint16_t>(words.max_buffer);
    server.sessionkey = words.session_key;
    server.timezone = static_cast<int16_t>(words.time_zone);
    if (nt) {
      server.maxrawsize = static_cast<uint16_t>(words.max_raw);
      server.capabilities = words.capabilities;
      server.extendedsecurity = words.capabilities.extended_security;
      server.systemtime = words.system_time;
    } else {
      server.capabilities.raw_mode = words.read_raw && words.write_raw;
    }
    conversation()->MostInFlight(server.maxmpx);
  }

  bool TakeNegotiateData(const ZnSMBCNegotiate_RespWords& words, const ZnSMBCDecode& reply) {
    ZnSMBServerInfo& server = conversation()->server;
    if (words.index == Values::DialectWfWg) {
      ZnSMBCNegotiateWfWg_RespData data;
      if (!reply.ReadData(data)) return false;
      server.challenge = data.key;
    } else if (server.extendedsecurity) {
      ZnSMBCNegotiateExtended_RespData data;  // its token would only choose among kinds of logon
      return reply.ReadData(data);
    } else if (words.index == Values::DialectNT) {
      ZnSMBCNegotiate_RespData data(words.key_length);
      if (!reply.ReadData(data)) return false;
      server.challenge = data.key;
      server.domain = DecodeDomain(data.oemdomain);
    }
    return true;
  }

  // ---- the logon

  bool LogOn() {
    const ZnSMBServerInfo& server = conversation()->server;
    const ZnSMBLogonRules& rules = conversation()->settings().rules;
    outcome_.lastcommand = Values::CmdSessionSetupX;
    if (const Reason refused = ZnSmbRefusalToSign(server, rules); refused != Values::ErrNone) return End(refused);
    conversation()->signs = ZnSmbWantsToSign(server, rules);
    ladder_.emplace(who_, server, rules);
    if (ladder_->Refusal() != Values::ErrNone) return End(ladder_->Refusal());
    return SendSessionSetup();
  }

  bool SendSessionSetup() {
    conversation()->uid = 0;
    if (ladder_->Form() != ZnSmbLogonForm::Tokens) return SendFields();
    tokens_.emplace(who_, ZnNtlmssp::Draw(Now()));
    return SendToken(ZnNtlmssp::FirstToken());
  }

  bool SendFields() {
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
    step_ = &ConnectOperation::FieldsAnswered;
    return Ask(Values::CmdSessionSetupX, words, data);
  }

  bool FieldsAnswered(const ZnSMBCDecode& reply) {
    ZnSMBCSessionSetupX_RespWords words;
    ZnSMBCSessionSetupX_RespData data(conversation()->RequestEncoding());
    if (!reply.ReadWords(words) || !reply.ReadData(data)) return End(Values::ErrRead);
    return LoggedOn(reply, words.guest, data.nativeos);
  }

  bool SendToken(const ZnPacket& token) {
    ZnSMBCSessionSetupExtended_ReqWords words;
    SetLimits(words);
    words.token_length = static_cast<uint16_t>(token.Length());
    ZnSMBCSessionSetupExtended_ReqData data(conversation()->RequestEncoding());
    data.token = token;
    data.nativeos = NativeOS();
    data.nativelanman = kClientName;
    step_ = &ConnectOperation::TokenAnswered;
    return Ask(Values::CmdSessionSetupX, words, data);
  }

  // A challenge, or the end. Only one is answered.
  bool TokenAnswered(const ZnSMBCDecode& reply) {
    ZnSMBCSessionSetupExtended_RespWords words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    ZnSMBCSessionSetupExtended_RespData data(conversation()->RequestEncoding(), words.token_length);
    if (!reply.ReadData(data)) return End(Values::ErrRead);
    if (reply.header.WantsMore()) return AnswerChallenge(reply.header.uid, data.token);
    key_ = tokens_->SessionKey();
    return LoggedOn(reply, words.guest, data.nativeos);
  }

  bool AnswerChallenge(uint16_t uid, const ZnPacket& challenge) {
    ZnPacket answer;
    if (answered_ || !tokens_->Answer(challenge, answer)) return End(Values::ErrBadValue);
    answered_ = true;
    conversation()->uid = uid;
    return SendToken(answer);
  }

  // What both forms of a session setup have, and servers of both kinds want to know of us.
  template <class Words>
  void SetLimits(Words& words) const {
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

  bool LoggedOn(const ZnSMBCDecode& reply, bool guest, const ZnUniString& nativeOs) {
    conversation()->uid = reply.header.uid;
    conversation()->server.guest = guest;
    conversation()->server.nativeos = nativeOs;
    const Reason refused = StartSigning(reply);
    return refused == Values::ErrNone ? ConnectIpc() : End(refused);
  }

  // Guests and nobody have no key that the server knows too.
  Reason StartSigning(const ZnSMBCDecode& reply) {
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

  bool IsRefusal(const ZnSMBCHeader& reply) const override {
    return ZnSmbWireOperation::IsRefusal(reply) && !(tokens_ && reply.WantsMore());
  }

  bool Refused(const Part& part) override {
    const unsigned refusal = outcome_.errorcode * 256U + outcome_.errorclass;
    const bool another = outcome_.lastcommand == Values::CmdSessionSetupX && ladder_->StepDown(refusal);
    return another ? SendSessionSetup() : ZnSmbWireOperation::Refused(part);
  }

  // ---- "IPC$"

  bool ConnectIpc() {
    ipc_ = ZnSMBCTreeObject(machine_, "IPC$", Values::ServiceIPC);
    const ZnSmbTreeConnect request(*conversation(), ipc_, ZnUniString());
    if (request.reason != Values::ErrNone) return End(request.reason);
    step_ = &ConnectOperation::IpcConnected;
    return Ask(Values::CmdTreeConnectX, request.words, request.data);
  }

  bool IpcConnected(const ZnSMBCDecode& reply) {
    if (!ZnSmbReadTreeConnect(*conversation(), reply, ipc_)) return End(Values::ErrRead);
    conversation()->EnterTree(ipc_);
    return End();
  }

  ZnMachine machine_;
  ZnSmbCredentials who_;
  std::optional<ZnSmbLogonLadder> ladder_;
  std::optional<ZnNtlmssp> tokens_;
  bool answered_ = false;  // the challenge of the tokens
  ZnByteBuffer key_;       // to sign with
  ZnSMBCTreeObject ipc_;
  Step step_ = nullptr;
};

}  // namespace

ZnSmbCall ZnSmbClient::Connect(const ZnMachine& machine, const ZnUniString& localName, const ZnUniString& user,
                               const ZnUniString& password, ZnSmbDone done) {
  return std::make_unique<ConnectOperation>(*conversation_, machine, localName, user, password, std::move(done));
}
