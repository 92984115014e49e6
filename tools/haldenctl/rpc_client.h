#pragma once
// Calls of the daemon's NFS program over UDP (RFC 1057), several at once, sent again under the same xid until answered.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

#include "error.h"
#include "rpc/rpc_records.h"
#include "runtime/socket.h"

// Procedures of NFS version 2 (RFC 1094, section 2.2).
enum class NfsProcedure : uint32_t {
  Getattr = 1,
  Setattr = 2,
  Lookup = 4,
  Readlink = 5,
  Read = 6,
  Write = 8,
  Create = 9,
  Remove = 10,
  Rename = 11,
  Symlink = 13,
  Mkdir = 14,
  Rmdir = 15,
  Readdir = 16,
  Statfs = 17,
};

class RpcClient {
 public:
  // Fills the packed arguments of the call with this index, or says why there are none.
  using MakeArguments = std::function<Error(size_t index, ZnPacket& arguments)>;
  // Takes the packed results of the call with this index. Replies come in any order, but never further ahead of a
  // missing one than kWindow calls.
  using TakeResults = std::function<Error(size_t index, const ZnPacket& results)>;

  // Calls under way at once. Their datagrams fit the receive buffer of a socket that nobody has tuned.
  static constexpr size_t kWindow = 8;

  // Calls go to `port` of this host in the name of the calling user; one that isn't answered within `timeout` seconds
  // has failed.
  Error Open(uint16_t port, unsigned timeout);
  // Makes `count` calls of one procedure. The first error ends it; calls that are under way then are forgotten.
  Error CallMany(NfsProcedure procedure, size_t count, const MakeArguments& make, const TakeResults& take);
  Error Call(NfsProcedure procedure, const ZnPacket& arguments, ZnPacket& results);

 private:
  using Clock = std::chrono::steady_clock;
  struct Sent {
    ZnPacket datagram;
    Clock::time_point failed;  // when nobody waits for it any longer
    Clock::time_point again;   // when it is sent the next time
    Clock::duration pause;     // between sendings
  };
  using Window = std::map<size_t, Sent>;  // by index

  ZnPacket CallMessage(uint32_t xid, NfsProcedure procedure, const ZnPacket& arguments) const;
  bool Bind();
  Error Start(NfsProcedure procedure, size_t index, const MakeArguments& make);
  Error Send(const Sent& call);
  Error SendAgain();
  Error WaitForDatagram();
  Error TakeReplies(const TakeResults& take);
  Error SocketError() const;

  ZnSocket socket_;
  uint16_t port_ = 0;
  std::chrono::seconds timeout_{0};
  ZnRPCAuthBlock credentials_;
  uint32_t first_xid_ = 0;  // of the present CallMany; the others follow in the order of their indexes
  uint32_t next_xid_ = 0;   // of the next one
  Window window_;
};
