#include "runtime/poll_event_loop.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

#include "runtime/unix_process.h"

namespace {

constexpr char kLoopName[] = "Halden legacy event loop";
constexpr int kPollFailedCode = 127;

constexpr short kReadable = POLLIN | POLLERR | POLLHUP;
constexpr short kWritable = POLLOUT | POLLERR | POLLHUP;
// The system reports this bit by itself and ignores it in a request: an entry asking for nothing else is unused.
constexpr short kUnused = POLLNVAL;

void SetBits(short& word, short bits) { word = static_cast<short>(word | bits); }
void ClearBits(short& word, short bits) { word = static_cast<short>(word & ~bits); }

}  // namespace

int ZnEventLoopBase::ExitEventLoop(int /*code*/) { return 0; }

int ZnEventLoop::EnterEventLoop() {
  const bool outer_running = running_;
  const int outer_code = exit_code_;
  depth_++;
  running_ = true;
  EndTurn();  // what was left to do before this run
  while (ShouldContinue()) {
    Turn();
    EndTurn();
  }
  const int code = exit_code_;
  if (--depth_ == 0) {
    ZnTurnTime::Release();
    return code;
  }
  running_ = outer_running;
  exit_code_ = outer_code;
  return code;
}

int ZnEventLoop::ExitEventLoop(int code) {
  exit_code_ = code;
  running_ = false;
  return 0;
}

void ZnEventLoop::Turn() {
  if (process_->ProcessSignals()) return;  // one of them may have asked to stop
  const int64_t due = TimeUntilFirstTimer(ZnSteadyClock::Read());
  const int longest = static_cast<int>(std::min<int64_t>(due, std::numeric_limits<int>::max()));
  const int timeout = turn_end_.empty() ? longest : 0;
  const int ready = Wait(timeout);
  const int error = errno;
  ZnTurnTime::Renew();
  if (ready < 0) return PollFailed(error);
  if (ready > 0) WalkPollList();
  FireDueTimer();  // whatever was ready: descriptors that always are keep no timer waiting for more than one walk
}

int64_t ZnEventLoop::TimeUntilFirstTimer(ZnMoment now) const {
  if (timeouts_.empty()) return -1;
  const auto wait = std::chrono::floor<std::chrono::milliseconds>(timeouts_.begin()->first - now);
  return std::max<int64_t>(0, wait.count());
}

// Polls the list with the wake-up pipe behind it. That one needs no walk: the next turn looks for signals anyway.
int ZnEventLoop::Wait(int timeout) {
  poll_list_.push_back({process_->WakeDescriptor(), POLLIN, 0});
  const int ready = Poll(poll_list_.data(), poll_list_.size(), timeout);
  poll_list_.pop_back();
  return ready;
}

int ZnEventLoop::Poll(pollfd* list, nfds_t count, int timeout) { return poll(list, count, timeout); }

void ZnEventLoop::PollFailed(int error) {
  if (error == EINTR || error == EAGAIN) return;
  fprintf(stderr, "\n%sPID=%d FATAL ERROR:EventLoop has unexpected error: %s\n", kLoopName, static_cast<int>(getpid()),
          strerror(error));
  fflush(stderr);
  ExitEventLoop(kPollFailedCode);
}

void ZnEventLoop::FireDueTimer() {
  if (TimeUntilFirstTimer(ZnSteadyClock::now()) != 0) return;
  ZnEventCallback* const callback = timeouts_.begin()->second;
  timeouts_.erase(timeouts_.begin());
  callback->Dispatch(ZnEvent::Fired);
}

