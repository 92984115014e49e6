#pragma once
// Contract. A time of day, as people, clients and servers are shown it, or a span of it. Anybody may set the clock that
// it comes from: what waits or ages goes by the moments of clock.h.

#include <compare>
#include <cstdint>

struct ZnTimeVal {
  uint32_t seconds = 0;
  uint32_t microseconds = 0;  // below 1000000

  // The time of day, which stands still during a turn of the event loop.
  static ZnTimeVal now();
  // The same from the host's clock itself.
  static ZnTimeVal Read();
  // Tests run on a clock of their own: `clock` replaces the host's until null is set. Not owned.
  static void SetClock(ZnTimeVal (*clock)());

  bool IsZero() const { return seconds == 0 && microseconds == 0; }
  // Sums are normalised and stop at the largest time instead of wrapping.
  ZnTimeVal operator+(const ZnTimeVal& span) const;

  auto operator<=>(const ZnTimeVal&) const = default;
};
