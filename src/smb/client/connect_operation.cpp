// From nothing to a usable connection: NetBIOS session, dialect, logon, the "IPC$" tree.

#include "smb/client/logon_operation.h"
#include "smb/client/tree_connect.h"
#include "smb/wire/session_sections.h"

using Values = ZnSMBClientValues;

namespace {

// A dialect's place in the list is its number in the reply.
constexpr const char* kDialects[] = {"PC NETWORK PROGRAM 1.0", "Windows for Workgroups 3.1a", "NT LM 0.12"};

class ConnectOperation : public ZnSmbLogonOperation, private ZnSmbConversation::Connector {
 public:
  ConnectOperation(ZnSmbConversation& conversation, const ZnMachine& machine, const ZnUniString& localName,
                   const ZnUniString& user, const ZnUniString& password, ZnSmbDone done)
      : ZnSmbLogonOperation(conversation, user, password, std::move(done)), machine_(machine) {
    const bool begun = conversation.Connect(this, ZnMachine(localName, ZnMachine::Workstation), machine);
    if (!begun) EndSoon(Values::ErrConnect);
  }
  ~ConnectOperation() override {
    if (!IsOver() && conversation()) conversation()->Forget();
  }

 private:
  void Connected() override { SendNegotiate(); }
  void ConnectionLost(Reason reason) override { End(reason); }
  void Forgotten() override { EndSoon(Values::ErrDisconnect); }
  bool Accepted(const ZnSMBCDecode& reply, const Part& part) override {
    switch (reply.header.command) {
      case Values::CmdNegotiate:
        return Negotiated(reply);
      case Values::CmdTreeConnectX:
        return IpcConnected(reply);
      default:
        return ZnSmbLogonOperation::Accepted(reply, part);
    }
  }
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
    return Ask(Values::CmdNegotiate, ZnSMBCNegotiate_ReqWords(), data);
  }

  bool Negotiated(const ZnSMBCDecode& reply) {
    ZnSMBCNegotiate_RespWords words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    if (words.index > Values::DialectNT) return End(Values::ErrNegprot);  // 0xFFFF: none of them suits the server
    TakeNegotiateWords(words, reply.header.unicode);
    if (!TakeNegotiateData(words, reply)) return End(Values::ErrNegprot);
    // The oldest dialect has neither logons nor "IPC$", nor a way to say how much it takes at a time.
    return conversation()->IsCore() ? End() : LogOn();
  }

  void TakeNegotiateWords(const ZnSMBCNegotiate_RespWords& words, bool unicode) {
    ZnSMBServerInfo& server = conversation()->server;
    const bool nt = words.index == Values::DialectNT;
    server.dialect = static_cast<Values::Dialect>(words.index);
    server.unicode = nt && words.capabilities.unicode && unicode;
    if (words.index == Values::DialectCORE) return;  // it tells nothing else

    server.securitylevel = words.user_level ? Values::SecLevelUser : Values::SecLevelShare;
    server.encryptedpasswords = words.encrypted_passwords;
    server.cansign = words.signing_enabled;
    server.mustsign = words.signing_required;
    server.maxmpx = words.max_mpx;
    server.announcedbuffer = static_cast<uint16_t>(words.max_buffer);
    server.sessionkey = words.session_key;
    server.timezone = static_cast<int16_t>(words.time_zone);
    if (nt) {
      server.capabilities = words.capabilities;
      server.extendedsecurity = words.capabilities.extended_security;
      server.systemtime = words.system_time;
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
    }
    return true;
  }

  bool LoggedOn() override {
    ipc_ = ZnSMBCTreeObject(machine_, "IPC$", Values::ServiceIPC);
    const ZnSmbTreeConnect request(*conversation(), ipc_, ZnUniString());
    if (request.reason != Values::ErrNone) return End(request.reason);
    return Ask(Values::CmdTreeConnectX, request.words, request.data);
  }

  bool IpcConnected(const ZnSMBCDecode& reply) {
    if (!ZnSmbReadTreeConnect(*conversation(), reply, ipc_)) return End(Values::ErrRead);
    conversation()->EnterTree(ipc_);
    return End();
  }

  ZnMachine machine_;
  ZnSMBCTreeObject ipc_;
};

}  // namespace

ZnSmbCall ZnSmbClient::Connect(const ZnMachine& machine, const ZnUniString& localName, const ZnUniString& user,
                               const ZnUniString& password, ZnSmbDone done) {
  return std::make_unique<ConnectOperation>(*conversation_, machine, localName, user, password, std::move(done));
}
