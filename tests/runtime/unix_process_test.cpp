#include "runtime/unix_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "runtime/unix_user.h"

namespace {

using ::testing::ElementsAre;

struct Callback : ZnEventCallback {
  std::function<void()> action = [] {};
  void Dispatch(ZnEvent::cbdispatch reason) override {
    EXPECT_EQ(reason, ZnEvent::Fired);
    action();
  }
};

class Signals : public ::testing::Test {
 protected:
  Signals() { the_current_process = &process; }
  ~Signals() override {
    for (const int number : {SIGUSR1, SIGHUP, SIGCHLD}) signal(number, SIG_DFL);
  }

  void Note(int number, Callback& callback, const std::string& name) {
    callback.action = [this, name] { seen.push_back(name); };
    EXPECT_TRUE(process.CatchSignal(number, &callback));
  }
  bool WakeIsReadable() {
    pollfd entry{process.WakeDescriptor(), POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
  }

  ZnUnixProcess process;
  std::vector<std::string> seen;
};

TEST_F(Signals, EachNumberIsDispatchedOnceToAllItsCallbacksLowestFirst) {
  Callback first, second, hangup;
  Note(SIGUSR1, first, "usr1 first");
  Note(SIGUSR1, second, "usr1 second");
  Note(SIGHUP, hangup, "hup");
  EXPECT_EQ(process.ProcessSignals(), 0);
  raise(SIGHUP);
  for (int i = 0; i < 70000; i++) raise(SIGUSR1);  // more than the pipe holds
  EXPECT_THAT(seen, ElementsAre());
  EXPECT_TRUE(WakeIsReadable());
  EXPECT_EQ(process.ProcessSignals(), 1);
  EXPECT_THAT(seen, ElementsAre("hup", "usr1 first", "usr1 second"));
  EXPECT_FALSE(WakeIsReadable());
  EXPECT_EQ(process.ProcessSignals(), 0);
}

// Notes the system calls of an identity change, and refuses those in `refused`.
class Identity : public ZnUnixProcess {
 public:
  std::vector<std::string> calls;
  std::set<std::string> refused;

 protected:
  int SetEffectiveUid(uid_t uid) override { return Call("uid " + std::to_string(uid)); }
  int SetEffectiveGid(gid_t gid) override { return Call("gid " + std::to_string(gid)); }
  int SetGroups(const std::vector<gid_t>& groups) override { return Call("groups " + std::to_string(groups.size())); }

 private:
  int Call(const std::string& call) {
    calls.push_back(call);
    errno = EPERM;
    return refused.count(call) ? -1 : 0;
  }
};

TEST(BecomeUser, SetsGroupsGroupAndUserInThisOrderAndOnlyWhatChanges) {
  if (geteuid() != 0) GTEST_SKIP() << "starts from root";
  Identity process;
  ZnUnixUser daemon("daemon", false);
  ASSERT_TRUE(daemon.found() && daemon.uid() != 0);
  const std::string uid = "uid " + std::to_string(daemon.uid()), gid = "gid " + std::to_string(daemon.gid());
  prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);  // as a host may do on a change
  EXPECT_TRUE(process.BecomeUser(daemon));
  EXPECT_EQ(prctl(PR_GET_DUMPABLE, 0, 0, 0, 0), 0);
  EXPECT_TRUE(process.BecomeUser(daemon));
  EXPECT_THAT(std::exchange(process.calls, {}), ElementsAre("groups 0", gid, uid));
  EXPECT_TRUE(process.BecomeRoot());
  EXPECT_THAT(process.calls, ElementsAre("uid 0", ::testing::StartsWith("groups "), "gid 0"));

  // After a failure the next change goes through everything.
  process.refused = {gid};
  EXPECT_FALSE(process.BecomeUser(daemon));
  process.refused.clear();
  process.calls.clear();
  EXPECT_TRUE(process.BecomeUser(daemon));
  EXPECT_THAT(process.calls, ElementsAre("uid 0", "groups 0", gid, uid));

  ZnUnixProcess real;
  EXPECT_TRUE(real.BecomeNobody() && geteuid() != 0 && getegid() != 0);
  EXPECT_TRUE(real.BecomeRoot() && geteuid() == 0 && getegid() == 0);
}

}  // namespace
