#include "runtime/clock.h"

#include <sys/time.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <optional>

#include "runtime/time_val.h"

namespace {

std::optional<ZnMoment> turn_moment;
std::optional<ZnTimeVal> turn_time;
ZnMoment (*test_clock)() = nullptr;
ZnTimeVal (*test_time)() = nullptr;

}  // namespace

ZnMoment ZnSteadyClock::Read() {
  if (test_clock) return test_clock();
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return ZnMoment(
      std::chrono::duration_cast<duration>(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec)));
}

ZnMoment ZnSteadyClock::now() { return turn_moment && !test_clock ? *turn_moment : Read(); }

void ZnSteadyClock::SetClock(ZnMoment (*clock)()) { test_clock = clock; }

ZnTimeVal ZnTimeVal::Read() {
  if (test_time) return test_time();
  timeval time{};
  gettimeofday(&time, nullptr);
  constexpr int64_t kLatest = std::numeric_limits<uint32_t>::max();
  return {static_cast<uint32_t>(std::clamp<int64_t>(time.tv_sec, 0, kLatest)), static_cast<uint32_t>(time.tv_usec)};
}

ZnTimeVal ZnTimeVal::now() { return turn_time && !test_time ? *turn_time : Read(); }

void ZnTimeVal::SetClock(ZnTimeVal (*clock)()) { test_time = clock; }

void ZnTurnTime::Renew() {
  turn_moment = ZnSteadyClock::Read();
  turn_time = ZnTimeVal::Read();
}

void ZnTurnTime::Release() {
  turn_moment.reset();
  turn_time.reset();
}
