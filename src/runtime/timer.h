#pragma once
// A one-shot timer of one owner: at most one runs, a new one replaces it, and it goes away with its owner.

#include "runtime/clock.h"
#include "runtime/event_loop.h"

class ZnTimer : private ZnEventCallback {
 public:
  // Neither is owned. `callback` is dispatched with Fired when the time has come, and never with Withdrawn.
  ZnTimer(ZnEventLoopBase* loop, ZnEventCallback* callback) : loop_(loop), callback_(callback) {}
  ~ZnTimer() override { Cancel(); }

  bool IsSet() const { return set_; }
  // Fires when `span` has passed from this call on. False only when the loop can't store it.
  bool Set(ZnSteadyClock::duration span) {
    Cancel();
    deadline_ = ZnSteadyClock::Read() + span;
    set_ = loop_->AddTimeoutEvent(deadline_, this);
    return set_;
  }
  void Cancel() {
    if (!set_) return;
    set_ = false;
    loop_->RemoveTimeoutEvent(deadline_, this);
  }

 private:
  void Dispatch(ZnEvent::cbdispatch reason) override {
    if (reason != ZnEvent::Fired) return;
    set_ = false;
    callback_->Dispatch(reason);  // may delete this timer
  }

  ZnEventLoopBase* loop_;
  ZnEventCallback* callback_;
  ZnMoment deadline_;
  bool set_ = false;
};
