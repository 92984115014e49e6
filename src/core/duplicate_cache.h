#pragma once
// Tells a call from its repetition. A caller that hears nothing sends its call again, with the same xid from the same
// port, and can't know whether the call or the reply was lost. A call that is still being served is answered by the
// reply on its way; one that changed something must not be done twice (a second REMOVE would report that there is no
// such file), so it is sent the first reply again. Others are simply served anew. (C. Juszczak, "Improving the
// Performance and Correctness of an NFS Server", USENIX Winter 1989.)

#include <chrono>
#include <list>
#include <unordered_map>
#include <unordered_set>

#include "runtime/clock.h"
#include "runtime/inet_addr.h"
#include "runtime/packet.h"

// What a call has in common with its repetitions and with no other call.
struct ZnCallKey {
  ZnInetAddr caller;
  uint32_t xid = 0;
  uint32_t procedure = 0;
  uint64_t arguments = 0;  // keyed hash of their first bytes: a caller may count its xids anew from the same port
  bool operator==(const ZnCallKey&) const = default;
};
template <>
struct std::hash<ZnCallKey> {
  size_t operator()(const ZnCallKey& key) const noexcept;
};

class ZnDuplicateCache {
 public:
  static constexpr size_t kMostReplies = 1024;
  static constexpr std::chrono::seconds kLifetime{60};

  // The call is being served, from Begin until End.
  void Begin(const ZnCallKey& call) { in_flight_.insert(call); }
  void End(const ZnCallKey& call) { in_flight_.erase(call); }
  bool IsInFlight(const ZnCallKey& call) const { return !in_flight_.empty() && in_flight_.contains(call); }

  // Keeps the reply to a call for its lifetime, or until so many later ones are kept.
  void Keep(const ZnCallKey& call, const ZnPacket& reply);
  // The reply that is kept for a call; null without one. Valid until the next Keep.
  const ZnPacket* FindReply(const ZnCallKey& call) const;

 private:
  struct Reply {
    ZnCallKey call;
    ZnMoment sent;
    ZnPacket packet;
  };
  using Replies = std::list<Reply>;

  void DropOldest();

  std::unordered_set<ZnCallKey> in_flight_;
  Replies replies_;  // oldest first
  std::unordered_map<ZnCallKey, Replies::iterator> by_call_;
};
