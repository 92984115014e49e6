// What is open on the server, and the order of what commands that run side by side do with it.

#include "session/open_files.h"

#include "machine_session_fixture.h"

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned kDenied = 5, kDiskFull = 112;
constexpr int kSize = 0x100;  // a write of nothing, which sets the size

class OpenFiles : public MachineSessionTest {
 protected:
  OpenFiles() {
    server.maxBuffer = 16644;  // a READ in one piece
    Connect();
  }

  // Begins a conversation, on a connection of its own.
  void Connect() {
    session->DropConnection();
    Try(Node("any"), E::SCRequestAttribs);
    Asked();
    ended.clear();
  }

  void AnswerLast() {
    peer.Send(StandardSmbServer()(held.back()).front());
    held.pop_back();
  }
  // What the server was asked since the last look.
  std::vector<int> Asked() {
    std::vector<int> asked;
    for (; seen < peer.requests.size(); seen++) {
      const Request& request = peer.requests[seen];
      asked.push_back(request.command == kWrite && request.Word(1) == 0 ? kSize : request.command);
    }
    return asked;
  }
  // By the time that nothing more happens.
  std::vector<int> AskedSoFar() {
    LetPass(10);
    return Asked();
  }

  ZnSMBNFSNode* OpenNode(const char* name, bool write = true) {
    ZnSMBNFSNode* node = Node(name);
    Read(node);
    if (write) AskWrite(node);
    Wait();
    Asked();
    ended.clear();
    return node;
  }
  ZnSMBNFSCommand* WriteAt(ZnSMBNFSNode* node, uint32_t offset, const std::string& bytes = "0123456789") {
    return Ask(node, {E::SCRequestWrite}, [&](auto& command) {
      command.offset = offset;
      command.data = ZnByteBuffer(bytes.data(), bytes.size());
    });
  }
  ZnSMBNFSCommand* SetSize(ZnSMBNFSNode* node, uint32_t size) { return WriteAt(node, size, ""); }

  size_t seen = 0;
};

// ---- opening --------------------------------------------------------------------------------------------------------

TEST_F(OpenFiles, AllWhoWantAFileShareOneOpen) {
  std::vector<bool> fresh;
  whenComplete = [&](ZnSMBNFSCommand* command) {
    if (command->sessioncommand == E::SCRequestRead) fresh.push_back(command->freshopen);
    return false;
  };
  Hold(kOpen);
  ZnSMBNFSNode* node = Node("f");
  for (int i = 0; i < 3; i++) AskRead(node);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kOpen));
  LetGo();
  AskRead(node);
  Wait();
  EXPECT_THAT(fresh, ElementsAre(true, false, false, false));
  EXPECT_THAT(ended, ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(Asked(), ElementsAre(kRead, kRead, kRead, kRead));
}

TEST_F(OpenFiles, AFileThatIsOpenForLessIsOpenedForBothWhenItsTransfersAreOver) {
  ZnSMBNFSNode* node = OpenNode("f", false);
  Hold(kRead);
  AskRead(node);
  AskWrite(node);
  AskRead(node);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kRead));
  LetGo();
  Wait();
  EXPECT_THAT(Asked(), testing::UnorderedElementsAre(kClose, kOpen, kWrite, kRead));
  EXPECT_TRUE(node->file->readable && node->file->writable);
  const auto open =
      std::find_if(peer.requests.rbegin(), peer.requests.rend(), [](auto& r) { return r.command == kOpen; });
  EXPECT_EQ(open->Word(3) & 0x73u, 0x22u) << "read and write, others mustn't write";
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
}

// Who may only read isn't refused because somebody wants to write.
TEST_F(OpenFiles, ARefusalIsForThoseWhoWantedAllOfIt) {
  ZnSMBNFSNode* node = Node("f");
  Replace(kOpen, [](const Request& request) {
    const bool writes = (request.Word(3) & 3) != 0;
    return writes ? Messages{Refusal(request, 1, kDenied)} : StandardSmbServer()(request);
  });
  for (uint32_t offset : {10000, 20000}) WriteAt(node, offset);
  AskRead(node);
  Wait();
  EXPECT_THAT(ended, ElementsAre(13, 13, 0));
  EXPECT_THAT(Asked(), ElementsAre(kOpen, kOpen, kRead));
  AskWrite(node);
  AskRead(node);
  Wait();
  EXPECT_THAT(ended, testing::UnorderedElementsAre(13, 13, 0, 13, 0));
  EXPECT_EQ(session->openfiles().Count(), 1u);
}

