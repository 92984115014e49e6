#pragma once
// How long what the tree remembers is good.

#include <algorithm>
#include <cstdint>

#include "runtime/clock.h"

// Whether something refreshed at `since` is still good after `ttl` seconds at most; the exact end still counts. What
// was never refreshed is out of date. Any number may be configured: below 0 counts as 0.
inline bool ZnIsFresh(ZnMoment since, int32_t ttl) {
  if (since == ZnMoment{}) return false;
  return ZnSteadyClock::now() <= since + std::chrono::seconds(std::max(ttl, 0));
}
