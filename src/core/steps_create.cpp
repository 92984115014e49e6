// CREATE, MKDIR and SYMLINK.

#include "core/steps.h"
#include "model/link_target.h"
#include "tree/safe_name.h"

namespace {

void TakeCreateArguments(ZnSMBNFSCommand& command) {
  const auto& args = command.As<ZnNFSCreateargs>();
  command.name = args.where.name;
  ZnSteps::TakeAttributes(command, args.attributes);
}

}  // namespace

namespace ZnSteps {

// What was made is asked for by its name: the server may have given it another form of that, and attributes of its own.
Outcome FindMade(FS& filesystem, Command& command) {
  return filesystem.KnowsEntry(command) ? Outcome::GoOn : Call<&FS::BFindEntry>(filesystem, command);
}

// Where the server knows it by no such name, the whole directory has to tell.
Outcome ListForMade(FS& filesystem, Command& command) {
  if (filesystem.KnowsEntry(command)) return Outcome::GoOn;
  if (command.node) OutOfDate(command.node.Get(), true);
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

// An existing file counts as created.
Outcome Create(FS& filesystem, Command& command) {
  TakeCreateArguments(command);
  filesystem.CheckCreateFile(&command);
  if (command.error == ZnNFSEnum::NFSERR_EXIST) {
    command.error = ZnNFSEnum::NFS_OK;
    return Outcome::GoOn;
  }
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  return Call<&FS::BCreateFile>(filesystem, command);
}

Outcome MakeDirectory(FS& filesystem, Command& command) {
  TakeCreateArguments(command);
  return CheckThen<&FS::CheckMakeDirectory, &FS::BMakeDirectory>(filesystem, command);
}

// --- SYMLINK: a link is a file whose name is marked and whose contents are the target ---

// A link and a file of one name don't meet on the share, so the server wouldn't refuse to make one beside the other.
Outcome FindFileInTheWay(FS& filesystem, Command& command) {
  command.name = command.As<ZnNFSSymlinkargs>().from.name;
  return ZnLeavesDirectory(command.name) ? Outcome::GoOn : FindMade(filesystem, command);
}

// A target that can't be kept isn't cut: nothing is made.
Outcome CreateLinkFile(FS& filesystem, Command& command) {
  if (!ZnLinkContents(command.As<ZnNFSSymlinkargs>().to)) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.name = command.As<ZnNFSSymlinkargs>().from.name;
  return CheckThen<&FS::CheckCreateSymLink, &FS::BCreateFile>(filesystem, command);
}

// From here on by its name without the mark: that is what the server may have changed the letter case of.
Outcome ListForLinkFile(FS& filesystem, Command& command) {
  command.name = command.As<ZnNFSSymlinkargs>().from.name;
  return ListForMade(filesystem, command);
}

Outcome WriteLinkFile(FS& filesystem, Command& command) {
  command.offset = 0;
  command.data = ZnLinkContents(command.As<ZnNFSSymlinkargs>().to).value_or(ZnByteBuffer());
  return Call<&FS::BWriteToFile>(filesystem, command);
}

}  // namespace ZnSteps
