// The queue: many commands, commands that go away, sessions that go away.

#include "session_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(SessionTest, CommandsAreServedOneAtATimeInOrder) {
  for (const char* name : {"a", "b", "c"}) AskRead(Node(name));
  EXPECT_EQ(session->QueueLength(), 3u);
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kOpen, kRead, kOpen, kRead, kOpen, kRead));
}

TEST_F(SessionTest, WhoWaitsForTheSameListingGetsItTogether) {
  share.tree->config.contentsttl = 10;
  for (int i = 0; i < 3; i++) Ask(&share, {E::SCRequestDirs});
  whenComplete = [&](ZnSMBNFSCommand* command) {
    EXPECT_EQ(command->alreadylisted, !ended.empty());
    share.contentstime = ZnSteadyClock::now();
    return false;
  };
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kTrans2));
}

TEST_F(SessionTest, AFullQueueDropsCallsLikeLostDatagrams) {
  ZnSMBNFSNode* node = Node("f");
  for (size_t i = 0; i < ZnSMBNFSSession::kMostWaiting + 2; i++) AskRead(node);
  EXPECT_EQ(session->QueueLength(), ZnSMBNFSSession::kMostWaiting);
  EXPECT_EQ(calls.size(), ZnSMBNFSSession::kMostWaiting);
  session->SendErrors();  // of all of them at once, without nesting
  EXPECT_EQ(session->QueueLength(), 0u);
  EXPECT_EQ(ended.size(), ZnSMBNFSSession::kMostWaiting);
  EXPECT_THAT(ended, Each(5));
  ASSERT_EQ(told->lines.size(), 1u);
  EXPECT_THAT(told->lines[0],
              HasSubstr("The session was flushed with 4096 commands outstanding. These commands will error."));
  EXPECT_EQ(Try(node, E::SCRequestAttribs), 0);
}

TEST_F(SessionTest, AFlushFromWithinACompletionLeavesThatCommandAlone) {
  for (const char* name : {"a", "b", "c"}) Ask(Node(name), {E::SCRequestAttribs});
  bool first = true;
  whenComplete = [&](ZnSMBNFSCommand*) {
    if (!std::exchange(first, false)) return false;
    session->SendErrors();
    EXPECT_EQ(ended.size(), 2u);
    EXPECT_EQ(session->QueueLength(), 1u);
    return false;
  };
  Wait();
  EXPECT_THAT(ended, ElementsAre(5, 5, 0));
}

TEST_F(SessionTest, ASessionMayEndInTheCompletionOfItsCommand) {
  for (const char* name : {"a", "b"}) Ask(Node(name), {E::SCRequestAttribs});
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

TEST_F(SessionTest, ACommandThatGoesFromTheMiddleOrTheHeadMakesWay) {
  Ask(Node("a"), {E::SCRequestAttribs});
  ZnSMBNFSCommand* middle = Ask(Node("b"), {E::SCRequestAttribs});
  Ask(Node("c"), {E::SCRequestAttribs});
  delete middle;
  EXPECT_EQ(session->QueueLength(), 2u);
  delete calls.front().command;  // its connection is under way
  Wait();
  EXPECT_THAT(ended, ElementsAre(0));
}

TEST_F(SessionTest, ANodeThatGoesFailsTheCommandsThatWaitForIt) {
  ZnSMBNFSNode* node = Node("f");
  AskRead(node);
  AskRead(node);
  Prune(node);
  Wait();
  EXPECT_EQ(ended.size(), 2u);
  EXPECT_THAT(told->lines, testing::IsEmpty());
}

// The open was under way when the node went: what it opened is closed again.
TEST_F(SessionTest, AFileThatIsOpenedForAGoneNodeIsClosed) {
  ZnSMBNFSNode* node = Node("f");
  Replace(kOpen, [&, standard = server](const auto& request) mutable {
    Prune(node);
    return standard(request);
  });
  AskRead(node);
  Wait();
  ASSERT_EQ(session->files.size(), 1u);
  EXPECT_FALSE(session->CleanUp());
  LetPass(1000);
  EXPECT_EQ(Asked().back(), kClose);
  EXPECT_TRUE(session->files.empty());
}
