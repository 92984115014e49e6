// STATFS: what is told of the server's answer.

#include "support/tree_fixture.h"

namespace {

ZnMoment moment{std::chrono::hours(1)};

TEST_F(TreeTest, SpaceFitsTheNumbersOfTheProtocolAndStandsForTenSeconds) {
  ZnSteadyClock::SetClock([] { return moment; });
  ZnSMBNFSNode* share = Share();
  const struct {
    int seconds;           // that passed
    uint64_t total, free;  // as the server tells it; no size: it doesn't answer
    uint32_t block, blocks, left;
  } cases[] = {{0, 0, 0, 512, 2097152, 1048576},
               {11, 1ULL << 40, 1ULL << 39, 1024, 1U << 30, 1U << 29},
               {10, 1024, 1024, 1024, 1U << 30, 1U << 29},
               {1, 511, 511, 512, 0, 0},
               {11, 0, 0, 512, 0, 0},
               {11, 1024, 4096, 512, 2, 2},
               {11, UINT64_MAX, UINT64_MAX, 1U << 31, 0x7FFFFFFF, 0x7FFFFFFF}};
  for (const auto& test : cases) {
    moment += std::chrono::seconds(test.seconds);
    Session()->answer = [&test](ZnSMBNFSCommand& command) {
      command.space = {test.total, test.free};
      return test.total > 0;
    };
    auto command = CommandAt(share);
    filesystem.BStatFileSystem(command.get());
    EXPECT_EQ(command->error, ZnNFSEnum::NFS_OK);
    EXPECT_EQ(command->statfs.bsize, test.block);
    EXPECT_EQ(command->statfs.blocks, test.blocks);
    EXPECT_EQ(command->statfs.bfree, test.left);
    EXPECT_EQ(command->statfs.bavail, test.left);
  }
  ZnSteadyClock::SetClock(nullptr);
}

}  // namespace
