#include "rpc/rpc_server.h"

namespace {

// The largest call of version 2: 8192 bytes of data behind its headers, with a full machine name and 16 groups.
constexpr size_t kReadBufferSize = 9216;
// In one system call. Large enough for the calls that one client has on their way.
constexpr size_t kMostCallsATurn = 16;
constexpr size_t kMostReplies = 32;
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
      turn_end_callback_(this, &ZnRPCServer::TurnEndCallback),
      calls_(kMostCallsATurn, kReadBufferSize),
      replies_(kMostReplies) {
  error_ = Start(local, port);
}

ZnRPCServer::~ZnRPCServer() {
  replies_.Send(socket_.Fd());
  loop_->CancelTurnEnd(&turn_end_callback_);
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
  if (value != ZnEvent::Fired) return;
  const size_t count = calls_.Receive(socket_.Fd());
  for (size_t i = 0; i < count; i++) Serve(calls_[i]);
}

void ZnRPCServer::TurnEndCallback(ZnEventCallback*, ZnEvent::cbdispatch) { replies_.Send(socket_.Fd()); }

void ZnRPCServer::Serve(const ZnDatagramReader::Datagram& datagram) {
  const ZnInetAddr& source = datagram.from;
  if (!ServesCaller(source)) return;
  ZnRPCMessageFromClient message;
  ZnXdrReader in(datagram.bytes, datagram.length);
  if (!message.ReadHeader(in)) return;
  if (message.call_body.rpcversion != ZnRPCEnum::kRpcVersion) {
    return SendRpcMismatch(source, message.xid, ZnRPCEnum::kRpcVersion, ZnRPCEnum::kRpcVersion);
  }
  HandleCall(message, in, source);
}

void ZnRPCServer::SendRpcMessage(const ZnRPCMessageFromServer& message, const ZnInetAddr& to) {
  ZnXdrWriter out(NextReply(to));
  message.Write(out);
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

void ZnRPCServer::SendAgain(const ZnInetAddr& to, const ZnPacket& reply) { NextReply(to).Append(reply); }

// A message with no data in it is the front of one with data.
void ZnRPCServer::WriteSuccess(ZnXdrWriter& out, uint32_t xid) { Accepted(xid, ZnRPCEnum::SUCCESS).Write(out); }

ZnPacket& ZnRPCServer::NextReply(const ZnInetAddr& to) {
  if (replies_.IsFull()) replies_.Send(socket_.Fd());
  if (replies_.Count() == 0) loop_->AtTurnEnd(&turn_end_callback_);
  return replies_.Add(to);
}
