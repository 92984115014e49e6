#pragma once
// The two clocks of the process. The time of day (ZnTimeVal) is what people, clients and servers are shown, and anybody
// may set it. Timers, deadlines and ages run on the steady clock, which nobody can set; its moments are a type of their
// own, so that the two can't be mixed up.

#include <chrono>

// Counts from the start of the host on, sleep included: what was learned before a laptop slept is old when it wakes.
// ZnMoment{} is before every moment of the clock and stands for "never".
struct ZnSteadyClock {
  using duration = std::chrono::microseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<ZnSteadyClock>;
  static constexpr bool is_steady = true;

  // Stands still during a turn of the event loop.
  static time_point now();
  // Reads the clock itself, for whoever mustn't take the length of the turn so far for time that has yet to pass.
  static time_point Read();
  // Tests run on a clock of their own: `clock` replaces the host's until null is set. Not owned.
  static void SetClock(time_point (*clock)());
};
using ZnMoment = ZnSteadyClock::time_point;

// What the now() of both clocks gives: the time of the last Renew, which the loop calls once a turn, or, after Release
// and outside the loop, the time of the call.
struct ZnTurnTime {
  static void Renew();
  static void Release();
};
