// READLINK, READ and WRITE.

#include <algorithm>
#include <limits>

#include "core/steps.h"

namespace ZnSteps {

Outcome ReadLink(FS& filesystem, Command& command) {
  command.offset = 0;
  command.count = ZnNFSEnum::kMaxData;
  return CheckThen<&FS::CheckReadFromFile, &FS::BReadFromFile>(filesystem, command);
}

// A reply must fit into a datagram, and a file ends where 32 bits do; a short read is the client's cue to go on.
Outcome Read(FS& filesystem, Command& command) {
  const auto& args = command.As<ZnNFSReadargs>();
  command.offset = args.offset;
  command.count = std::min({args.count, ZnNFSEnum::kMaxData, std::numeric_limits<uint32_t>::max() - args.offset});
  return CheckThen<&FS::CheckReadFromFile, &FS::BReadFromFile>(filesystem, command);
}

Outcome Write(FS& filesystem, Command& command) {
  const auto& args = command.As<ZnNFSWriteargs>();
  if (args.data.Length() > std::numeric_limits<uint32_t>::max() - args.offset)
    return Refuse(command, ZnNFSEnum::NFSERR_FBIG);
  command.offset = args.offset;
  command.data = args.data;
  return CheckThen<&FS::CheckWriteToFile, &FS::BWriteToFile>(filesystem, command);
}

}  // namespace ZnSteps
