#pragma once
// How long what the tree remembers is good.

#include <algorithm>
#include <cstdint>

#include "runtime/time_val.h"

// Whether something refreshed at `since` is still good after `ttl` seconds at most; the exact end still counts. A zero
// time is out of date. Any number may be configured: below 0 counts as 0, and a clock that was set back makes things
// old, not young for ever.
inline bool ZnIsFresh(const ZnTimeVal& since, int32_t ttl) {
  if (since.IsZero()) return false;
  ZnTimeVal now = ZnTimeVal::now();
  return since <= now && now <= since.PlusSeconds(static_cast<uint32_t>(std::max(ttl, 0)));
}
