// STATFS: what a share's server says of its disk, and what is said above the shares, where there is none.

#include <algorithm>

#include "model/age.h"
#include "tree/file_system.h"

namespace {

constexpr int32_t kSecondsKept = 10;

// Half of a gibibyte is free.
constexpr ZnSMBDiskSpace kMadeUp{uint64_t{1} << 30, uint64_t{1} << 29};
constexpr uint32_t kSmallestBlock = 512;
constexpr uint64_t kMostBlocks = 0x7FFFFFFF;  // clients may count with signs

}  // namespace

void ZnSMBNFSFileSystem::BStatFileSystem(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  const ZnSMBNFSTree* tree = GetTree(node);
  if (!tree || ZnIsFresh(tree->spacetime, kSecondsKept)) return NBStatFileSystem(command);
  GetSession(node)->Request(command, ZnSMBNFSEnum::SCRequestSpace);
}

// A machine that doesn't answer isn't asked again at once, and is no reason to fail: what was known stands.
void ZnSMBNFSFileSystem::CBStatFileSystem(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (ZnSMBNFSTree* tree = GetTree(node)) {
    tree->spacetime = ZnSteadyClock::now();
    if (command->sessionstatus != ZnSMBNFSEnum::SSTError) tree->space = command->space;
  }
  NBStatFileSystem(command);
}

// Blocks as small as numbers of 31 bits allow.
void ZnSMBNFSFileSystem::NBStatFileSystem(ZnSMBNFSCommand* command) {
  const ZnSMBNFSTree* tree = command->node ? GetTree(command->node.Get()) : nullptr;
  const ZnSMBDiskSpace& space = tree && tree->space.total > 0 ? tree->space : kMadeUp;
  uint64_t block = kSmallestBlock;
  while (space.total / block > kMostBlocks && block <= kMostBlocks) block *= 2;
  command->statfs.tsize = 4096;
  command->statfs.bsize = static_cast<uint32_t>(block);
  command->statfs.blocks = static_cast<uint32_t>(std::min(space.total / block, kMostBlocks));
  command->statfs.bfree =
      std::min(command->statfs.blocks, static_cast<uint32_t>(std::min(space.free / block, kMostBlocks)));
  command->statfs.bavail = command->statfs.bfree;
  Continue(command);
}
