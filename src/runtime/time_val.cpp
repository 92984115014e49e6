#include "runtime/time_val.h"

#include <limits>

ZnTimeVal ZnTimeVal::operator+(const ZnTimeVal& span) const {
  constexpr uint32_t kMicrosecondsPerSecond = 1000000;
  constexpr uint32_t kLatest = std::numeric_limits<uint32_t>::max();
  const uint64_t micros = uint64_t{microseconds} + span.microseconds;
  const uint64_t whole = uint64_t{seconds} + span.seconds + micros / kMicrosecondsPerSecond;
  if (whole > kLatest) return {kLatest, kMicrosecondsPerSecond - 1};
  return {static_cast<uint32_t>(whole), static_cast<uint32_t>(micros % kMicrosecondsPerSecond)};
}
