#include "runtime/time_val.h"

#include <sys/time.h>

#include <limits>

namespace {

constexpr uint32_t kMicrosecondsPerSecond = 1000000;
constexpr ZnTimeVal kLatest{std::numeric_limits<uint32_t>::max(), kMicrosecondsPerSecond - 1};

ZnTimeVal Normalised(uint64_t seconds, uint64_t microseconds) {
  seconds += microseconds / kMicrosecondsPerSecond;
  if (seconds > kLatest.seconds) return kLatest;
  return {static_cast<uint32_t>(seconds), static_cast<uint32_t>(microseconds % kMicrosecondsPerSecond)};
}

ZnTimeVal HostClock() {
  timeval time{};
  gettimeofday(&time, nullptr);
  return Normalised(static_cast<uint64_t>(time.tv_sec), static_cast<uint64_t>(time.tv_usec));
}

ZnTimeVal (*the_clock)() = HostClock;

}  // namespace

ZnTimeVal ZnTimeVal::now() { return the_clock(); }

void ZnTimeVal::SetClock(ZnTimeVal (*clock)()) { the_clock = clock ? clock : HostClock; }

ZnTimeVal ZnTimeVal::operator+(const ZnTimeVal& span) const {
  return Normalised(uint64_t{seconds} + span.seconds, uint64_t{microseconds} + span.microseconds);
}

int64_t ZnTimeVal::MillisecondsSince(const ZnTimeVal& earlier) const {
  const int64_t whole_seconds = int64_t{seconds} - earlier.seconds;
  const int64_t difference = whole_seconds * kMicrosecondsPerSecond + microseconds - earlier.microseconds;
  // Down, not towards zero: the shift of the negative half by 999 does what the division alone wouldn't.
  return (difference >= 0 ? difference : difference - 999) / 1000;
}