TEST_F(OpenFiles, TheOneThatWasntUsedForLongestMakesWay) {
  session->config.maxopenfiles = 2;
  ZnSMBNFSNode *a = OpenNode("a", false), *b = OpenNode("b", false), *c = Node("c"), *d = Node("d");
  Read(a);
  Hold(kRead);
  Hold(kClose);
  Asked();
  AskRead(c);  // doesn't wait for the close
  EXPECT_THAT(AskedSoFar(), ElementsAre(kClose, kOpen, kRead));
  EXPECT_FALSE(b->file);
  AskRead(a);
  AskRead(d);  // nothing is idle
  EXPECT_THAT(AskedSoFar(), ElementsAre(kRead, kOpen, kRead));
  EXPECT_TRUE(a->file && c->file && d->file);
  LetGo();
  Wait();
  LetPass(10);
  EXPECT_EQ(session->openfiles().Count(), 2u);
}

TEST_F(OpenFiles, WhatIsOpenedForAGoneNodeIsClosed) {
  ZnSMBNFSNode* node = Node("f");
  Hold(kOpen);
  AskRead(node);
  AskRead(node);
  LetPass(10);
  Prune(node);
  LetGo();
  Wait();
  EXPECT_THAT(AskedSoFar(), ElementsAre(kOpen, kClose));
  EXPECT_EQ(session->openfiles().Count(), 0u);
  EXPECT_EQ(ended.size(), 2u);
  EXPECT_THAT(told->lines, IsEmpty());
}

// ---- order ----------------------------------------------------------------------------------------------------------

TEST_F(OpenFiles, AFileStaysOpenDuringATransfer) {
  share.tree->config.openfilettl = 0;
  session->config.maxopenfiles = 1;
  struct {
    const char* what;
    std::function<void(ZnSMBNFSNode*)> begin;
    std::vector<int> after;
  } const kCases[] = {
      {"another open file", [&](auto*) { AskRead(Node("g")); }, {kClose}},
      {"idle", [&](auto*) { session->CleanUp(); }, {}},
      {"node that goes",
       [&](auto* node) {
         session->NodeGoes(*node);
         Prune(node);
       },
       {kClose}},
  };
  for (const bool write : {false, true}) {
    for (const auto& each : kCases) {
      SCOPED_TRACE(each.what);
      ZnSMBNFSNode* node = OpenNode("f");
      Hold(kWrite);
      Hold(kRead);
      write ? static_cast<void>(WriteAt(node, 0)) : AskRead(node);
      LetPass(2000);
      Asked();
      each.begin(node);
      EXPECT_THAT(AskedSoFar(), Not(Contains(kClose)));
      LetGo();
      Wait();
      std::vector<int> asked = AskedSoFar();
      std::erase(asked, kFlush);
      EXPECT_EQ(asked, each.after);
      Connect();
    }
  }
}

TEST_F(OpenFiles, SizesAndWritesTakeEffectInTheOrderInWhichTheyWereBegun) {
  ZnSMBNFSNode* node = OpenNode("f");
  Hold(kWrite);
  WriteAt(node, 0);
  WriteAt(node, 10);
  SetSize(node, 5);
  WriteAt(node, 20);
  AskRead(node);
  SetSize(node, 7);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite, kWrite));
  AnswerLast();
  EXPECT_THAT(AskedSoFar(), IsEmpty());
  AnswerLast();
  EXPECT_THAT(AskedSoFar(), ElementsAre(kSize));
  EXPECT_EQ(Last().Word(2), 5u);
  AnswerLast();
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite));  // the READ is of the same bytes
  AnswerLast();
  EXPECT_THAT(AskedSoFar(), ElementsAre(kRead, kSize));
  EXPECT_EQ(Last().Word(2), 7u);
  AnswerLast();
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST_F(OpenFiles, WhoDiesTakesItsOwnTurnAlong) {
  ZnSMBNFSNode* node = OpenNode("f");
  Hold(kWrite);
  ZnSMBNFSCommand* first = WriteAt(node, 0);
  ZnSMBNFSCommand* second = SetSize(node, 5);
  WriteAt(node, 10);
  SetSize(node, 15);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite));
  delete second;  // waits for its turn
  EXPECT_THAT(AskedSoFar(), IsEmpty());
  delete first;  // is being served
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite));
  LetGo();
  Wait();
  EXPECT_THAT(AskedSoFar(), ElementsAre(kSize));
  EXPECT_THAT(ended, ElementsAre(0, 0));
  EXPECT_EQ(peer.connections, 1u);
}

