#include "rpc_client.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>
#include <vector>

#include "rpc/nfs_enum.h"

namespace {

using namespace std::chrono_literals;

constexpr size_t kLargestReply = 65536;
constexpr size_t kMostGroups = 16;  // that AUTH_UNIX has room for
constexpr auto kLongestPause = 20s;

// A repeated LOOKUP or READ costs the daemon next to nothing, so a lost datagram is made good soon. The others change
// something, and one that only takes its time should not be done twice.
std::chrono::seconds FirstPause(NfsProcedure procedure) {
  switch (procedure) {
    case NfsProcedure::Getattr:
    case NfsProcedure::Lookup:
    case NfsProcedure::Readlink:
    case NfsProcedure::Read:
    case NfsProcedure::Write:
    case NfsProcedure::Readdir:
    case NfsProcedure::Statfs:
      return 1s;
    default:
      return 5s;
  }
}

volatile sig_atomic_t interrupted = 0;

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = [](int) { interrupted = 1; };
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &action, nullptr);
}

ZnRPCAuthBlock CallersCredentials() {
  static char host[256] = "";
  gethostname(host, sizeof host - 1);
  std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
  groups.resize(static_cast<size_t>(std::max(getgroups(static_cast<int>(groups.size()), groups.data()), 0)));
  groups.resize(std::min(groups.size(), kMostGroups));

  ZnRPCAuthBlock block;
  block.flavour = ZnRPCEnum::AUTH_UNIX;
  block.auth_body.machinename = host;
  block.auth_body.uid = geteuid();
  block.auth_body.gid = getegid();
  for (const gid_t gid : groups) {
    ZnRPCGroup group;
    group.gid = gid;
    block.auth_body.grouplist.Append(group);
  }
  return block;
}

// Why the daemon didn't serve a call that reached it.
Error Refusal(const ZnRPCReplyBody& reply) {
  if (reply.status == ZnRPCEnum::MSG_DENIED) {
    const char* const why = reply.rejected.status != ZnRPCEnum::AUTH_ERROR ? "another version of RPC"
                            : reply.rejected.authstat == ZnRPCEnum::AUTH_TOOWEAK
                                ? "it serves root only (nfsserver/network/reservedports)"
                                : "its file system has no root yet";
    return {.text = std::string("the daemon refuses the call: ") + why};
  }
  if (reply.accepted.status == ZnRPCEnum::SUCCESS) return {};
  return {.text = "the daemon doesn't serve the call (RPC status " +
                  std::to_string(static_cast<unsigned>(reply.accepted.status)) +
                  "): is it haldenmapd that listens on this port?"};
}

}  // namespace

Error RpcClient::Open(uint16_t port, unsigned timeout) {
  port_ = port;
  timeout_ = std::chrono::seconds(timeout);
  credentials_ = CallersCredentials();
  next_xid_ = std::random_device()();
  CatchInterrupts();
  ZnInetAddr daemon = ZnInetAddr::AddressLoopback();
  daemon.Port(port);
  // Connected, so that only the daemon's datagrams arrive, and its absence is told.
  const bool open = Bind() && socket_.SetBlocking(false) && socket_.Connect(daemon);
  return open ? Error{} : SocketError();
}

// To a port that only root can have, if possible: the daemon may insist on one.
bool RpcClient::Bind() {
  constexpr int64_t kLowest = 600, kHighest = 1023;
  ZnInetAddr local = ZnInetAddr::AddressLoopback();
  for (int64_t port = kHighest; geteuid() == 0 && port >= kLowest; port--) {
    local.Port(port);
    if (socket_.Bind(local, ZnSocket::Datagram, false, 0, false)) return true;
  }
  return socket_.Bind(ZnInetAddr::AddressLoopback(), ZnSocket::Datagram, false, 0, false);
}

Error RpcClient::Call(NfsProcedure procedure, const ZnPacket& arguments, ZnPacket& results) {
  return CallMany(
      procedure, 1,
      [&](size_t, ZnPacket& packed) {
        packed = arguments;
        return Error{};
      },
      [&](size_t, const ZnPacket& packed) {
        results = packed;
        return Error{};
      });
}

Error RpcClient::CallMany(NfsProcedure procedure, size_t count, const MakeArguments& make, const TakeResults& take) {
  // The answers to calls of before that were given up are never taken for these'.
  first_xid_ = next_xid_;
  next_xid_ += static_cast<uint32_t>(count);
  window_.clear();
  for (size_t next = 0; next < count || !window_.empty();) {
    while (next < count && (window_.empty() || next < window_.begin()->first + kWindow))
      if (Error error = Start(procedure, next++, make)) return error;
    if (Error error = WaitForDatagram()) return error;
    if (Error error = TakeReplies(take)) return error;
    if (Error error = SendAgain()) return error;
  }
  return {};
}

