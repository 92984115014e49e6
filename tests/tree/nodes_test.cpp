// Handles, ids, and what happens to those who wait when nodes go.

#include "support/tree_fixture.h"

using E = ZnSMBNFSEnum;

class Nodes : public TreeTest {};

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
  ZnSMBNFSFile file;
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
  EXPECT_EQ(Session()->handles.Count(), 20000U);
  NeedsUpdate(share);
  List(share, {});
  EXPECT_EQ(Session()->handles.Count(), 0U);
}
