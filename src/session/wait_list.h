#pragma once
// Those who wait for something that a session fetches once for all of them, and those of them who may go on.
//
// Nobody who was woken goes on at once, but from the end of the loop's turn, one after the other. So whoever wakes
// needn't fear what they do, and thousands who fail together don't nest.

#include <memory>

#include "runtime/event_loop.h"
#include "runtime/weak_ref.h"
#include "smb/client/call.h"

// A ring of links, which each take themselves out when they go.
class ZnWaitLink {
 public:
  ZnWaitLink() = default;
  ZnWaitLink(const ZnWaitLink&) = delete;
  ZnWaitLink& operator=(const ZnWaitLink&) = delete;
  ~ZnWaitLink() { Unlink(); }

  bool IsAlone() const { return next_ == this; }
  ZnWaitLink* Next() const { return next_; }
  void Unlink() {
    next_->previous_ = previous_;
    previous_->next_ = next_;
    next_ = previous_ = this;
  }
  // Puts `link` at the end of the ring that begins here.
  void Append(ZnWaitLink& link) {
    link.Unlink();
    link.previous_ = previous_;
    link.next_ = this;
    previous_->next_ = &link;
    previous_ = &link;
  }

 private:
  ZnWaitLink* next_ = this;
  ZnWaitLink* previous_ = this;
};

// Someone who waits; `done` tells how it came out, once.
class ZnWaiter : public ZnWaitLink {
 public:
  explicit ZnWaiter(ZnSmbDone done) : done_(std::move(done)) {}

 private:
  friend class ZnWakeups;
  ZnSmbDone done_;
  ZnSmbOutcome outcome_;
};

// A place among those who wait. It is given up by being destroyed, also when it was woken and hasn't gone on yet. It
// may outlive the list.
using ZnWaitPlace = std::unique_ptr<ZnWaiter>;

// The woken ones of a session.
class ZnWakeups : private ZnEventCallback {
 public:
  explicit ZnWakeups(ZnEventLoopBase* loop) : loop_(loop) {}
  ~ZnWakeups() override { loop_->CancelTurnEnd(this); }

  // They go on when the turn ends, in the order in which they were woken. What they do may end all of this.
  void Wake(ZnWaiter& waiter, const ZnSmbOutcome& outcome = {}) {
    waiter.outcome_ = outcome;
    if (woken_.IsAlone()) loop_->AtTurnEnd(this);
    woken_.Append(waiter);
  }
  // For someone who needn't wait for anything but that.
  ZnWaitPlace Later(ZnSmbDone done) {
    auto place = std::make_unique<ZnWaiter>(std::move(done));
    Wake(*place);
    return place;
  }

 private:
  void Dispatch(ZnEvent::cbdispatch reason) override {
    if (reason != ZnEvent::Fired) return;
    const ZnWeakRef<ZnReferable> alive(&alive_);
    while (alive && !woken_.IsAlone()) {
      auto& waiter = static_cast<ZnWaiter&>(*woken_.Next());
      waiter.Unlink();
      const ZnSmbOutcome outcome = waiter.outcome_;
      const ZnSmbDone done = std::move(waiter.done_);
      done(outcome);  // the waiter may be gone behind this
    }
  }

  ZnEventLoopBase* loop_;
  ZnWaitLink woken_;
  ZnReferable alive_;
};

class ZnWaitList {
 public:
  explicit ZnWaitList(ZnWakeups& wakeups) : wakeups_(wakeups) {}

  bool IsEmpty() const { return waiting_.IsAlone(); }
  ZnWaitPlace Enter(ZnSmbDone done) {
    auto place = std::make_unique<ZnWaiter>(std::move(done));
    waiting_.Append(*place);
    return place;
  }
  void WakeFirst(const ZnSmbOutcome& outcome = {}) {
    if (!IsEmpty()) wakeups_.Wake(static_cast<ZnWaiter&>(*waiting_.Next()), outcome);
  }
  void WakeAll(const ZnSmbOutcome& outcome = {}) {
    while (!IsEmpty()) WakeFirst(outcome);
  }

 private:
  ZnWakeups& wakeups_;
  ZnWaitLink waiting_;
};
