// Asking how large a share's disk is and how much of it is free.

#include <limits>

#include "smb/client/smb_client.h"
#include "smb/wire/file_sections.h"
#include "smb/wire/trans2_sections.h"

using Values = ZnSMBClientValues;

namespace {

// Stops at the largest number.
uint64_t Bytes(uint64_t units, uint64_t blocksAUnit, uint64_t blockSize) {
  uint64_t bytes = 0;
  const bool wraps =
      __builtin_mul_overflow(units, blocksAUnit, &bytes) || __builtin_mul_overflow(bytes, blockSize, &bytes);
  return wraps ? std::numeric_limits<uint64_t>::max() : bytes;
}

}  // namespace

ZnSMBClient::Result ZnSMBClient::GetDiskSpace(const ZnSMBCTreeObject& tree, ZnSMBDiskSpace* space,
                                              Completion* callback) {
  if (!Ready(tree.tid)) return ResultFailure;
  storage_ = ZnSMBOperation::DiskSpace{space};
  const bool nt = server_.dialect == Values::DialectNT;
  return Start(Values::StateDiskSpace, nt ? SendQueryFSInfo() : SendQueryDisk(), callback);
}

ZnSMBClient::Result ZnSMBClient::SendQueryFSInfo() {
  ZnSMBCTrans2_ReqParams params(Values::Trans2QueryFSInfo, RequestEncoding());
  params.level = ZnSMBCTrans2_FSINFO::kSizeLevel;
  return SendTrans2(params, ZnByteBuffer());
}

ZnSMBClient::Result ZnSMBClient::FSInfoReply() {
  Result result = RecvTransWithoutSetup();
  if (result != ResultSuccess) return result;
  ZnSMBCTrans2_FSINFO info(encoding_, ZnSMBCTrans2_FSINFO::kSizeLevel);
  if (!info.Read(collected_.data)) return Fail(Values::ErrRead);
  ZnSMBDiskSpace& space = *Operation<ZnSMBOperation::DiskSpace>().space;
  space.total = Bytes(info.long_units, info.sectors_per_unit, info.bytes_per_sector);
  space.free = Bytes(info.long_available_units, info.sectors_per_unit, info.bytes_per_sector);
  return ResultSuccess;
}

// A server that doesn't know the level is asked in the form of the oldest dialect, which ends at a few gibibytes.
ZnSMBClient::Result ZnSMBClient::FSInfoRefused() { return Sent(SendQueryDisk()); }

ZnSMBClient::Result ZnSMBClient::SendQueryDisk() {
  return SendRequest(Values::CmdQueryDisk, ZnSMBCNoWords(), ZnSMBCNoData());
}

ZnSMBClient::Result ZnSMBClient::DiskReply() {
  ZnSMBCQueryDisk_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  ZnSMBDiskSpace& space = *Operation<ZnSMBOperation::DiskSpace>().space;
  space.total = Bytes(words.units, words.blocks_per_unit, words.block_size);
  space.free = Bytes(words.free_units, words.blocks_per_unit, words.block_size);
  return ResultSuccess;
}
