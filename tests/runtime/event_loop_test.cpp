#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "runtime/poll_event_loop.h"
#include "runtime/time_val.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"

namespace {

using ::testing::ElementsAre;

ZnMoment fake_now;

constexpr ZnMoment At(int64_t seconds, int64_t microseconds = 0) {
  return ZnMoment(std::chrono::seconds(seconds) + std::chrono::microseconds(microseconds));
}
constexpr ZnMoment kLatest = At(UINT_MAX);

class Callback : public ZnEventCallback {
 public:
  explicit Callback(std::function<void(ZnEvent::cbdispatch)> action) : action_(std::move(action)) {}
  void Dispatch(ZnEvent::cbdispatch reason) override { action_(reason); }

 private:
  std::function<void(ZnEvent::cbdispatch)> action_;
};

// Each turn's poll is one step of a script; the loop ends with code 0 when the script does.
class ScriptedLoop : public ZnEventLoop {
 public:
  using ZnEventLoop::ZnEventLoop;
  using Step = std::function<int(std::vector<pollfd>&)>;

  std::deque<Step> script;
  std::vector<int> timeouts;  // what each poll was given

  ScriptedLoop& TimesOut() {
    return Then([this](auto&) { return fake_now += std::chrono::milliseconds(timeouts.back()), 0; });
  }
  ScriptedLoop& Reports(const std::vector<std::pair<int, short>>& events) {
    return Then([events](std::vector<pollfd>& list) {
      for (pollfd& entry : list) {
        for (const auto& [fd, revents] : events) {
          if (entry.fd == fd) entry.revents = revents;
        }
      }
      return static_cast<int>(events.size());
    });
  }
  ScriptedLoop& Then(Step step) {
    script.push_back(std::move(step));
    return *this;
  }

 protected:
  int Poll(pollfd* list, nfds_t count, int timeout) override {
    timeouts.push_back(timeout);
    std::vector<pollfd> copy(list, list + count - 1);  // without the wake-up pipe
    for (pollfd& entry : copy) entry.revents = 0;
    if (script.empty()) return ExitEventLoop(0), errno = EINTR, -1;
    const Step step = std::move(script.front());
    script.pop_front();
    const int result = step(copy);
    if (result > 0) std::copy(copy.begin(), copy.end(), list);
    return result;
  }
};

class EventLoop : public ::testing::Test {
 protected:
  EventLoop() {
    fake_now = At(1000, 500000);
    ZnSteadyClock::SetClock([] { return fake_now; });
  }
  ~EventLoop() override {
    ZnSteadyClock::SetClock(nullptr);
    ZnTimeVal::SetClock(nullptr);
  }

  // A callback that notes its name.
  Callback Note(const std::string& name) {
    return Callback([this, name](ZnEvent::cbdispatch) { seen.push_back(name); });
  }