// Who waited for a turn all the while begins again; what was under way may have been done, and fails.
TEST_F(OpenFiles, AConnectionThatIsLostWhileOthersHaveTheirTurn) {
  ZnSMBNFSNode* node = OpenNode("f");
  Replace(kWrite, Silence);
  WriteAt(node, 0);
  SetSize(node, 5);
  LetPass(10);
  Asked();
  server.replaced.clear();
  peer.HangUp();
  Wait();
  EXPECT_THAT(ended, ElementsAre(5, 0));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kOpen, kSize));

  ZnSMBNFSNode* directory = Node("d");
  directory->attribs.type = ZnNFSEnum::NFDIR;
  Replace(kRename, Silence);
  Ask(directory, {E::SCRequestRename}, [&](auto& command) { command.node2 = &share; });
  Ask(directory, {E::SCRequestCreateFile});
  LetPass(10);
  Asked();
  peer.HangUp();
  Wait();
  EXPECT_THAT(ended, ElementsAre(5, 0, 5, 0));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kOpen, kClose));
}

TEST_F(OpenFiles, AFileUnderTransferIsLeftAloneUntilThatIsOver) {
  const struct {
    const char* what;
    E::SessionCommand change;
    bool writes;
    std::vector<int> requests;  // once the transfer is over: those of the change, then those of a READ behind it
  } cases[] = {
      {"read, removed", E::SCRequestRm, false, {kClose, kDelete, kOpen, kRead}},
      {"written, removed", E::SCRequestRm, true, {kClose, kDelete, kOpen, kRead}},
      {"read, renamed", E::SCRequestRename, false, {kClose, kMove, kOpen, kRead}},
      {"written, renamed", E::SCRequestRename, true, {kFlush, kClose, kMove, kOpen, kRead}},
      {"written, gets a time", E::SCRequestSetAllAttribs, true, {kFlush, kTrans2, kClose, kOpen, kRead}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    ZnSMBNFSNode* node = Node(each.what);
    for (const int command : {kRead, kWrite}) Hold(command);
    each.writes ? AskWrite(node) : AskRead(node);
    LetPass(1000);
    Asked();
    Ask(node, {each.change}, [&](auto& command) {
      command.node2 = Node("directory");
      command.ownsattr.mtime.seconds = 1000000000;
    });
    LetPass(1000);
    AskRead(node);  // must wait too
    LetPass(1000);
    EXPECT_THAT(Asked(), ElementsAre());
    LetGo();
    Wait();
    EXPECT_EQ(Asked(), each.requests);
  }
}

// What one learns of the server by its refusal is no reason for the other, which was on its way already, to fail.
TEST_F(OpenFiles, RenamesThatMeetAnUnknownMoveTogetherAllFindTheOtherWay) {
  Replace(kMove, Refuse(2, 22));
  for (const char* name : {"a", "b", "c"}) {
    Ask(Node(name), {E::SCRequestRename}, [&](auto& command) { command.node2 = Node("directory"); });
  }
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
}

// ---- flushing -------------------------------------------------------------------------------------------------------

TEST_F(OpenFiles, WritesThatWaitForTheDiskShareAFlush) {
  share.tree->config.syncwrites = true;
  ZnSMBNFSNode* node = OpenNode("f");
  Hold(kFlush);
  for (uint32_t i = 0; i < 4; i++) WriteAt(node, i * 10);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite, kWrite, kWrite, kWrite, kFlush));
  for (uint32_t i = 4; i < 7; i++) WriteAt(node, i * 10);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kWrite, kWrite, kWrite));  // that flush isn't theirs
  EXPECT_THAT(ended, IsEmpty());
  peer.Send(StandardSmbServer()(held.at(0)).front());
  EXPECT_THAT(AskedSoFar(), ElementsAre(kFlush));
  EXPECT_THAT(ended, ElementsAre(0, 0, 0, 0));
  peer.Send(Refusal(held.at(1), 1, kDiskFull));
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0, 0, 28, 28, 28));
  EXPECT_THAT(told->lines, Each(HasSubstr("f: flushing: The disk is full")));
  EXPECT_THAT(AskedSoFar(), ElementsAre(kClose));
}

