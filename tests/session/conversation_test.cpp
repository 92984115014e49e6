// What a session says to its server: when it opens and closes, in what pieces it reads and writes, and what it does
// when the server refuses, goes away or falls silent.

#include "machine_session_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

class SaidToServer : public MachineSessionTest {
 protected:
  // Gets the connection and the share out of the way.
  void Connect() {
    Try(Node("any"), E::SCRequestAttribs);
    ended.clear();
    Asked();
  }
};

// ---- open files -----------------------------------------------------------------------------------------------------

// ---- pieces ---------------------------------------------------------------------------------------------------------

TEST_F(SaidToServer, NothingIsWrittenBehindTheLargestOffset) {
  Connect();
  Ask(Node("f"), {E::SCRequestWrite}, [](auto& command) {
    command.offset = 0xFFFFFFFE;
    command.data = ZnByteBuffer("12345", 5);
  });
  Wait();
  EXPECT_THAT(ended, ElementsAre(27));
  EXPECT_THAT(Asked(), testing::IsEmpty());
}

// ---- refusals -------------------------------------------------------------------------------------------------------

// Each on a connection of its own. None of our enumerators' names is in what the user reads.
TEST_F(SaidToServer, RefusalsAreToldInWordsAndBecomeAStatus) {
  server.maxBuffer = 16644;  // one request reads all
  const struct {
    std::vector<E::SessionCommand> what;
    int command;
    unsigned errorClass, code;
    int status;
    std::string doing, words;
  } cases[] = {
      {{E::SCRequestRead}, kOpen, 1, 2, 2, "opening", "File not found (class 1, code 2)"},
      {{E::SCRequestRm}, kDelete, 1, 3, 2, "removing", "Directory invalid (class 1, code 3)"},
      {{E::SCRequestRead}, kRead, 1, 33, 13, "reading", "Another process has locked a part"},
      {{E::SCRequestWrite}, kWrite, 1, 112, 28, "writing", "The disk is full"},
      {{E::SCRequestMkdir}, kMkdir, 1, 80, 17, "making a directory", "A file or directory of that name already exists"},
      {{E::SCRequestMkdir}, kMkdir, 2, 80, 5, "making a directory", "Unknown error (class 2, code 80)"},
      {{E::SCRequestRm}, kDelete, 1, 999, 5, "removing", "Unknown error (class 1, code 999)"},
      {{E::SCRequestDirs}, kSetup, 1, 5, 13, "logging on to ", "Access denied (class 1, code 5); the user name or"},
      {{E::SCRequestDirs}, kSetup, 2, 2242, 13, "logging on to ", "The user's password has expired"},
      {{E::SCRequestDirs}, kTree, 1, 67, 5, "connecting the share, at ", "The server has no share of this name"},
      {{E::SCRequestDirs}, kTrans2, 1, 3, 2, "listing", "Directory invalid"}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.words);
    MakeSession();
    server.replaced.clear();
    Replace(test.command, [&](const auto& request) -> Messages {
      if (request.data.find("IPC") != std::string::npos) return StandardSmbServer()(request);
      return {Refusal(request, test.errorClass, test.code)};
    });
    const bool inside = test.command != kMkdir && test.command != kSetup;
    Ask(inside ? Node("f") : &share, test.what, [&](auto& command) { command.data = ZnByteBuffer("bytes", 5); });
    Wait();
    EXPECT_EQ(ended.back(), test.status);
    const std::string at = test.doing.ends_with(' ') ? "127.0.0.1 port " + std::to_string(config.port) : "";
    EXPECT_THAT(told->lines.back(), testing::StartsWith(inside ? "fred\\\\pc\\S\\f" : "fred\\\\pc\\S"));
    EXPECT_THAT(told->lines.back(), HasSubstr(": " + test.doing + at + ": " + test.words));
    EXPECT_THAT(told->lines.back(), testing::Not(testing::ContainsRegex("SST|SCR|ERR|Err")));
  }
  EXPECT_EQ(told->lines.size(), std::size(cases));

  config.port = 1;  // nobody listens
  MakeSession();
  EXPECT_EQ(Try(&share, E::SCRequestDirs), 5);
  EXPECT_EQ(told->lines.back(),
            "fred\\\\pc\\S\\: connecting to 127.0.0.1 port 1: The local server failed to connect to the remote server "
            "(Connection refused); check that the machine is on, and its ipaddress and port in the profile");
}

