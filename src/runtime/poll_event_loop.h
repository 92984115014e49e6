#pragma once
// The event loop over poll.
//
// The hard part is that a callback may change what is being walked: remove itself or others, close a descriptor whose
// number a new socket then gets, add descriptors and timers, or run the loop again inside itself. So the walk goes by
// index and looks at the list anew after each callback; what an entry reported is taken off it before its callback
// runs, and a new entry has reported nothing. A descriptor may thus be left for the next turn, but never sees an event
// that isn't its own.

#include <poll.h>

#include <deque>
#include <map>
#include <unordered_map>
#include <vector>

#include "runtime/event_loop.h"

class ZnProcess;

class ZnEventLoop : public ZnEventLoopBase {
 public:
  // `process` holds the caught signals. Not owned.
  explicit ZnEventLoop(ZnProcess* process) : process_(process) {}

  int EnterEventLoop() override;
  int ExitEventLoop(int code) override;
  bool AddTimeoutEvent(ZnMoment when, ZnEventCallback* callback) override;
  bool RemoveTimeoutEvent(ZnMoment when, ZnEventCallback* callback) override;
  bool AddFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* callback) override;
  bool RemoveFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* callback) override;
  void AtTurnEnd(ZnEventCallback* callback) override;
  void CancelTurnEnd(ZnEventCallback* callback) override;
  bool ShouldContinue() override { return running_; }

 protected:
  // poll(2): how many entries reported something, 0 when the time-out ran out, -1 with errno. Time-out in milliseconds.
  virtual int Poll(pollfd* list, nfds_t count, int timeout);

 private:
  // What is registered for one descriptor; null for a side that isn't watched.
  struct ZnEventFile {
    ZnEventCallback* read = nullptr;
    ZnEventCallback* write = nullptr;
  };

  void Turn();
  // Milliseconds from `now` until the first timer is due, 0 if it is overdue, -1 without timers.
  int64_t TimeUntilFirstTimer(ZnMoment now) const;
  int Wait(int timeout);
  void FireDueTimer();
  void WalkPollList();
  void EndTurn();
  void PollFailed(int error);
  void DropBadDescriptor(const pollfd& entry);
  // The entry of a descriptor, or the list's end. A scan: it costs a small part of what poll itself does with the list.
  std::vector<pollfd>::iterator FindEntry(int fd);

  ZnProcess* process_;
  bool running_ = false;
  int exit_code_ = 0;
  int depth_ = 0;  // runs that are on the stack
  std::multimap<ZnMoment, ZnEventCallback*> timeouts_;
  std::deque<ZnEventCallback*> turn_end_;  // in the order in which they run
  std::vector<pollfd> poll_list_;
  std::unordered_map<int, ZnEventFile> files_;  // exactly the descriptors of poll_list_
};
