#pragma once
// Contract. A moment or a span of time.

#include <compare>
#include <cstdint>

struct ZnTimeVal {
  uint32_t seconds = 0;
  uint32_t microseconds = 0;  // below 1000000

  // The time of day, from the replaceable clock.
  static ZnTimeVal now();
  // Tests run on a clock of their own: `clock` replaces the host's until null is set. Not owned.
  static void SetClock(ZnTimeVal (*clock)());

  bool IsZero() const { return seconds == 0 && microseconds == 0; }
  // Sums are normalised and stop at the largest time instead of wrapping.
  ZnTimeVal operator+(const ZnTimeVal& span) const;
  ZnTimeVal PlusSeconds(uint32_t count) const { return *this + ZnTimeVal{count, 0}; }
  ZnTimeVal PlusMilliseconds(uint32_t count) const { return *this + ZnTimeVal{count / 1000, count % 1000 * 1000}; }
  // Milliseconds from `earlier` to this time, rounded down; negative when `earlier` is later.
  int64_t MillisecondsSince(const ZnTimeVal& earlier) const;

  auto operator<=>(const ZnTimeVal&) const = default;
};