// What the server refuses on the way to a new name or to none; nothing that was there may be lost, and what was in the
// way and couldn't be replaced is told of.
TEST_F(SaidToServer, RemovalsAndRenamesFindAWay) {
  constexpr unsigned kDenied = 5, kInUse = 32, kUnknownLevel = 124, kNotEmpty = 145, kTaken = 183;
  enum Kind { kRemove, kOverFile, kOverReadOnly, kOverDirectory };
  struct Case {
    Kind kind;
    bool replaces;                  // the server says that it can
    std::vector<unsigned> answers;  // errors, or 0
    std::vector<int> asked;
    int status;
    const char* told = nullptr;
  };
  const Case cases[] = {
      {kRemove, false, {kDenied, 0, 0}, {kDelete, kSetAttributes, kDelete}, 0},
      {kRemove, false, {kDenied, 0, kInUse, 0}, {kDelete, kSetAttributes, kDelete, kSetAttributes}, 13, "\\S\\f:"},
      {kOverFile, true, {0}, {kTrans2}, 0},
      {kOverReadOnly, true, {kDenied, kTaken, 0, 0, 0}, {kTrans2, kRename, kRename, kRename, kDelete}, 0},
      {kOverFile, true, {kUnknownLevel, 0}, {kTrans2, kRename}, 0},
      {kOverFile, true, {0}, {kRename}, 0},  // it has learned
      {kOverFile, false, {kTaken, 0, 0, 0}, {kRename, kRename, kRename, kDelete}, 0},
      {kOverFile, false, {kTaken, 0, 0, kInUse}, {kRename, kRename, kRename, kDelete}, 0, "is now S\\~h"},
      {kOverReadOnly,
       false,
       {kTaken, 0, 0, kDenied, 0, 0},
       {kRename, kRename, kRename, kDelete, kSetAttributes, kDelete},
       0},
      {kOverFile, false, {kTaken, 0, kInUse, 0}, {kRename, kRename, kRename, kRename}, 13, "\\S\\f->\\new:"},
      {kOverDirectory, true, {kTaken, 0, 0}, {kRename, kRmdir, kRename}, 0},
      {kOverDirectory, false, {kTaken, kNotEmpty}, {kRename, kRmdir}, 66, "->\\new:"},
      {kOverDirectory, false, {kTaken, 0, kDenied, 0}, {kRename, kRmdir, kRename, kMkdir}, 13, "->\\new:"},
  };
  ZnSMBNFSNode *node = Node("f"), *target = Node("new");
  share.children.Insert(target->name, {target, target->id});
  size_t next = 0;
  const Case* test = nullptr;
  for (int command : {kDelete, kSetAttributes, kRename, kRmdir, kMkdir, kTrans2}) {
    Replace(command, [&, command](const auto& request) {
      const unsigned error = next < test->answers.size() ? test->answers[next++] : 1;
      if (error != 0) return Messages{Refusal(request, 1, error)};
      if (command == kTrans2) return Messages{TransReply(request, U16(0), "")};
      return Messages{Reply(request)};
    });
  }
  for (const Case& each : cases) {
    SCOPED_TRACE(&each - cases);
    test = &each;
    next = 0;
    told->lines.clear();
    node->fileobject.attribs.read_only = each.kind == kRemove;
    target->fileobject.attribs.read_only = each.kind == kOverReadOnly;
    node->attribs.type = target->attribs.type = each.kind == kOverDirectory ? ZnNFSEnum::NFDIR : ZnNFSEnum::NFREG;
    if (const uint32_t wanted = each.replaces ? 0x2000 : 0; server.capabilities != wanted) {
      server.capabilities = wanted;
      peer.HangUp();
      LetPass(1000);
    }
    if (!session->IsConnected()) Read(Node("any"));
    ended.clear();
    Asked();
    Ask(node, {each.kind == kRemove ? E::SCRequestRm : E::SCRequestRename},
        [&](auto& command) { command.node2 = &share; });
    Wait();
    EXPECT_EQ(Asked(), each.asked);
    EXPECT_THAT(ended, ElementsAre(each.status));
    EXPECT_EQ(told->lines.empty(), each.told == nullptr);
    if (each.told) {
      EXPECT_THAT(told->lines, testing::Contains(HasSubstr(each.told)));
    }
  }
}

