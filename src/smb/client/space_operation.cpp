// Asking how large a share's disk is and how much of it is free.

#include <limits>

#include "smb/client/transaction_operation.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

// Stops at the largest number.
uint64_t Bytes(uint64_t units, uint64_t blocksAUnit, uint64_t blockSize) {
  uint64_t bytes = 0;
  const bool wraps =
      __builtin_mul_overflow(units, blocksAUnit, &bytes) || __builtin_mul_overflow(bytes, blockSize, &bytes);
  return wraps ? std::numeric_limits<uint64_t>::max() : bytes;
}

class SpaceOperation : public ZnSmbTransaction {
 public:
  SpaceOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSMBDiskSpace* space,
                 ZnSmbDone done)
      : ZnSmbTransaction(conversation, caller, tid, std::move(done)), space_(space) {
    conversation.IsNt() ? AskFileSystem() : AskDisk();
  }

 private:
  bool AskFileSystem() {
    ZnSMBCTrans2_ReqParams params(Values::Trans2QueryFSInfo, conversation()->RequestEncoding());
    params.level = ZnSMBCTrans2_FSSIZE::kLevel;
    return AskTrans2(params, ZnByteBuffer());
  }

  bool Collected(const Parts& parts, const ZnSMBCHeader&) override {
    ZnSMBCTrans2_FSSIZE info;
    if (!info.Read(parts.data)) return End(Values::ErrRead);
    space_->total = Bytes(info.units, info.sectors_per_unit, info.bytes_per_sector);
    space_->free = Bytes(info.available_units, info.sectors_per_unit, info.bytes_per_sector);
    return End();
  }

  // A server that doesn't know the level is asked in the form of the oldest dialect, which ends at a few gibibytes.
  bool Refused(const Part& part) override {
    return outcome_.lastcommand == Values::CmdTrans2 ? AskDisk() : ZnSmbTransaction::Refused(part);
  }

  bool AskDisk() { return Ask(Values::CmdQueryDisk, ZnSMBCNoWords(), ZnSMBCNoData()); }

  bool AcceptedOther(const ZnSMBCDecode& reply) override {
    ZnSMBCQueryDisk_RespWords words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    space_->total = Bytes(words.units, words.blocks_per_unit, words.block_size);
    space_->free = Bytes(words.free_units, words.blocks_per_unit, words.block_size);
    return End();
  }

  ZnSMBDiskSpace* space_;
};

}  // namespace

ZnSmbCall ZnSmbClient::GetDiskSpace(ZnSmbCaller caller, const ZnSMBCTreeObject& tree, ZnSMBDiskSpace* space,
                                    ZnSmbDone done) {
  return std::make_unique<SpaceOperation>(*conversation_, caller, tree.tid, space, std::move(done));
}
