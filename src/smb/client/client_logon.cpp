// From nothing to a usable connection: NetBIOS session, dialect, logon, the "IPC$" tree.

#include "runtime/sys_info.h"
#include "smb/client/password_fields.h"
#include "smb/client/signing.h"
#include "smb/client/smb_client.h"
#include "smb/wire/session_sections.h"

using Values = ZnSMBClientValues;

namespace {

constexpr const char* kClientName = "Halden 5.60.514";

// A dialect's place in the list is its number in the reply.
constexpr const char* kDialects[] = {"PC NETWORK PROGRAM 1.0", "Windows for Workgroups 3.1a", "NT LM 0.12"};

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

}  // namespace

ZnSMBClient::Result ZnSMBClient::OpenSession(const ZnMachine& machine, const ZnUniString& localName,
                                             const ZnUniString& user, const ZnUniString& password,
                                             Completion* callback) {
  if (State() != SessionClosed) return Fail(Values::ErrConnected);
  if (IsBusy()) return Fail(Values::ErrBusy);
  ForgetConversation();
  lastcommand_ = Values::CmdNone;
  if (!Bind(ZnMachine(localName, ZnMachine::Workstation))) return Fail(Values::ErrBind);
  if (!Connect(machine)) return Fail(Values::ErrConnect);
  reason_ = Values::ErrNone;
  storage_ = ZnSMBOperation::Logon(user, password);
  return Start(Values::StateOpenSession, ResultSuccess, callback);
}

ZnSMBClient::Result ZnSMBClient::OpenSessionRetry(const ZnUniString& user, const ZnUniString& password,
                                                  Completion* callback) {
  if (!Ready(0)) return ResultFailure;
  storage_ = ZnSMBOperation::Logon(user, password);
  return Start(Values::StateOpenSession, SendSessionSetup(), callback);
}

ZnSMBClient::Result ZnSMBClient::SendNegotiate() {
  ZnSMBCNegotiate_ReqData data;
  for (const char* name : kDialects) {
    ZnSMBCDialect dialect;
    dialect.string = name;
    data.dialects.Append(dialect);
  }
  return Sent(SendRequest(Values::CmdNegotiate, ZnSMBCNegotiate_ReqWords(), data));
}

ZnSMBClient::Result ZnSMBClient::NegotiateReply() {
  ZnSMBCNegotiate_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  if (words.index > Values::DialectNT) return Fail(Values::ErrNegprot);  // 0xFFFF: none of them suits the server

  TakeNegotiateWords(words);
  if (words.index == Values::DialectWfWg) {
    ZnSMBCNegotiateWfWg_RespData data;
    if (!reply_.ReadData(data)) return Fail(Values::ErrNegprot);
    server_.challenge = data.key;
  } else if (words.index == Values::DialectNT) {
    ZnSMBCNegotiate_RespData data(words.key_length);
    if (!reply_.ReadData(data)) return Fail(Values::ErrNegprot);
    server_.challenge = data.key;
    server_.domain = DecodeDomain(data.oemdomain);
  }
  return Sent(SendSessionSetup());
}

void ZnSMBClient::TakeNegotiateWords(const ZnSMBCNegotiate_RespWords& words) {
  bool nt = words.index == Values::DialectNT;
  server_.dialect = static_cast<Values::Dialect>(words.index);
  server_.caseless = reply_.header.caseless_paths;
  server_.unicode = nt && words.capabilities.unicode && reply_.header.unicode;
  if (words.index == Values::DialectCORE) return;  // it tells nothing else

  server_.securitylevel = words.user_level ? Values::SecLevelUser : Values::SecLevelShare;
  server_.encryptedpasswords = words.encrypted_passwords;
  server_.maxmpx = words.max_mpx;
  server_.maxvcs = words.max_vcs;
  server_.announcedbuffer = static_cast<uint16_t>(words.max_buffer);
  server_.sessionkey = words.session_key;
  server_.timezone = static_cast<int16_t>(words.time_zone);
  if (nt) {
    server_.maxrawsize = static_cast<uint16_t>(words.max_raw);
    server_.capabilities = words.capabilities;
  } else {
    server_.capabilities.raw_mode = words.read_raw && words.write_raw;
  }
}

ZnSMBClient::Result ZnSMBClient::SendSessionSetup() {
  const auto& logon = Operation<ZnSMBOperation::Logon>();
  lastcommand_ = Values::CmdSessionSetupX;
  if (Reason refused = ZnSmbRefusalToSign(server_, logonrules_)) return Fail(refused);
  if (Reason refused = ZnSMBRefusalToSend(logon.password, server_, logonrules_)) return Fail(refused);
  const ZnSMBPasswordFields passwords(logon.user, logon.password, server_, logonrules_);

  ZnSMBCSessionSetupX_ReqWords words(server_.dialect);
  words.max_buffer = server_.announcedbuffer;  // returned unchanged
  words.max_mpx = server_.maxmpx;
  words.session_key = server_.sessionkey;
  words.password_length = static_cast<uint16_t>(passwords.first.Length());
  words.ntpassword_length = static_cast<uint16_t>(passwords.second.Length());
  words.capabilities.unicode = true;

  ZnSMBCSessionSetupX_ReqData data(server_.dialect, RequestEncoding());
  data.password = passwords.first;
  data.ntpassword = passwords.second;
  data.name = logon.user;
  data.domain = useserverdomain_ ? server_.domain : workgroup_;
  data.nativeos = NativeOS();
  data.nativelanman = kClientName;
  return SendRequest(Values::CmdSessionSetupX, words, data);
}

ZnSMBClient::Result ZnSMBClient::SessionSetupReply() {
  ZnSMBCSessionSetupX_RespWords words;
  ZnSMBCSessionSetupX_RespData data(RequestEncoding());
  if (!ReadWords(words) || !ReadData(data)) return ResultFailure;
  header_.uid = reply_.header.uid;
  server_.guest = words.guest;
  server_.nativeos = data.nativeos;
  return ipctree_ ? ResultSuccess : ConnectIPC();
}

ZnSMBClient::Result ZnSMBClient::ConnectIPC() {
  const ZnSMBCTreeObject tree(Destination(), "IPC$", Values::ServiceIPC);
  return Sent(SendTreeConnectX(tree, ZnUniString()));
}

ZnSMBClient::Result ZnSMBClient::IPCTreeReply() {
  ZnSMBCTreeConnectX_RespWords words(reply_.wordcount);
  ZnSMBCTreeConnectX_RespData data(ReplyEncoding());
  if (!ReadWords(words) || !ReadData(data)) return ResultFailure;
  ipctree_ = ZnSMBCTreeObject(Destination(), "IPC$", Values::ServiceIPC);
  ipctree_->tid = reply_.header.tid;
  trees_.insert({ipctree_->tid, *ipctree_});
  return ResultSuccess;
}
