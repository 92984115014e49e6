// Handles, ids, and what happens to those who wait when nodes go.

#include "support/tree_fixture.h"

using E = ZnSMBNFSEnum;

class Nodes : public TreeTest {};

TEST(Handle, BottomCountsWithCarryAndTopIsA64BitNumber) {
  ZnSMBNFSHandle handle;
  handle.bytes.fill(0);
  for (size_t i = 28; i < 32; i++) handle.bytes[i] = 0xFF;
  EXPECT_FALSE(handle.InTop());
  handle.IncBottom();
  uint32_t words[8];
  memcpy(words, handle.bytes.data(), sizeof words);
  EXPECT_EQ(words[7], 0U);
  EXPECT_EQ(words[6], 1U);
  handle.TopOnly();
  EXPECT_TRUE(handle.InTop());
  words[0] = 7;
  words[1] = 0xFFFFFFFF;
  memcpy(handle.bytes.data(), words, sizeof words);
  handle.IncTop();
  memcpy(words, handle.bytes.data(), sizeof words);
  EXPECT_EQ(words[0], 8U);
  EXPECT_EQ(words[1], 0U);
}

TEST_F(Nodes, RootTakesAnyHandleAndTopsAreOfThisStartAlone) {
  const ZnNFSFileHandle root = filesystem.root()->handle;
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("f")});
  ZnSMBNFSNode* file = Child(share, "f");
  EXPECT_TRUE(share->handle.InTop());
  EXPECT_FALSE(file->handle.InTop());
  ZnSMBNFSHandle top = file->handle;
  top.TopOnly();
  EXPECT_EQ(top, share->machinenode->handle) << "the top tells the machine";

  TestFileSystem restarted{&handler, nullptr, ZnSMBNFSServerConfig()};
  restarted._init(root);
  auto command = CommandAt(restarted.root());
  restarted.BUpdateNodeContents(command.get());
  const ZnSMBNFSNode* user = *restarted.root()->children.Find("u");
  EXPECT_EQ(restarted.root()->handle, root);
  EXPECT_NE(user->handle, Walk({"u"})->handle);
  EXPECT_NE(user->id, Walk({"u"})->id);
  for (const ZnSMBNFSNode* node : {filesystem.root(), Walk({"u"}), share, file}) {
    auto find = CommandAt(nullptr);
    find->handle = node->handle;
    restarted.NBFindByHandle(find.get());
    EXPECT_EQ(find->error, node->IsRoot() ? ZnNFSEnum::NFS_OK : ZnNFSEnum::NFSERR_STALE);
  }
}

TEST_F(Nodes, FindByHandleKnowsLivingNodesOnly) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("d", true), Entry("f")});
  ZnSMBNFSHandle handle = Child(share, "f")->handle;
  auto find = [&](const ZnSMBNFSHandle& wanted) {
    auto command = CommandAt(nullptr);
    command->handle = wanted;
    filesystem.NBFindByHandle(command.get());
    return std::make_pair(command->node.Get(), command->error);
  };
  EXPECT_EQ(find(handle).first, Child(share, "f"));
  EXPECT_EQ(find(filesystem.root()->handle).first, filesystem.root());
  List(share, {Entry("d", true)});
  EXPECT_EQ(find(handle), std::make_pair(static_cast<ZnSMBNFSNode*>(nullptr), ZnNFSEnum::NFSERR_STALE));
  ZnSMBNFSHandle ofshare = share->handle;
  ofshare.IncBottom();
  EXPECT_EQ(find(ofshare).second, ZnNFSEnum::NFSERR_STALE) << "a share's top with a bottom names nothing";
}

TEST_F(Nodes, IdsAreNeverSmallNorAnAncestors) {
  ZnSMBNFSNode* share = Share();
  ZnSMBNFSNode probe;
  probe.parent = share;
  uint32_t last = 0;
  for (int i = 0; i < 1000; i++) {
    uint32_t id = filesystem.NextId(&probe);
    EXPECT_GE(id, 3U);
    EXPECT_GT(id, last);
    last = id;
  }
  share->id = last + 1;
  EXPECT_EQ(filesystem.NextId(&probe), last + 2);
}

