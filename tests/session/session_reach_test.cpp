// A machine that can't be reached, and one that is back.

#include "session_fixture.h"

using testing::ElementsAre;

class Reach : public SessionTest {
 protected:
  // The machine takes connections, as a stopped one does, and says nothing.
  void Die() {
    peer.HangUp();
    peer.sessionResponse = "";
  }
  void Revive() {
    peer.HangUp();
    peer.sessionResponse = ScriptedSmbPeer::Packet(0x82, "");
  }
  // Milliseconds of virtual time that a call takes, and how it ends.
  std::pair<int64_t, int> TimedTry() {
    const ZnMoment began = ZnSteadyClock::Read();
    const int status = Try(Node("f"), E::SCRequestAttribs);
    return {std::chrono::duration_cast<std::chrono::milliseconds>(ZnSteadyClock::Read() - began).count(), status};
  }
};

TEST_F(Reach, OnlyTheFirstCallWaitsForADeadMachine) {
  Die();
  const ZnMoment began = ZnSteadyClock::Read();
  for (int i = 0; i < 5; i++) Ask(Node("f"), {i % 2 ? E::SCRequestAttribs : E::SCRequestOpenFile});
  Wait();
  EXPECT_LT(ZnSteadyClock::Read() - began, std::chrono::seconds(11));
  EXPECT_THAT(ended, ElementsAre(5, 5, 5, 5, 5));
  for (int i = 0; i < 50; i++) {
    LetPass(1000);
    const auto [took, status] = TimedTry();
    EXPECT_LT(took, 100);
    EXPECT_EQ(status, 5);
  }
  EXPECT_EQ(told->lines.size(), 1u);
  EXPECT_LE(peer.connections, 2u + 60 / 5);

  Revive();
  LetPass(5000);
  EXPECT_EQ(TimedTry().second, 0);
}

// The session doesn't go on trying when nobody asks, and then the first to ask tries for himself.
TEST_F(Reach, NobodyIsAskedForWhomNobodyAsks) {
  Die();
  EXPECT_EQ(TimedTry().second, 5);
  LetPass(120000);
  const unsigned before = peer.connections;
  LetPass(120000);
  EXPECT_EQ(peer.connections, before);
  Revive();
  EXPECT_EQ(TimedTry().second, 0);
}

TEST_F(Reach, WhoRefusesAtOnceIsAskedByEachCall) {
  config.port++;  // nobody listens there
  MakeSession();
  EXPECT_EQ(TimedTry().second, 5);
  session->config.port--;
  EXPECT_EQ(TimedTry().second, 0);
}

TEST_F(Reach, SharesAreListedWithoutTheMachine) {
  Die();
  Ask(Node("f"), {E::SCRequestAttribs});
  LetPass(1000);
  Ask(&machine, {E::SCRequestShares});
  EXPECT_THAT(ended, ElementsAre(0));
  session->SendErrors();
  EXPECT_THAT(ended, ElementsAre(0, 5));
}
