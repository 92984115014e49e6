#pragma once
// The real event loop, run by a test until something has come true.

#include <functional>

#include "runtime/poll_event_loop.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"

class DrivenLoop : public ZnEventLoop {
 public:
  DrivenLoop() : ZnEventLoop(&process_) {}

  // Runs turn by turn; `done` is asked before each. Gives its last word, which is false after `limit` milliseconds.
  bool RunUntil(std::function<bool()> done, uint32_t limit = 5000) {
    done_ = std::move(done);
    late_ = false;
    watchdog_.Set(std::chrono::milliseconds(limit));
    EnterEventLoop();
    watchdog_.Cancel();
    return done_();
  }
  // Runs for that many milliseconds.
  void RunFor(uint32_t milliseconds) {
    RunUntil([] { return false; }, milliseconds);
  }

  bool ShouldContinue() override { return !late_ && !done_(); }

 private:
  void Late(ZnEventCallback*, ZnEvent::cbdispatch) { late_ = true; }

  ZnUnixProcess process_;
  std::function<bool()> done_;
  bool late_ = false;
  ZnSimpleCallback<ZnEvent::cbdispatch, DrivenLoop> lateCallback_{this, &DrivenLoop::Late};
  ZnTimer watchdog_{this, &lateCallback_};
};
