#include "rpc/rpc_server.h"

namespace {

// The largest call of version 2: 8192 bytes of data behind its headers, with a full machine name and 16 groups.
constexpr size_t kReadBufferSize = 9216;
constexpr size_t kUsualReply = 128;  // bytes; longer ones grow
constexpr unsigned kSocketBufferSize = 32768;
// A client may have 16 writes of 8192 bytes on their way, and several clients so many each: what doesn't fit is lost,
// and sent again only after a second or more.
constexpr unsigned kWantedReceiveBuffer = 1 << 20;

ZnRPCMessageFromServer Accepted(uint32_t xid, ZnRPCEnum::AcceptStat status) {
  ZnRPCMessageFromServer message;
  message.xid = xid;
  message.reply_body.status = ZnRPCEnum::MSG_ACCEPTED;
  message.reply_body.accepted.status = status;
  return message;
}

ZnRPCMessageFromServer Denied(uint32_t xid, ZnRPCEnum::RejectStat status) {
  ZnRPCMessageFromServer message;
  message.xid = xid;
  message.reply_body.status = ZnRPCEnum::MSG_DENIED;
  message.reply_body.rejected.status = status;
  return message;
}

}  // namespace

ZnRPCServer::ZnRPCServer(ZnEventLoopBase* loop, unsigned port, const ZnInetAddr& local)
    : loop_(loop),
      read_callback_(this, &ZnRPCServer::ReadCallback),
      write_callback_(this, &ZnRPCServer::WriteCallback) {
  error_ = Start(local, port);
}

ZnRPCServer::~ZnRPCServer() {
  SendWaiting();
  if (watched_) loop_->RemoveFileEvent(static_cast<unsigned>(socket_.Fd()), true, false, &read_callback_);
}

// The text of what failed; null when all is well.
const char* ZnRPCServer::Start(ZnInetAddr address, unsigned port) {
  address.Port(port);
  // Not blocking, since a datagram that woke the loop may be gone when it is read (a bad checksum).
  if (!address.Error().IsEmpty() || !socket_.Bind(address, ZnSocket::Datagram, false, 0, false) ||
      !socket_.SetBlocking(false)) {
    return "Failed to bind to local socket";
  }
  socket_.SetReceiveBufferSize(kWantedReceiveBuffer);  // as far as the host allows
  if (socket_.GetReceiveBufferSize() < kSocketBufferSize && !socket_.SetReceiveBufferSize(kSocketBufferSize)) {
    return "Failed to set get buffer size";
  }
  if (socket_.GetTransmitBufferSize() < kSocketBufferSize && !socket_.SetTransmitBufferSize(kSocketBufferSize)) {
    return "Failed to set send buffer size";
  }
  watched_ = loop_->AddFileEvent(static_cast<unsigned>(socket_.Fd()), true, false, &read_callback_);
  return watched_ ? nullptr : "Failed to add callback";
}

void ZnRPCServer::ReadCallback(ZnEventCallback*, ZnEvent::cbdispatch value) {
  if (value == ZnEvent::Fired) ProcessRpcMessage();
}

void ZnRPCServer::WriteCallback(ZnEventCallback*, ZnEvent::cbdispatch value) {
  if (value == ZnEvent::Fired) SendWaiting();
}

void ZnRPCServer::ProcessRpcMessage() {
  static uint8_t buffer[kReadBufferSize];  // decoded in full before a handler can run, so that one serves all
  size_t length = sizeof buffer;
  ZnInetAddr source;
  ZnFile::IoStatus status = socket_.ReadMessage(buffer, sizeof buffer, length, source);
  if (status == ZnFile::IoStatus::Failed || status == ZnFile::IoStatus::Closed) return;
  if (!ServesCaller(source)) return;

  ZnRPCMessageFromClient message;
  ZnXdrReader in(buffer, length);
  if (!message.ReadHeader(in)) return;
  if (message.call_body.rpcversion != ZnRPCEnum::kRpcVersion) {
    return SendRpcMismatch(source, message.xid, ZnRPCEnum::kRpcVersion, ZnRPCEnum::kRpcVersion);
  }
  HandleCall(message, in, source);
}

void ZnRPCServer::SendRpcMessage(const ZnRPCMessageFromServer& message, const ZnInetAddr& to) {
  ZnXdrWriter out(reply_);
  message.Write(out);
  SendReply(to);
}

void ZnRPCServer::SendMiscError(const ZnInetAddr& to, uint32_t xid, ZnRPCEnum::AcceptStat status) {
  using namespace ZnRPCEnum;
  if (status == SUCCESS || status == PROG_MISMATCH) status = GARBAGE_ARGS;
  SendRpcMessage(Accepted(xid, status), to);
}

void ZnRPCServer::SendProgMismatch(const ZnInetAddr& to, uint32_t xid, uint32_t low, uint32_t high) {
  ZnRPCMessageFromServer message = Accepted(xid, ZnRPCEnum::PROG_MISMATCH);
  message.reply_body.accepted.low = low;
  message.reply_body.accepted.high = high;
  SendRpcMessage(message, to);
}

void ZnRPCServer::SendRpcMismatch(const ZnInetAddr& to, uint32_t xid, uint32_t low, uint32_t high) {
  ZnRPCMessageFromServer message = Denied(xid, ZnRPCEnum::RPC_MISMATCH);
  message.reply_body.rejected.low = low;
  message.reply_body.rejected.high = high;
  SendRpcMessage(message, to);
}

void ZnRPCServer::SendAuthError(const ZnInetAddr& to, uint32_t xid, ZnRPCEnum::AuthStat status) {
  ZnRPCMessageFromServer message = Denied(xid, ZnRPCEnum::AUTH_ERROR);
  message.reply_body.rejected.authstat = status;
  SendRpcMessage(message, to);
}

void ZnRPCServer::SendAgain(const ZnInetAddr& to, const ZnPacket& reply) {
  reply_ = reply;
  SendReply(to);
}

// The reply so far; the result follows. A message with no data in it is the front of one with data.
ZnXdrWriter ZnRPCServer::StartSuccess(uint32_t xid) {
  reply_.Reserve(kUsualReply);
  ZnXdrWriter out(reply_);
  Accepted(xid, ZnRPCEnum::SUCCESS).Write(out);
  return out;
}

void ZnRPCServer::SendReply(const ZnInetAddr& to) {
  if (waiting_.empty()) loop_->AddFileEvent(static_cast<unsigned>(socket_.Fd()), false, true, &write_callback_);
  waiting_.push_back({std::exchange(reply_, {}), to});
}

void ZnRPCServer::SendWaiting() {
  if (waiting_.empty()) return;
  loop_->RemoveFileEvent(static_cast<unsigned>(socket_.Fd()), false, true, &write_callback_);
  for (const Reply& reply : waiting_) {
    size_t length = 0;
    socket_.WriteMessage(reply.packet.Data(), reply.packet.Length(), length, reply.to);
  }
  waiting_.clear();
}
