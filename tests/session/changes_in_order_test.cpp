// What changes a file waits for the transfers that are in flight on it, and holds up those that come behind.

#include "machine_session_fixture.h"

using testing::ElementsAre;

class ChangesInOrder : public MachineSessionTest {
 protected:
  ChangesInOrder() {
    share.tree->config.syncwrites = false;
    server.maxBuffer = 16644;
  }
  // The server keeps the answers to transfers to itself until they are let go.
  void HoldTransfers() {
    for (int command : {kRead, kWrite}) {
      Replace(command, [this](const auto& request) {
        held.push_back(request);
        return Messages{};
      });
    }
  }
  void LetGo() {
    server.replaced.clear();
    for (const auto& request : held) peer.Send(server(request).front());
    held.clear();
    Wait();
  }

  std::vector<smb_script::Request> held;
};

TEST_F(ChangesInOrder, AFileUnderTransferIsLeftAloneUntilThatIsOver) {
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
    HoldTransfers();
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
    EXPECT_EQ(Asked(), each.requests);
  }
}

// What one learns of the server by its refusal is no reason for the other, which was on its way already, to fail.
TEST_F(ChangesInOrder, RenamesThatMeetAnUnknownMoveTogetherAllFindTheOtherWay) {
  Replace(kMove, [](const auto& request) { return Messages{smb_script::Refusal(request, 2, 22)}; });
  for (const char* name : {"a", "b", "c"}) {
    Ask(Node(name), {E::SCRequestRename}, [&](auto& command) { command.node2 = Node("directory"); });
  }
  Wait();
  EXPECT_THAT(ended, ElementsAre(0, 0, 0));
}
