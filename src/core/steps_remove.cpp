// REMOVE, RMDIR, RENAME and LINK.

#include "core/steps.h"

namespace {

// That a directory has entries isn't answered from memory: another machine may have removed them.
ZnStepOutcome UpdateUnlessEmpty(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command) {
  if (command.node && !command.node->children.IsEmpty()) OutOfDate(command.node.Get(), true);
  return ZnSteps::Call<&ZnSMBNFSFileSystem::BUpdateNodeContents>(filesystem, command);
}

}  // namespace

namespace ZnSteps {

Outcome FindEntryToRemove(FS& filesystem, Command& command) {
  return FindEntry(filesystem, command, command.As<ZnNFSDiropargs>().name);
}

// What the configuration makes goes by no call: its machine isn't even asked.
Outcome UpdateContentsToRemove(FS& filesystem, Command& command) {
  if (command.node && !command.node->IsInside()) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  return UpdateUnlessEmpty(filesystem, command);
}

Outcome RenameSource(FS& filesystem, Command& command) {
  return FindEntry(filesystem, command, command.As<ZnNFSRenameargs>().from.name);
}

// While the rename waited for its names, the entry may have got another one.
Outcome RenameSourceAgain(FS& filesystem, Command& command) {
  command.node = command.directory;
  return RenameSource(filesystem, command);
}

Outcome RenameTargetDirectory(FS& filesystem, Command& command) {
  command.savednode = command.node;
  command.handle = ZnSMBNFSHandle(command.As<ZnNFSRenameargs>().to.dir);
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

// Whether the target exists is for its directory to tell, which nobody may have listed yet.
Outcome RenameUpdateTargetDirectory(FS& filesystem, Command& command) {
  command.node2 = command.node;
  command.node = command.savednode;
  filesystem.CheckRenamePlace(&command);
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  command.node = command.node2;
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

// A directory may be replaced if it is empty.
Outcome RenameUpdateTarget(FS& filesystem, Command& command) {
  command.savednode = command.node;
  command.name = command.As<ZnNFSRenameargs>().to.name;
  ZnSMBNFSNode* target = filesystem.RenameTarget(command);
  if (!target || !target->IsDirectory()) return Outcome::GoOn;
  command.node = target;
  return UpdateUnlessEmpty(filesystem, command);
}

Outcome Rename(FS& filesystem, Command& command) {
  command.node = command.savednode;
  return CheckThen<&FS::CheckRename, &FS::BRename>(filesystem, command);
}

Outcome LinkTargetDirectory(FS& filesystem, Command& command) {
  command.savednode = command.node;
  command.handle = ZnSMBNFSHandle(command.As<ZnNFSLinkargs>().to.dir);
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

Outcome Link(FS& filesystem, Command& command) {
  command.node2 = command.node;
  command.node = command.savednode;
  command.name = command.As<ZnNFSLinkargs>().to.name;
  return CheckThen<&FS::CheckCreateLink, &FS::NBCreateLink>(filesystem, command);
}

}  // namespace ZnSteps
