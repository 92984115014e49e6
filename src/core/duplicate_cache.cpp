#include "core/duplicate_cache.h"

#include <array>

#include "runtime/keyed_hash.h"

size_t std::hash<ZnCallKey>::operator()(const ZnCallKey& key) const noexcept {
  const std::array<uint64_t, 3> words{uint64_t{key.caller.AsUint32()} << 16 | key.caller.GetPort(),
                                      uint64_t{key.xid} << 32 | key.procedure, key.arguments};
  return ZnKeyedHash(words.data(), sizeof words);
}

void ZnDuplicateCache::Keep(const ZnCallKey& call, const ZnPacket& reply) {
  if (const auto former = by_call_.find(call); former != by_call_.end()) {  // past its lifetime, or nobody serves anew
    replies_.erase(former->second);
    by_call_.erase(former);
  }
  const ZnMoment now = ZnSteadyClock::now();
  while (!replies_.empty() && (replies_.size() >= kMostReplies || replies_.front().sent + kLifetime < now)) {
    DropOldest();
  }
  by_call_[call] = replies_.insert(replies_.end(), {call, now, ZnPacket(reply.Data(), reply.Length())});
}

const ZnPacket* ZnDuplicateCache::FindReply(const ZnCallKey& call) const {
  const auto found = by_call_.find(call);
  if (found == by_call_.end() || found->second->sent + kLifetime < ZnSteadyClock::now()) return nullptr;
  return &found->second->packet;
}

void ZnDuplicateCache::DropOldest() {
  by_call_.erase(replies_.front().call);
  replies_.pop_front();
}
