#pragma once
// Keeps what others can cause at will from filling the log: so many lines a minute, then one that tells how many were
// left out.

#include <chrono>
#include <cstdint>

#include "runtime/timer.h"

class ZnLogLimit {
 public:
  static constexpr unsigned kMostLines = 10;
  static constexpr std::chrono::minutes kPeriod{1};

  // `tell` writes the line with the number of those left out. The loop isn't owned.
  ZnLogLimit(ZnEventLoopBase* loop, void (*tell)(unsigned left_out))
      : tell_(tell), end_(this, &ZnLogLimit::PeriodEnds), timer_(loop, &end_) {}

  // Whether one more line may be written now. The first begins a period.
  bool Admits() {
    if (!timer_.IsSet()) {
      timer_.Set(kPeriod);
      lines_ = 0;
    }
    return ++lines_ <= kMostLines;
  }

 private:
  void PeriodEnds(ZnEventCallback*, ZnEvent::cbdispatch) {
    if (lines_ > kMostLines) tell_(lines_ - kMostLines);
  }

  void (*tell_)(unsigned);
  unsigned lines_ = 0;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnLogLimit> end_;
  ZnTimer timer_;
};
