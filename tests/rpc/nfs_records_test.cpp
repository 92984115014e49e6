#include "rpc/nfs_records.h"

#include "rpc/mount_records.h"
#include "support/layout_check.h"

namespace {

using namespace ZnNFSEnum;

#define HANDLE_HEX "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
ZnNFSFileHandle Handle() {
  ZnNFSFileHandle handle;
  handle.Read(Hex(HANDLE_HEX));
  return handle;
}

const ZnNFSFattr kFattr{{}, NFREG, 0100644, 1, 2, 3, 4, 5, 6, 7, 8, 9, {{}, 10, 11}, {{}, 12, 13}, {{}, 14, 15}};
#define FATTR_HEX                                                                             \
  "00000001 000081a4 00000001 00000002 00000003 00000004 00000005 00000006 00000007 00000008" \
  "00000009 0000000a 0000000b 0000000c 0000000d 0000000e 0000000f"

TEST(NfsRecords, Results) {
  CheckRecord(ZnNFSAttrstat{{}, NFS_OK, kFattr}, "00000000" FATTR_HEX);
  CheckRecord(ZnNFSAttrstat{{}, NFSERR_NOENT, {}}, "00000002");
  CheckRecord(ZnNFSDiropres{{}, NFS_OK, Handle(), kFattr}, "00000000" HANDLE_HEX FATTR_HEX);
  CheckRecord(ZnNFSDiropres{{}, NFSERR_EXIST, {}, {}}, "00000011");
  CheckRecord(ZnNFSReadlinkres{{}, NFS_OK, "../x"}, "00000000 00000004 2e2e2f78");
  CheckRecord(ZnNFSReadres{{}, NFS_OK, kFattr, Hex("010203")}, "00000000" FATTR_HEX "00000003 01020300");
  CheckRecord(ZnNFSReadres{{}, NFSERR_IO, {}, {}}, "00000005");
  CheckRecord(ZnNFSReaddirres{{}, NFS_OK, {{{}, 1, "a", 2}, {{}, 3, "bcdef", 4}}, false},
              "00000000 00000001 00000001 00000001 61000000 00000002"
              "00000001 00000003 00000005 62636465 66000000 00000004 00000000 00000000");
  CheckRecord(ZnNFSReaddirres{{}, NFS_OK, {}, true}, "00000000 00000000 00000001");
  CheckRecord(ZnNFSStatfsres{{}, NFS_OK, 8192, 512, 3, 2, 1}, "00000000 00002000 00000200 00000003 00000002 00000001");
  CheckRecord(ZnNFSMountres{{}, NFS_OK, Handle()}, "00000000" HANDLE_HEX);
}

TEST(NfsRecords, DataLongerThanTheDatagramIsRefusedUnread) {
  for (const char* length : {"00000006", "7fffffff", "80000000", "fffffffc", "ffffffff"}) {
    ZnNFSWriteargs args;
    std::string digits = std::string(HANDLE_HEX "00000000 00000000 00000000") + length + "a1a2a3a4 a5";
    EXPECT_FALSE(args.Read(Hex(digits))) << length;
    EXPECT_TRUE(args.data.IsEmpty()) << length;
  }
}

}  // namespace