TEST_F(SaidToServer, ARenameThatIsCutSaysWhereItLeftWhatWasInTheWay) {
  ZnSMBNFSNode *node = Node("f"), *target = Node("new");
  share.children.Insert(target->name, {target, target->id});
  int renames = 0;
  Replace(kRename, [&](const auto& request) {
    if (renames++ == 0) return Messages{Refusal(request, 1, 183)};
    Prune(node);
    return Messages{Reply(request)};
  });
  Ask(node, {E::SCRequestRename}, [&](auto& command) { command.node2 = &share; });
  Wait();
  EXPECT_EQ(renames, 2);
  EXPECT_THAT(ended, ElementsAre(70));
  EXPECT_THAT(told->lines, testing::Contains(HasSubstr("is now S\\~h")));
}

// ---- a server that goes away ----------------------------------------------------------------------------------------

// The server hangs up when it sees the first request after a pause: what can't do harm twice is sent once more.
TEST_F(SaidToServer, OnlyWhatChangesNothingIsSentAgain) {
  const struct {
    E::SessionCommand what;
    int command, hangups, status;
  } cases[] = {{E::SCRequestAttribs, kTrans2, 1, 0}, {E::SCRequestAttribs, kTrans2, 2, 5},
               {E::SCRequestDirs, kTrans2, 1, 0},    {E::SCRequestRead, kOpen, 1, 0},
               {E::SCRequestMkdir, kMkdir, 1, 5},    {E::SCRequestRm, kDelete, 1, 5},
               {E::SCRequestCreateFile, kOpen, 1, 5}};
  for (const auto& test : cases) {
    SCOPED_TRACE(E::SessionCommandString(test.what).AsUtf8());
    Connect();
    HangUpOn(test.command, test.hangups);
    bool inside = test.command != kMkdir && test.what != E::SCRequestCreateFile;
    EXPECT_EQ(Try(inside ? Node("f") : &share, test.what), test.status);
    const std::vector<int> asked = Asked();
    EXPECT_EQ(std::count(asked.begin(), asked.end(), test.command), test.status == 0 ? 2 : test.hangups);
  }
}

// The server has closed the connection before the second command begins, but the loop hasn't seen it yet.
TEST_F(SaidToServer, ACloseThatIsThereIsSeenBeforeARequestGoesOut) {
  Connect();
  Replace(kMkdir, [&](const auto& request) -> Messages {
    peer.Send(Reply(request));
    peer.HangUp();
    server.replaced.clear();  // and with it this function: nothing of it is touched behind this
    return {};
  });
  bool first = true;
  whenComplete = [&](ZnSMBNFSCommand*) {
    if (std::exchange(first, false)) Ask(&share, {E::SCRequestMkdir});
    return false;
  };
  Ask(&share, {E::SCRequestMkdir});
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0));
  EXPECT_THAT(Asked(), ElementsAre(kMkdir, kNegotiate, kSetup, kTree, kTree, kMkdir));
}

// What the server can't have read whole it hasn't done.
TEST_F(SaidToServer, AChangeThatWasNotTakenIsSentAgain) {
  peer.ReceiveRoom(1024);
  Connect();
  peer.ReceiveRoom(262144);
  ZnSMBNFSNode* node = Node("f");
  AskWrite(node);
  Wait();
  Asked();
  peer.hangUpUnread = true;
  AskWrite(node, std::string(4000, 'y'));
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0));
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree, kOpen, kWrite));
  EXPECT_THAT(told->lines, testing::IsEmpty());
}
