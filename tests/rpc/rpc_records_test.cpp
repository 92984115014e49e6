#include "rpc/rpc_records.h"

#include "rpc/control_records.h"
#include "rpc/mount_records.h"
#include "rpc/nfs_records.h"
#include "rpc/port_mapper.h"
#include "support/layout_check.h"

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

TEST(RpcRecords, StringsTravelInTheRpcEncoding) {
  CheckRecord(ZnNFSMountGroup{{}, "é"}, "00000001 e9000000");
  ZnRPCString::rpcenc = ZnCodeset::Utf8;
  CheckRecord(ZnNFSMountGroup{{}, "é€"}, "00000005 c3a9e282 ac000000");
  EXPECT_EQ(ZnRPCString::HowBig("é€"), 12U);
  ZnRPCString::rpcenc = ZnCodeset::Latin1;
}

TEST(RpcRecords, ControlAndPortMapper) {
  CheckRecord(ZnPortMapping{{}, 100003, 2, 17, 2049}, "000186a3 00000002 00000011 00000801");

  const ZnNFSConnectInfo connect{{}, "l", ZnInetAddr(10, 0, 0, 7), 1, "m", "s", "u", "r", "p", 9, {2, 3, 4, 5}};
#define CONNECT_HEX                                                                                    \
  "00000001 6c000000 0a000007 00000001 00000001 6d000000 00000001 73000000 00000001 75000000 00000001" \
  "72000000 00000001 70000000 09 00000002 00000003 00000004 00000005"
  const ZnNFSUserConnection usage{{}, "u", "l", "f", {1, 2, 3, 4}};
#define USAGE_HEX "00000001 75000000 00000001 6c000000 00000001 66000000 00000001 00000002 00000003 00000004"
  CheckRecord(ZnNFSClientConnectResponse{{}, 0, 2, "u", "h", "c"},
              "00000000 00000002 00000001 75000000 00000001 68000000 00000001 63000000");
  CheckRecord(ZnNFSClientConnectResponse{{}, 5, 2, {}, {}, {}}, "00000005 00000002");
  CheckRecord(ZnNFSClientConfigInfo{{}, 3, {connect}}, "00000003 00000001" CONNECT_HEX);
  CheckRecord(ZnNFSClientConfigResponse{{}, 0, 2, {connect}}, "00000000 00000002 00000001" CONNECT_HEX);
  CheckRecord(ZnNFSClientUsageResponse{{}, 0, 2, {usage, usage}}, "00000000 00000002 00000002" USAGE_HEX USAGE_HEX);
  CheckRecord(ZnNFSClientTestInfo{{}, Hex("010203")}, "| 010203");
}

}  // namespace
