#pragma once
// Contract (the public part). The daemon's only loop: signals, one timer, or the descriptors that are ready, turn by
// turn. What several callers of one turn add up to (requests of one connection, replies of one socket) is done once at
// its end.

#include "runtime/callback.h"
#include "runtime/clock.h"

struct ZnEvent {
  enum cbdispatch { Fired = 0, Withdrawn = 1 };
};
using ZnEventCallback = ZnCallback<ZnEvent::cbdispatch>;

class ZnEventLoopBase {
 public:
  ZnEventLoopBase() = default;
  ZnEventLoopBase(const ZnEventLoopBase&) = delete;
  ZnEventLoopBase& operator=(const ZnEventLoopBase&) = delete;
  virtual ~ZnEventLoopBase() = default;

  // Runs until ExitEventLoop; gives the code that was passed there. May be entered again from a callback: a nested run
  // ends by its own ExitEventLoop, and the outer one goes on.
  virtual int EnterEventLoop() = 0;
  // Asks the innermost run to leave at the start of its next turn. Gives 0.
  virtual int ExitEventLoop(int code);
  // One-shot timer at an absolute time. False only when it can't be stored. The callback isn't owned.
  virtual bool AddTimeoutEvent(ZnMoment when, ZnEventCallback* callback) = 0;
  // Withdraws the timer with exactly this time and callback: the callback sees Withdrawn. False when there is none.
  virtual bool RemoveTimeoutEvent(ZnMoment when, ZnEventCallback* callback) = 0;
  // Watches a descriptor for reading and/or writing; `callback` replaces an earlier one of those sides. Not owned.
  virtual bool AddFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* callback) = 0;
  // Stops watching the sides asked for. False when the descriptor isn't watched.
  virtual bool RemoveFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* callback) = 0;
  // One-shot: the callback sees Fired once, when all that was ready in this turn has been handled and before the loop
  // sleeps again; from outside the loop, before its first sleep. From a callback of a turn's end it is for this end
  // or that of another turn, which doesn't sleep. Registering twice is as good as once. Costs a look through what is
  // registered, which are a few at most. Not owned.
  virtual void AtTurnEnd(ZnEventCallback* callback) = 0;
  // Withdraws it, so that its owner may die; the callback isn't told. No effect when it isn't registered.
  virtual void CancelTurnEnd(ZnEventCallback* callback) = 0;
  virtual bool ShouldContinue() = 0;
};
