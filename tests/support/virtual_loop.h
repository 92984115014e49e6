#pragma once
// The real event loop on a clock of its own: when nothing is left to be done, the time of the first timer comes at
// once. Both ends of every connection have to be served by this loop.

#include <poll.h>

#include <cerrno>

#include "runtime/poll_event_loop.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"

class VirtualLoop : public ZnEventLoop {
 public:
  static constexpr int kStuck = 99;  // what a run gives that could only wait for ever

  VirtualLoop() : ZnEventLoop(&process_) {
    now_ = ZnMoment(std::chrono::seconds(1000));
    ZnSteadyClock::SetClock([] { return now_; });
  }
  ~VirtualLoop() override { ZnSteadyClock::SetClock(nullptr); }

  // Does what there is to do for some virtual milliseconds.
  void LetPass(uint32_t milliseconds) {
    ZnSimpleCallback<ZnEvent::cbdispatch, VirtualLoop> stop(this, &VirtualLoop::Stop);
    ZnTimer timer(this, &stop);
    timer.Set(std::chrono::milliseconds(milliseconds));
    EnterEventLoop();
  }

 protected:
  int Poll(pollfd* list, nfds_t count, int timeout) override {
    int ready = poll(list, count, timeout == 0 ? 0 : kGrace);
    if (ready != 0 || timeout == 0) return ready;
    if (timeout > 0) {
      now_ += std::chrono::milliseconds(timeout + 1);
      return 0;
    }
    ExitEventLoop(kStuck);
    errno = EINTR;
    return -1;
  }

 private:
  void Stop(ZnEventCallback*, ZnEvent::cbdispatch) { ExitEventLoop(0); }

  static constexpr int kGrace = 2;  // milliseconds for bytes that are on their way through the host

  inline static ZnMoment now_;
  ZnUnixProcess process_;
};
