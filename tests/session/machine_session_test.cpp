// Many commands of one machine: side by side, going away, and sessions that go away under them.

#include "machine_session_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

class Commands : public MachineSessionTest {
 protected:
  Commands() {
    whenComplete = [this](ZnSMBNFSCommand* command) {
      order.push_back(command->node ? command->node->name.AsUtf8() : "?");
      return false;
    };
  }
  void LookUp(const char* name) { Ask(Node(name), {E::SCRequestAttribs}); }

  std::vector<std::string> order;  // in which commands were completed
};

TEST_F(Commands, WhatTheyShareIsFetchedOnceAndEachIsAnsweredInItsTime) {
  Hold(kTrans2);
  for (const char* name : {"a", "b", "c"}) LookUp(name);
  LetPass(1000);
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kTrans2, kTrans2, kTrans2));
  for (size_t which : {2, 0, 1}) {
    peer.Send(StandardSmbServer()(held.at(which)).front());
    LetPass(100);
  }
  EXPECT_THAT(order, ElementsAre("c", "a", "b"));
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
}

// One that isn't answered costs nobody else anything, and the connection goes on.
TEST_F(Commands, ATimeOutIsOneCommandsOwn) {
  Hold(kTrans2);
  LookUp("slow");
  LetPass(1000);
  server.replaced.clear();
  for (int i = 0; i < 12; i++) {
    LookUp("quick");
    LetPass(1000);
  }
  EXPECT_EQ(order.size(), 13u);
  EXPECT_EQ(std::count(ended.begin(), ended.end(), 5), 1);
  EXPECT_EQ(peer.connections, 1u);
  ASSERT_EQ(told->lines.size(), 1u);
  EXPECT_THAT(told->lines[0], HasSubstr("slow: looking up: The remote server took too long"));
}

TEST_F(Commands, TransfersOfOneUserHoldNobodyElseUpByMoreThanOneExchange) {
  server.maxMpx = 2;
  server.maxBuffer = 16644;
  ZnSMBNFSNode* node = Node("large");
  Read(node);
  Replace(kRead, [this](const auto& request) {
    held.push_back(request);
    return Messages{};
  });
  for (uint32_t i = 0; i < 16; i++) {
    Ask(node, {E::SCRequestRead}, [i](auto& command) { command.offset = 8192 * i, command.uid = 1; });
  }
  LetPass(100);
  EXPECT_EQ(held.size(), 2u);
  Asked();
  Ask(Node("small"), {E::SCRequestAttribs}, [](auto& command) { command.uid = 2; });
  for (size_t i = 0; i < 2; i++) {
    peer.Send(StandardSmbServer()(held.at(i)).front());
    LetPass(100);
  }
  const std::vector<int> asked = Asked();
  EXPECT_LE(std::find(asked.begin(), asked.end(), kTrans2) - asked.begin(), 1);
}

TEST_F(Commands, WhoDiesTakesOnlyItsOwnExchangesAlong) {
  Hold(kTrans2);
  ZnSMBNFSCommand* early = Ask(Node("early"), {E::SCRequestAttribs});
  LookUp("a");
  delete early;  // it waits for the conversation
  LetPass(1000);
  ZnSMBNFSCommand* late = Ask(Node("late"), {E::SCRequestAttribs});
  LetPass(1000);
  delete late;  // it is being answered
  EXPECT_EQ(session->Count(), 1u);
  for (const auto& request : held) peer.Send(StandardSmbServer()(request).front());
  Wait();
  EXPECT_THAT(order, ElementsAre("a"));
  EXPECT_EQ(peer.connections, 1u);
}

TEST_F(Commands, TooManyAreDroppedLikeLostDatagramsAndAllFailTogetherWithoutNesting) {
  for (const bool flushed : {true, false}) {
    ended.clear();
    told->lines.clear();
    peer.HangUp();
    peer.sessionResponse = "";
    for (size_t i = 0; i < ZnMachineSession::kMostCommands + 2; i++) LookUp("f");
    EXPECT_EQ(session->Count(), ZnMachineSession::kMostCommands);
    EXPECT_EQ(calls.size(), ZnMachineSession::kMostCommands);
    flushed ? session->SendErrors() : LetPass(11000);
    EXPECT_EQ(session->Count(), 0u);
    EXPECT_EQ(ended.size(), ZnMachineSession::kMostCommands);
    EXPECT_THAT(ended, Each(5));
    ASSERT_EQ(told->lines.size(), 1u);
    EXPECT_THAT(told->lines[0], HasSubstr(flushed ? "The session was flushed with 4096 commands outstanding. These "
                                                    "commands will error."
                                                  : "connecting to 127.0.0.1 port"));
  }
}

TEST_F(Commands, AFlushFromWithinACompletionLeavesThatCommandAlone) {
  for (const char* name : {"a", "b", "c"}) LookUp(name);
  bool first = true;
  whenComplete = [&](ZnSMBNFSCommand*) {
    if (!std::exchange(first, false)) return false;
    session->SendErrors();
    EXPECT_EQ(ended.size(), 2u);
    EXPECT_EQ(session->Count(), 1u);
    return false;
  };
  Wait();
  EXPECT_THAT(ended, ElementsAre(5, 5, 0));
}

TEST_F(Commands, ASessionMayEndInTheCompletionOfACommand) {
  for (const char* name : {"a", "b"}) LookUp(name);
  whenComplete = [&](ZnSMBNFSCommand* command) {
    whenComplete = nullptr;
    session->SendErrors();
    machine.session.reset();
    EXPECT_EQ(command->session, nullptr);
    EXPECT_FALSE(command->node);
    delete command;
    return true;
  };
  Wait();
  EXPECT_THAT(ended, ElementsAre(5));
}

// ---- connections that end -------------------------------------------------------------------------------------------

// All that were under way begin again on one new connection, if they change nothing on the server; the others fail.
TEST_F(Commands, ALostConnectionIsMadeAnewOnceForAll) {
  LookUp("first");
  Wait();
  const auto silent = [](const auto&) { return Messages{}; };
  Replace(kTrans2, silent);
  Replace(kMkdir, silent);
  for (const char* name : {"a", "b"}) LookUp(name);
  Ask(&share, {E::SCRequestMkdir});
  LetPass(1000);
  Asked();
  ended.clear();
  server.replaced.clear();
  peer.HangUp();
  Wait();
  EXPECT_THAT(ended, testing::UnorderedElementsAre(0, 0, 5));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kTrans2, kTrans2));
}