TEST_F(OpenFiles, AWriteThatLosesItsFlushFails) {
  share.tree->config.syncwrites = true;
  ZnSMBNFSNode* node = OpenNode("f");
  Hold(kFlush);
  WriteAt(node, 0);
  LetPass(10);
  WriteAt(node, 10);
  LetPass(10);
  peer.HangUp();
  Wait();
  EXPECT_THAT(ended, ElementsAre(5, 5));
  EXPECT_FALSE(node->file);
}

TEST_F(OpenFiles, UnflushedFilesAreFlushedAfterARest) {
  ZnSMBNFSNode* node = OpenNode("f");
  for (uint32_t i = 0; i < 5; i++) {
    WriteAt(node, 0);
    LetPass(300);
  }
  EXPECT_THAT(Asked(), Each(kWrite));
  Read(node);  // doesn't count
  Asked();
  LetPass(1000);
  EXPECT_THAT(Asked(), ElementsAre(kFlush));
  LetPass(3000);
  EXPECT_THAT(Asked(), IsEmpty());
}

TEST_F(OpenFiles, WhatWasWrittenIsFlushedBeforeACloseUnlessItIsRemoved) {
  ZnSMBNFSNode *a = OpenNode("a"), *b = OpenNode("b");
  Ask(a, {E::SCRequestSetAttribs});
  Wait();
  EXPECT_THAT(Asked(), ElementsAre(kFlush, kClose, kSetAttributes));
  Ask(b, {E::SCRequestRm});
  Wait();
  EXPECT_THAT(Asked(), ElementsAre(kClose, kDelete));
}

// ---- closing --------------------------------------------------------------------------------------------------------

TEST_F(OpenFiles, IdleFilesAreClosedAndAFailureHarmsNobody) {
  ZnSMBNFSNode* node = OpenNode("f", false);
  LetPass(14000);
  session->CleanUp();
  EXPECT_THAT(AskedSoFar(), IsEmpty());
  LetPass(2000);
  Replace(kClose, Refuse(1, kDiskFull));
  Ask(node, {E::SCRequestAttribs});
  session->CleanUp();
  Wait();
  EXPECT_THAT(AskedSoFar(), Contains(kClose));
  EXPECT_THAT(ended, ElementsAre(0));
  EXPECT_THAT(told->lines, ElementsAre(HasSubstr("\\S\\f: closing: The disk is full")));
  Read(node);
  EXPECT_THAT(Asked(), ElementsAre(kOpen, kRead));
}

TEST_F(OpenFiles, ADirectoryIsRenamedWhenNothingBelowItIsOpen) {
  ZnSMBNFSNode *directory = Node("d"), *a = Node("a"), *b = Node("b");
  directory->attribs.type = ZnNFSEnum::NFDIR;
  for (ZnSMBNFSNode* node : {a, b}) {
    node->parent = directory;
    node->path = "\\d\\";
    Read(node);
  }
  Asked();
  Hold(kRead);
  AskRead(a);
  Ask(directory, {E::SCRequestRename}, [&](auto& command) { command.node2 = &share; });
  AskRead(b);
  EXPECT_THAT(AskedSoFar(), ElementsAre(kRead));
  LetGo();
  Wait();
  EXPECT_THAT(Asked(), ElementsAre(kClose, kClose, kRename, kOpen, kRead));
}

// Only a time that was set is carried by a close, and a write undoes that.
TEST_F(OpenFiles, TheTimeThatACloseCarries) {
  const auto carried = [this] { return Last().Word(1) | Last().Word(2) << 16; };
  for (const bool written : {false, true}) {
    ZnSMBNFSNode* node = OpenNode("f");
    node->file->closetime = {1000000000, 0};
    if (written) WriteAt(node, 0);
    Wait();
    session->NodeGoes(*node);
    EXPECT_THAT(AskedSoFar(), Contains(kClose));
    EXPECT_EQ(carried(), written ? 0u : 1000000000u);
  }
  session->config.timeoffset = 3600;
  Connect();
  for (const uint32_t seconds : {1000000000U, ZnNFSEnum::kUnchanged}) {
    Ask(&share, {E::SCRequestCreateFile}, [&](auto& command) { command.ownsattr.mtime.seconds = seconds; });
    Wait();
    EXPECT_THAT(Asked(), ElementsAre(kOpen, kClose));
    EXPECT_EQ(carried(), seconds == ZnNFSEnum::kUnchanged ? 0 : seconds - 3600);
  }
}

}  // namespace
