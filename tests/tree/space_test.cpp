// STATFS: when the server is asked, and what is told of its answer.

#include "support/tree_fixture.h"

namespace {

ZnMoment moment{std::chrono::hours(1)};

class Space : public TreeTest {
 protected:
  Space() {
    ZnSteadyClock::SetClock([] { return moment; });
    share_ = Share();
    session_ = Session();
    session_->requests.clear();
    session_->answer = [this](ZnSMBNFSCommand& command) {
      command.space = disk_;
      return disk_.total > 0;
    };
  }
  ~Space() override { ZnSteadyClock::SetClock(nullptr); }

  ZnNFSStatfsres Statfs(ZnSMBNFSNode* node) {
    auto command = CommandAt(node);
    filesystem.BStatFileSystem(command.get());
    EXPECT_EQ(command->error, ZnNFSEnum::NFS_OK);
    return command->statfs;
  }

  ZnSMBNFSNode* share_;
  StandInSession* session_;
  ZnSMBDiskSpace disk_;  // as the server tells it; no size: it doesn't answer
};

TEST_F(Space, IsAskedForOnceInTenSecondsAndWhatWasKnownStands) {
  const struct {
    int seconds;  // that passed
    uint64_t total;
    size_t requests;  // so far
    uint32_t blocks;
  } steps[] = {{0, 0, 1, 2097152}, {10, 5120, 1, 2097152}, {1, 5120, 2, 10}, {10, 1024, 2, 10},
               {1, 0, 3, 10},      {10, 1024, 3, 10},      {1, 1024, 4, 2}};
  for (const auto& step : steps) {
    moment += std::chrono::seconds(step.seconds);
    disk_ = {step.total, step.total / 2};
    EXPECT_EQ(Statfs(share_).blocks, step.blocks);
    EXPECT_EQ(session_->requests.size(), step.requests);
  }
  EXPECT_EQ(Statfs(filesystem.root()).blocks, 2097152U);
  EXPECT_EQ(Statfs(share_->parent).blocks, 2097152U);
  EXPECT_EQ(session_->requests.size(), 4U) << "nobody is asked above the shares";
}

TEST_F(Space, FitsTheNumbersOfTheProtocol) {
  const struct {
    uint64_t total, free;
    uint32_t block, blocks, left;
  } cases[] = {{1ULL << 40, 1ULL << 39, 1024, 1U << 30, 1U << 29},
               {511, 511, 512, 0, 0},
               {1024, 4096, 512, 2, 2},
               {UINT64_MAX, UINT64_MAX, 1U << 31, 0x7FFFFFFF, 0x7FFFFFFF}};
  for (const auto& test : cases) {
    moment += std::chrono::seconds(11);
    disk_ = {test.total, test.free};
    const ZnNFSStatfsres told = Statfs(share_);
    EXPECT_EQ(told.bsize, test.block);
    EXPECT_EQ(told.blocks, test.blocks);
    EXPECT_EQ(told.bfree, test.left);
    EXPECT_EQ(told.bavail, test.left);
  }
}

}  // namespace