  ZnUnixProcess process;
  ScriptedLoop loop{&process};
  std::vector<std::string> seen;
};

TEST_F(EventLoop, DueTimersFireOneATurnBehindTheReadyDescriptors) {
  Callback late = Note("late"), ready = Note("ready"), removed = Note("removed");
  Callback early([&](auto) {
    seen.emplace_back("early");
    loop.AddTimeoutEvent(At(1), &late);  // in the past, and yet for the next turn
  });
  loop.AddTimeoutEvent(At(20), &late);
  loop.AddTimeoutEvent(At(10, 999999), &early);
  loop.AddTimeoutEvent(At(10), &removed);
  EXPECT_FALSE(loop.RemoveTimeoutEvent(At(10), &late));
  EXPECT_TRUE(loop.RemoveTimeoutEvent(At(10), &removed));
  loop.AddFileEvent(7, true, false, &ready);
  loop.AddTimeoutEvent(At(2000), &late);
  loop.Reports({{7, POLLIN}}).Reports({{7, POLLIN}}).TimesOut().Reports({{7, POLLIN}}).TimesOut();
  loop.EnterEventLoop();
  EXPECT_THAT(seen, ElementsAre("removed", "ready", "early", "ready", "late", "late", "ready", "late"));
  EXPECT_THAT(loop.timeouts, ElementsAre(0, 0, 0, 999500, 999500, -1));
}

TEST_F(EventLoop, ATurnsEndComesOnceBehindItsEventsAndBeforeTheLoopSleeps) {
  Callback due = Note("due"), first = Note("first"), withdrawn = Note("withdrawn");
  Callback last([&](auto) {
    seen.emplace_back("last");
    loop.AtTurnEnd(&first);
  });
  Callback again([&](auto) {
    seen.emplace_back("again");
    loop.CancelTurnEnd(&withdrawn);
    loop.AtTurnEnd(&last);
  });
  Callback ready([&](auto) {
    seen.emplace_back("ready");
    for (ZnEventCallback* callback : {&again, &withdrawn, &again}) loop.AtTurnEnd(callback);
  });
  loop.AtTurnEnd(&first);
  loop.AddTimeoutEvent(At(1001), &due);
  loop.AddFileEvent(5, true, false, &ready);
  loop.AddFileEvent(6, true, false, &ready);
  const auto sleeps = [&](auto&) { return seen.emplace_back("poll"), 0; };
  loop.Then(sleeps).Reports({{5, POLLIN}, {6, POLLIN}}).Then(sleeps).TimesOut().EnterEventLoop();
  EXPECT_THAT(seen, ElementsAre("first", "poll", "ready", "ready", "again", "last", "poll", "first", "due"));
  EXPECT_THAT(loop.timeouts, ElementsAre(500, 500, 0, 500, -1));
}

TEST_F(EventLoop, CallbackRemovesWhatIsAboutToBeCalled) {
  auto doomed = std::make_unique<Callback>([&](auto) { seen.emplace_back("doomed"); });
  Callback killer([&](auto) {
    loop.RemoveFileEvent(6, true, true, nullptr);
    loop.RemoveFileEvent(7, true, true, nullptr);
    doomed.reset();
  });
  loop.AddFileEvent(5, true, false, &killer);
  loop.AddFileEvent(6, true, true, doomed.get());
  loop.AddFileEvent(7, true, true, doomed.get());
  loop.Reports({{5, POLLIN}, {6, POLLIN | POLLOUT}, {7, POLLHUP}}).EnterEventLoop();
  EXPECT_THAT(seen, ElementsAre());
}

TEST_F(EventLoop, DescriptorsAddedDuringTheWalkHaveReportedNothing) {
  Callback old = Note("old"), fresh = Note("fresh");
  Callback reopen([&](auto) {
    loop.RemoveFileEvent(6, true, true, nullptr);
    for (unsigned fd = 6; fd < 400; fd++) loop.AddFileEvent(fd, true, true, &fresh);
  });
  loop.AddFileEvent(5, true, false, &reopen);
  loop.AddFileEvent(6, true, false, &old);
  loop.Reports({{5, POLLIN}, {6, POLLIN}}).Reports({{399, POLLOUT}}).EnterEventLoop();
  EXPECT_THAT(seen, ElementsAre("fresh"));
}

// The real poll, with a signal too late for the turn's look at the signals.
class SignalDuringPoll : public ZnEventLoop {
 public:
  using ZnEventLoop::ZnEventLoop;

 protected:
  int Poll(pollfd* list, nfds_t count, int timeout) override {
    raise(SIGUSR1);
    return ZnEventLoop::Poll(list, count, timeout);
  }
};

TEST_F(EventLoop, SignalJustBeforePollIsActedOnInTheNextTurn) {
  the_current_process = &process;
  SignalDuringPoll real{&process};
  Callback stop([&](auto) { real.ExitEventLoop(3); });
  process.CatchSignal(SIGUSR1, &stop);
  alarm(20);  // instead of sleeping for ever
  EXPECT_EQ(real.EnterEventLoop(), 3);
  alarm(0);
  signal(SIGUSR1, SIG_DFL);
}

TEST_F(EventLoop, TimeStandsStillDuringATurn) {
  ZnSteadyClock::SetClock(nullptr);
  std::vector<std::pair<ZnMoment, ZnTimeVal>> times;
  Callback slow([&](auto) {
    for (int i = 0; i < 2; i++) {
      times.emplace_back(ZnSteadyClock::now(), ZnTimeVal::now());
      usleep(2000);
    }
  });
  loop.AddFileEvent(5, true, false, &slow);
  loop.Reports({{5, POLLIN}}).Reports({{5, POLLIN}}).EnterEventLoop();
  ASSERT_EQ(times.size(), 4U);
  EXPECT_EQ(times[0], times[1]);
  EXPECT_GE(times[2].first - times[0].first, std::chrono::milliseconds(4));
  EXPECT_NE(times[2].second, times[0].second);
  EXPECT_GT(ZnSteadyClock::now(), times[3].first) << "outside the loop time goes on";
}

}  // namespace