TEST_F(Nodes, ARelistingKeepsHandlesAndIdsOfNamesThatStay) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("a"), Entry("b"), Entry("c")});
  auto handle = Child(share, "b")->handle;
  auto id = Child(share, "b")->id;
  // A name counts once in a listing, whether the tree knows it or not.
  List(share, {Entry("b", false, 7), Entry("d", false, 8), Entry("b", false, 9), Entry("d", false, 9)});
  EXPECT_EQ(Child(share, "b")->handle, handle);
  EXPECT_EQ(Child(share, "b")->id, id);
  EXPECT_EQ(Child(share, "b")->attribs.size, 7U);
  EXPECT_EQ(Child(share, "d")->attribs.size, 8U);
  EXPECT_EQ(share->children.Count(), 2U);
  EXPECT_EQ(Child(share, "a"), nullptr);
  List(share, {Entry("B")});
  EXPECT_NE(Child(share, "B")->handle, handle) << "another case is another name";
}

TEST_F(Nodes, WaitingCommandsOfAPrunedFileEndStale) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("d", true)});
  ZnSMBNFSNode* directory = Child(share, "d");
  List(directory, {Entry("f")});
  auto waiting = CommandAt(Child(directory, "f"));
  filesystem.BOpenFile(waiting.get());
  ASSERT_EQ(Session()->queue.size(), 1U);
  filesystem.Prune(directory);
  EXPECT_FALSE(waiting->node);
  filesystem.CompleteRequest(waiting.get());
  EXPECT_EQ(waiting->error, ZnNFSEnum::NFSERR_STALE);
  EXPECT_EQ(waiting->status, E::STError);
}

TEST_F(Nodes, AListingOfAPrunedDirectoryEndsStale) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("d", true)});
  auto listing = CommandAt(Child(share, "d"));
  filesystem.BUpdateNodeContents(listing.get());
  List(share, {});
  listing->files.Append(Entry("late"));
  filesystem.CompleteRequest(listing.get());
  EXPECT_EQ(listing->error, ZnNFSEnum::NFSERR_STALE);
}

TEST_F(Nodes, AUserThatLeavesTheProfileTakesWaitingCommandsAlong) {
  ZnSMBNFSNode* share = Share();
  auto listing = CommandAt(share);
  filesystem.BUpdateNodeContents(listing.get());
  auto other = CommandAt(share->machinenode);
  ASSERT_EQ(Session()->queue.size(), 1U);
  filesystem.Prune(Walk({"u"}));
  EXPECT_EQ(listing->error, ZnNFSEnum::NFSERR_STALE);
  EXPECT_FALSE(listing->node);
  EXPECT_FALSE(other->node);
  EXPECT_TRUE(filesystem.sessions().empty());
  EXPECT_TRUE(filesystem.root()->children.IsEmpty());
}

TEST_F(Nodes, APrunedFileIsClosedLater) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("f")});
  ZnSMBNFSNode* node = Child(share, "f");
  Session()->files.push_back(std::make_unique<ZnSMBNFSFile>());
  ZnSMBNFSFile& file = *Session()->files.front();
  file.node = node;
  node->file = &file;
  filesystem.Prune(node);
  EXPECT_TRUE(file.close);
  EXPECT_FALSE(file.node);
}

TEST_F(Nodes, DeepTreesGoWithoutDeepStacks) {
  ZnSMBNFSNode* share = Share();
  ZnSMBNFSNode* node = share;
  for (int depth = 0; depth < 20000; depth++) node = filesystem.AddNode(node, Entry("d", true), "\\");
  NeedsUpdate(share);
  List(share, {});
  EXPECT_EQ(Session()->handles.Count(), 0U);
}
