#include "rpc/rpc_records.h"

#include <gtest/gtest.h>

#include "rpc/nfs_records.h"
#include "support/read_exactly.h"

namespace {

// Lengths and counts that promise more than there is, whatever the arithmetic; words with other values than they may
// have.
TEST(RpcRecords, RefusedBytes) {
  constexpr std::pair<const char*, const char*> kBlocks[] = {
      {"null block with a length", "00000000 00000004 00000000"},
      {"DES", "00000003 00000000"},
      {"name of 2^32 - 1 bytes", "00000001 00000010 00000000 ffffffff 41414141 00000001 00000002 00000000"},
      {"name of 2^32 - 3 bytes", "00000001 00000010 00000000 fffffffd 41414141 00000001 00000002 00000000"},
      {"name one byte too long", "00000001 00000010 00000000 00000005 41414141"},
      {"padding missing", "00000001 00000010 00000000 00000005 4141414141 0000"},
      {"2^30 groups", "00000001 00000010 00000000 00000000 00000001 00000002 40000000 00000001"},
      {"one group too many", "00000001 00000010 00000000 00000000 00000001 00000002 00000002 00000001"},
  };
  for (const auto& [what, digits] : kBlocks) {
    ZnRPCAuthBlock block;
    EXPECT_FALSE(ReadExactly(block, Hex(digits))) << what;
    EXPECT_LE(block.auth_body.grouplist.Count(), 1U) << what;
  }
  ZnRPCMessageFromClient call;
  EXPECT_FALSE(
      call.Read(Hex("00000001 00000001 00000002 000186a3 00000002 00000000 00000000 00000000 00000000 00000000")));
  for (const char* digits : {"00000000 00000000", "00000001 00000002", "00000001 00000001 00000002"}) {
    ZnRPCMessageFromServer reply;
    EXPECT_FALSE(reply.Read(Hex(std::string("00000001") + digits + "00000000 00000000 00000000"))) << digits;
  }
}

TEST(RpcRecords, DataLongerThanTheDatagramIsRefusedUnread) {
  for (const char* length : {"00000006", "7fffffff", "80000000", "fffffffc", "ffffffff"}) {
    ZnNFSWriteargs args;
    EXPECT_FALSE(args.Read(Hex(std::string(88, '0') + length + "a1a2a3a4 a5"))) << length;
    EXPECT_TRUE(args.data.IsEmpty()) << length;
  }
}

}  // namespace
