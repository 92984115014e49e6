#pragma once
// A one-shot timer of one owner: at most one runs, a new one replaces it, and it goes away with its owner.

#include "runtime/event_loop.h"

class ZnTimer : private ZnEventCallback {
 public:
  // Neither is owned. `callback` is dispatched with Fired when the time has come, and never with Withdrawn.
  ZnTimer(ZnEventLoopBase* loop, ZnEventCallback* callback) : loop_(loop), callback_(callback) {}
  ~ZnTimer() override { Cancel(); }

  bool IsSet() const { return set_; }
  // False only when the loop can't store it.
  bool Set(const ZnTimeVal& when) {
    Cancel();
    deadline_ = when;
    set_ = loop_->AddTimeoutEvent(when, this);
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
  ZnTimeVal deadline_;
  bool set_ = false;
};