void ZnEventLoop::WalkPollList() {
  for (size_t i = 0; i < poll_list_.size(); i++) {
    if (poll_list_[i].revents & kReadable) {
      ClearBits(poll_list_[i].revents, POLLIN);
      if (ZnEventCallback* const callback = files_[poll_list_[i].fd].read) callback->Dispatch(ZnEvent::Fired);
    }

    if (i >= poll_list_.size()) return;
    if (poll_list_[i].revents & kWritable) {
      ClearBits(poll_list_[i].revents, kWritable);
      if (ZnEventCallback* const callback = files_[poll_list_[i].fd].write) callback->Dispatch(ZnEvent::Fired);
    }

    if (i >= poll_list_.size()) return;
    if (poll_list_[i].revents & POLLNVAL) return DropBadDescriptor(poll_list_[i]);
  }
}

void ZnEventLoop::DropBadDescriptor(const pollfd& entry) {
  constexpr char kMessage[] =
      "\n%sPID=%d SEVERE INTERNAL ERROR\nThe eventloop has bad %s file descriptor %d - this software will not function "
      "correctly.\n";
  if (entry.events & POLLOUT) fprintf(stderr, kMessage, kLoopName, static_cast<int>(getpid()), "write", entry.fd);
  if (entry.events & POLLIN) fprintf(stderr, kMessage, kLoopName, static_cast<int>(getpid()), "read", entry.fd);
  RemoveFileEvent(static_cast<unsigned>(entry.fd), true, true, nullptr);
}

// A nested run may take callbacks from the list, and one may withdraw others or come back to the end of it: only as
// many are run as there were, the rest has the next turn.
void ZnEventLoop::EndTurn() {
  for (size_t left = turn_end_.size(); left > 0 && !turn_end_.empty(); left--) {
    ZnEventCallback* const callback = turn_end_.front();
    turn_end_.pop_front();
    callback->Dispatch(ZnEvent::Fired);
  }
}

void ZnEventLoop::AtTurnEnd(ZnEventCallback* callback) {
  if (std::find(turn_end_.begin(), turn_end_.end(), callback) == turn_end_.end()) turn_end_.push_back(callback);
}

void ZnEventLoop::CancelTurnEnd(ZnEventCallback* callback) { std::erase(turn_end_, callback); }

bool ZnEventLoop::AddTimeoutEvent(ZnMoment when, ZnEventCallback* callback) {
  timeouts_.emplace(when, callback);
  return true;
}

bool ZnEventLoop::RemoveTimeoutEvent(ZnMoment when, ZnEventCallback* callback) {
  auto [timer, end] = timeouts_.equal_range(when);
  timer = std::find_if(timer, end, [callback](const auto& entry) { return entry.second == callback; });
  if (timer == end) return false;
  timeouts_.erase(timer);  // before the call, so that the callback finds the timer gone
  callback->Dispatch(ZnEvent::Withdrawn);
  return true;
}

std::vector<pollfd>::iterator ZnEventLoop::FindEntry(int fd) {
  return std::find_if(poll_list_.begin(), poll_list_.end(), [fd](const pollfd& entry) { return entry.fd == fd; });
}

bool ZnEventLoop::AddFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* callback) {
  if (fd > static_cast<unsigned>(std::numeric_limits<int>::max())) return false;
  const int number = static_cast<int>(fd);
  const auto [file, is_new] = files_.try_emplace(number);
  if (is_new) poll_list_.push_back({number, kUnused, 0});
  pollfd& entry = is_new ? poll_list_.back() : *FindEntry(number);
  if (read) {
    SetBits(entry.events, POLLIN);
    file->second.read = callback;
  }
  if (write) {
    SetBits(entry.events, POLLOUT);
    file->second.write = callback;
  }
  return true;
}

bool ZnEventLoop::RemoveFileEvent(unsigned fd, bool read, bool write, ZnEventCallback* /*callback*/) {
  const auto file = files_.find(static_cast<int>(fd));
  if (file == files_.end()) return false;
  const auto entry = FindEntry(file->first);
  if (read) {
    ClearBits(entry->events, POLLIN);
    file->second.read = nullptr;
  }
  if (write) {
    ClearBits(entry->events, POLLOUT);
    file->second.write = nullptr;
  }
  if (entry->events != kUnused) return true;
  files_.erase(file);
  poll_list_.erase(entry);
  return true;
}