Error RpcClient::Start(NfsProcedure procedure, size_t index, const MakeArguments& make) {
  ZnPacket arguments;
  if (Error error = make(index, arguments)) return error;
  const auto now = Clock::now();
  const auto pause = FirstPause(procedure);
  const uint32_t xid = first_xid_ + static_cast<uint32_t>(index);
  Sent& call = window_[index] = {CallMessage(xid, procedure, arguments), now + timeout_, now + pause, pause};
  return Send(call);
}

ZnPacket RpcClient::CallMessage(uint32_t xid, NfsProcedure procedure, const ZnPacket& arguments) const {
  ZnRPCMessageFromClient message;
  message.xid = xid;
  message.call_body.program = ZnNFSEnum::kProgram;
  message.call_body.version = ZnNFSEnum::kVersion;
  message.call_body.procedure = static_cast<uint32_t>(procedure);
  message.call_body.credentials = credentials_;
  message.call_body.rpc_data = arguments;
  return message.Pack();
}

Error RpcClient::Send(const Sent& call) {
  size_t moved = 0;
  const auto status = socket_.Write(call.datagram.Data(), call.datagram.Length(), moved);
  // A full buffer loses the datagram, which the next sending makes good.
  const bool lost = status == ZnFile::IoStatus::Partial;
  return status == ZnFile::IoStatus::Complete || lost ? Error{} : SocketError();
}

Error RpcClient::SendAgain() {
  const auto now = Clock::now();
  for (auto& [index, call] : window_) {
    if (now >= call.failed) {
      return {
          .text = "no answer from UDP port " + std::to_string(port_) + " of this host within " +
                  std::to_string(timeout_.count()) +
                  " seconds. The machine behind it may be slow (--timeout waits longer), or the daemon doesn't accept "
                  "calls from here (nfsserver/network/addresses)",
          .code = kNoAnswer};
    }
    if (now < call.again) continue;
    call.pause = std::min<Clock::duration>(2 * call.pause, kLongestPause);
    call.again = now + call.pause;
    if (Error error = Send(call)) return error;
  }
  return {};
}

// Sleeps until something came or a call has to be sent again.
Error RpcClient::WaitForDatagram() {
  auto due = Clock::time_point::max();
  for (const auto& [index, call] : window_) due = std::min({due, call.again, call.failed});
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
  pollfd waiting = {.fd = socket_.Fd(), .events = POLLIN, .revents = 0};
  const int result = poll(&waiting, 1, static_cast<int>(std::max<long>(left, 0)));
  if (interrupted != 0) {
    interrupted = 0;  // what tidies up may call again
    return {.text = "interrupted", .code = kInterrupted};
  }
  return result < 0 && errno != EINTR ? Error{.text = std::string("poll: ") + strerror(errno)} : Error{};
}

Error RpcClient::TakeReplies(const TakeResults& take) {
  static uint8_t buffer[kLargestReply];
  size_t length = 0;
  ZnFile::IoStatus status;
  // A datagram never fills the buffer.
  while ((status = socket_.Read(buffer, sizeof buffer, length)) == ZnFile::IoStatus::Partial && length > 0) {
    ZnRPCMessageFromServer reply;
    if (!reply.Read(ZnPacket(buffer, length))) continue;
    const auto call = window_.find(reply.xid - first_xid_);
    if (call == window_.end()) continue;  // the second answer to a call that was sent twice
    const size_t index = call->first;
    window_.erase(call);
    if (Error error = Refusal(reply.reply_body)) return error;
    if (Error error = take(index, reply.reply_body.accepted.rpc_data)) return error;
  }
  const bool failed = status == ZnFile::IoStatus::Failed || status == ZnFile::IoStatus::Closed;
  return failed ? SocketError() : Error{};
}

Error RpcClient::SocketError() const {
  if (socket_.Error().Code() == ECONNREFUSED)
    return {.text = "nobody listens on UDP port " + std::to_string(port_) +
                    " of this host. Is haldenmapd running, and does its profile set another port "
                    "(nfsserver/mount/port, --port)?",
            .code = kNoAnswer};
  return {.text = "the socket to the daemon failed: " + std::string(strerror(socket_.Error().Code())),
          .code = kNoAnswer};
}
