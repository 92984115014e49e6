// From nothing to a usable connection: NetBIOS session, dialect, logon, the "IPC$" tree.

#include "runtime/sys_info.h"
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

class ConnectOperation : public ZnSmbWireOperation, private ZnSmbConversation::Connector {
 public:
  ConnectOperation(ZnSmbConversation& conversation, const ZnMachine& machine, const ZnUniString& localName,
                   const ZnUniString& user, const ZnUniString& password, ZnSmbDone done)
      : ZnSmbWireOperation(conversation, std::move(done)), machine_(machine), user_(user), password_(password) {
    password_.MarkSecret();
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

  bool SendNegotiate() {
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
    return conversation()->IsCore() ? End() : SendSessionSetup();
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
    server.maxmpx = words.max_mpx;
    server.maxvcs = words.max_vcs;
    server.announcedbuffer = static_cast<uint16_t>(words.max_buffer);
    server.sessionkey = words.session_key;
    server.timezone = static_cast<int16_t>(words.time_zone);
    if (nt) {
      server.maxrawsize = static_cast<uint16_t>(words.max_raw);
      server.capabilities = words.capabilities;
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
    } else if (words.index == Values::DialectNT) {
      ZnSMBCNegotiate_RespData data(words.key_length);
      if (!reply.ReadData(data)) return false;
      server.challenge = data.key;
      server.domain = DecodeDomain(data.oemdomain);
    }
    return true;
  }

  bool SendSessionSetup() {
    const ZnSMBServerInfo& server = conversation()->server;
    const ZnSmbSettings& settings = conversation()->settings();
    outcome_.lastcommand = Values::CmdSessionSetupX;
    const Reason refused = ZnSMBRefusalToSend(password_, server, settings.rules);
    if (refused != Values::ErrNone) return End(refused);
    const ZnSMBPasswordFields passwords(user_, password_, server, settings.rules);

    ZnSMBCSessionSetupX_ReqWords words(server.dialect);
    words.max_buffer = conversation()->IsNt() ? kOwnBuffer : server.announcedbuffer;
    words.max_mpx = server.maxmpx;
    words.session_key = server.sessionkey;
    words.password_length = static_cast<uint16_t>(passwords.first.Length());
    words.ntpassword_length = static_cast<uint16_t>(passwords.second.Length());
    words.capabilities = Capabilities();

    ZnSMBCSessionSetupX_ReqData data(server.dialect, conversation()->RequestEncoding());
    data.password = passwords.first;
    data.ntpassword = passwords.second;
    data.name = user_;
    data.domain = settings.domain;
    data.nativeos = NativeOS();
    data.nativelanman = kClientName;
    step_ = &ConnectOperation::LoggedOn;
    return Ask(Values::CmdSessionSetupX, words, data);
  }

  // What we make use of if the server has it too.
  ZnSMBCCapabilities Capabilities() const {
    const ZnSMBCCapabilities& offered = conversation()->server.capabilities;
    ZnSMBCCapabilities used;
    used.unicode = true;
    used.large_files = offered.large_files;
    used.nt_commands = offered.nt_commands;
    used.large_readx = offered.large_readx;
    used.large_writex = offered.large_writex;
    return used;
  }

  bool LoggedOn(const ZnSMBCDecode& reply) {
    ZnSMBCSessionSetupX_RespWords words;
    ZnSMBCSessionSetupX_RespData data(conversation()->RequestEncoding());
    if (!reply.ReadWords(words) || !reply.ReadData(data)) return End(Values::ErrRead);
    conversation()->uid = reply.header.uid;
    conversation()->server.guest = words.guest;
    conversation()->server.nativeos = data.nativeos;
    return ConnectIpc();
  }

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
  ZnUniString user_;
  ZnUniString password_;
  ZnSMBCTreeObject ipc_;
  Step step_ = nullptr;
};

}  // namespace

ZnSmbCall ZnSmbClient::Connect(const ZnMachine& machine, const ZnUniString& localName, const ZnUniString& user,
                               const ZnUniString& password, ZnSmbDone done) {
  return std::make_unique<ConnectOperation>(*conversation_, machine, localName, user, password, std::move(done));
}
