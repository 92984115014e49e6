#pragma once
// An RPC server on one UDP socket (RFC 1057), without record marking and without a port mapper. It keeps nothing about
// a call: a reply may leave at any later time, given the caller's address and transaction id.

#include "rpc/rpc_records.h"
#include "runtime/datagrams.h"
#include "runtime/event_loop.h"
#include "runtime/socket.h"

class ZnRPCServer {
 public:
  // Binds `port` (0: any free one) of the interface with the address `local`, or of all, and watches it on `loop`,
  // which outlives the server. error() tells how it went.
  ZnRPCServer(ZnEventLoopBase* loop, unsigned port, const ZnInetAddr& local = ZnInetAddr::AddressAny());
  ZnRPCServer(const ZnRPCServer&) = delete;
  ZnRPCServer& operator=(const ZnRPCServer&) = delete;
  virtual ~ZnRPCServer();

  // Empty when the server stands, else why it doesn't.
  const ZnUniString& error() const { return error_; }
  // The address that is bound, with its port.
  bool LocalAddress(ZnInetAddr& address) { return socket_.LocalAddress(address); }

  // Asked about each datagram before anything of it is read; false drops it.
  virtual bool ServesCaller(const ZnInetAddr& /*source*/) { return true; }
  // Serves one call of RPC version 2, whose arguments are what `arguments` has left. All that is needed after the
  // return must be copied. The server isn't touched after this returns.
  virtual void HandleCall(const ZnRPCMessageFromClient& call, ZnXdrReader& arguments, const ZnInetAddr& source) = 0;

  // Replies. They leave together when the loop's turn ends. Each is sent once; one that can't be sent is dropped, since
  // callers that hear nothing call again.
  void SendRpcMessage(const ZnRPCMessageFromServer& message, const ZnInetAddr& to);
  // The call was served: `write` is given the writer to write the result with, straight into the reply.
  template <class Write>
  void SendSuccess(const ZnInetAddr& to, uint32_t xid, Write write) {
    ZnXdrWriter out(NextReply(to));
    WriteSuccess(out, xid);
    write(out);
  }
  // The call wasn't served. SUCCESS and PROG_MISMATCH say nothing without more data and become GARBAGE_ARGS.
  void SendMiscError(const ZnInetAddr& to, uint32_t xid, ZnRPCEnum::AcceptStat status);
  // `low` to `high` are the versions of the program that are served.
  void SendProgMismatch(const ZnInetAddr& to, uint32_t xid, uint32_t low, uint32_t high);
  void SendRpcMismatch(const ZnInetAddr& to, uint32_t xid, uint32_t low, uint32_t high);
  void SendAuthError(const ZnInetAddr& to, uint32_t xid, ZnRPCEnum::AuthStat status);
  // A whole reply of before.
  void SendAgain(const ZnInetAddr& to, const ZnPacket& reply);

  // Reads and serves what has come, up to a number: a flood of calls shares the loop with all else.
  void ReadCallback(ZnEventCallback* callback, ZnEvent::cbdispatch value);
  // Sends the replies that were made.
  void TurnEndCallback(ZnEventCallback* callback, ZnEvent::cbdispatch value);

 protected:
  // The reply that was made last, whole. To be asked for in the turn in which it was made.
  const ZnPacket& LastReply() const { return replies_.Last(); }

 private:
  const char* Start(ZnInetAddr address, unsigned port);
  void Serve(const ZnDatagramReader::Datagram& datagram);
  // Where to write the next reply.
  ZnPacket& NextReply(const ZnInetAddr& to);
  static void WriteSuccess(ZnXdrWriter& out, uint32_t xid);

  ZnEventLoopBase* loop_;
  ZnSocket socket_;
  ZnUniString error_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnRPCServer> read_callback_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnRPCServer> turn_end_callback_;
  bool watched_ = false;
  ZnDatagramReader calls_;
  ZnDatagramWriter replies_;  // until the turn's end
};
