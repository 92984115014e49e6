// A machine that can't be reached, and one that is back.

#include "machine_session_fixture.h"

using testing::ElementsAre;

TEST_F(MachineSessionTest, OnlyTheFirstCallWaitsForADeadMachine) {
  peer.HangUp();
  peer.sessionResponse = "";  // it takes connections, as a stopped one does, and says nothing
  const ZnMoment began = ZnSteadyClock::Read();
  for (int i = 0; i < 5; i++) Ask(Node("f"), {i % 2 ? E::SCRequestAttribs : E::SCRequestRead});
  Wait();
  EXPECT_LT(ZnSteadyClock::Read() - began, std::chrono::seconds(11));
  EXPECT_THAT(ended, ElementsAre(5, 5, 5, 5, 5));
  for (int i = 0; i < 50; i++) {
    LetPass(1000);
    const ZnMoment asked = ZnSteadyClock::Read();
    EXPECT_EQ(Try(Node("f"), E::SCRequestAttribs), 5);
    EXPECT_LT(ZnSteadyClock::Read() - asked, std::chrono::milliseconds(100));
  }
  EXPECT_EQ(told->lines.size(), 1u);
  EXPECT_LE(peer.connections, 2u + 60 / 5);

  peer.HangUp();
  peer.sessionResponse = ScriptedSmbPeer::Packet(0x82, "");
  LetPass(5000);
  EXPECT_EQ(Try(Node("f"), E::SCRequestAttribs), 0);
}
