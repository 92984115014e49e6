// Those who wait for the same, and who goes on when.

#include "session/wait_list.h"

#include <gmock/gmock.h>

#include "support/virtual_loop.h"

using testing::ElementsAre;
using testing::IsEmpty;

class WaitListTest : public testing::Test {
 protected:
  ZnWaitPlace Enter(
      int who, std::function<void()> then = [] {}) {
    return list.Enter([this, who, then = std::move(then)](const ZnSmbOutcome& outcome) {
      woken.push_back(outcome.Ok() ? who : -who);
      then();
    });
  }
  void Turn() { loop.LetPass(1); }

  VirtualLoop loop;
  std::unique_ptr<ZnWakeups> wakeups = std::make_unique<ZnWakeups>(&loop);
  ZnWaitList list{*wakeups};
  std::vector<int> woken;
};

TEST_F(WaitListTest, TheWokenGoOnInOrderWhenTheTurnEnds) {
  const ZnWaitPlace one = Enter(1), two = Enter(2);
  ZnWaitPlace three = Enter(3), four = Enter(4);
  list.WakeFirst();
  three.reset();
  list.WakeAll({ZnSMBClientValues::ErrDisconnect});
  four.reset();  // woken, but gone before its time
  EXPECT_THAT(woken, IsEmpty());
  const ZnWaitPlace five = Enter(5);
  Turn();
  EXPECT_THAT(woken, ElementsAre(1, -2));
  EXPECT_FALSE(list.IsEmpty());
}

TEST_F(WaitListTest, WhoGoesOnMayWakeOthersAndLetThemGo) {
  ZnWaitPlace two;
  const ZnWaitPlace one = Enter(1, [&] { two.reset(); });
  two = Enter(2);
  ZnWaitPlace later;
  ZnWaitPlace three = Enter(3, [&] {
    three.reset();  // itself
    later = wakeups->Later([&](const ZnSmbOutcome&) { woken.push_back(4); });
  });
  list.WakeAll();
  Turn();
  EXPECT_THAT(woken, ElementsAre(1, 3, 4));
}

TEST_F(WaitListTest, AllMayEndInOneThatGoesOn) {
  const ZnWaitPlace one = Enter(1, [&] { wakeups.reset(); });
  const ZnWaitPlace two = Enter(2);
  list.WakeAll();
  Turn();
  EXPECT_THAT(woken, ElementsAre(1));
}
