// Connection, logon, shares, and what is settled about the server when it has let us in.

#include <algorithm>

#include "runtime/checksum.h"
#include "runtime/sys_info.h"
#include "session/session.h"

using Values = ZnSMBClientValues;

namespace {

// What a server can do.
enum ServerClass : unsigned { kCore = 0, kNamelessNT = 1, kWindowsNT = 2, kOther = 3 };

// How long to wait for a machine to take a connection when it has just left a request unanswered.
constexpr uint32_t kSuspectSeconds = 2;

constexpr int32_t kAsTheServerSays = -1;
constexpr int32_t kNoOffset = -2;  // the same for servers of the oldest dialect, which say nothing

unsigned ClassOf(const ZnSMBServerInfo& server) {
  if (server.dialect == Values::DialectCORE) return kCore;
  if (server.dialect != Values::DialectNT) return kOther;
  if (server.nativeos.IsEmpty()) return kNamelessNT;
  return server.nativeos.StartsWith("Windows NT") ? kWindowsNT : kOther;
}

}  // namespace

void ZnSMBNFSSession::CheckConnected(Command&) {
  flushing_ = false;
  if (IsUsable()) return Advance();
  DropConnection();
  attempt_ = ZnSteadyClock::now();
  ApplySettings();
  ZnMachine server = Server();
  server.Name(address_);
  Called(OpenSession(server, CallingName(), config.winname, config.password, &callback_));
}

// The record may have been loaded again since the last connection.
void ZnSMBNFSSession::ApplySettings() {
  ApplyTimeout();
  workgroup(config.domain);
  logonrules({config.cleartext, config.minauth, config.signing});
  encoding(config.encoding);
}

void ZnSMBNFSSession::ApplyTimeout() {
  auto seconds = static_cast<uint32_t>(std::max(config.smbtimeout, 1));
  if (suspect_) seconds = std::min(seconds, kSuspectSeconds);
  replytimeout(seconds);
  SetSessionTimeout(std::chrono::seconds(seconds));
}

ZnMachine ZnSMBNFSSession::Server() const { return {config.nbtname, ZnMachine::Server}; }

// Digits first: a NetBIOS name holds 15 characters, and two users of one host stay distinct this way.
ZnUniString ZnSMBNFSSession::CallingName() const {
  const ZnUniString name = config.user + ZnSysInfoHostName();
  return ZnUniString::CreateFromUnsigned(ZnCheckSum::Sum(name)) + name;
}

void ZnSMBNFSSession::ProcessConnect() {
  Lives();
  ApplyTimeout();
  serverclass_ = ClassOf(server());
  timeoffset_ = config.timeoffset;
  if (serverclass_ == kCore) {
    if (timeoffset_ == kAsTheServerSays || timeoffset_ == kNoOffset) timeoffset_ = 0;
  } else if (timeoffset_ == kAsTheServerSays) {
    timeoffset_ = server().timezone * 60;
  }
}

void ZnSMBNFSSession::CheckTreeConnected(Command& command) {
  ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  if (!NamesAreHeld(command)) return;
  if (tree->connected) return Advance();
  Called(TreeConnect(tree, tree->config.password, &callback_));
}

void ZnSMBNFSSession::ProcessTreeConnect(Command& command) {
  if (ZnSMBNFSTree* tree = TreeOf(command)) tree->connected = true;
}

ZnSMBNFSTree* ZnSMBNFSSession::TreeOf(const ZnSMBNFSNode* node) {
  return node && node->sharenode ? node->sharenode->tree : nullptr;
}
