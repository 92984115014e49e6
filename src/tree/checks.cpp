// Steps that only decide: each sets command->error and leaves the rest to its caller.

#include "model/entries.h"
#include "model/name_mapping.h"
#include "model/told_attributes.h"
#include "tree/file_system.h"
#include "tree/safe_name.h"

namespace {

constexpr uint32_t kUnset = ZnNFSEnum::kUnchanged;
constexpr uint32_t kTypeBits = 0170000;
constexpr uint32_t kRegularFile = 0100000;

void RefuseDirectory(ZnSMBNFSCommand* command) {
  if (!command->node) {
    command->error = ZnNFSEnum::NFSERR_STALE;
  } else if (command->node->IsDirectory()) {
    command->error = ZnNFSEnum::NFSERR_ISDIR;
  }
}

}  // namespace

void ZnSMBNFSFileSystem::CheckReadFromFile(ZnSMBNFSCommand* command) { RefuseDirectory(command); }

void ZnSMBNFSFileSystem::CheckWriteToFile(ZnSMBNFSCommand* command) { RefuseDirectory(command); }

void ZnSMBNFSFileSystem::CheckRemoveDirectory(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) {
    command->error = ZnNFSEnum::NFSERR_STALE;
  } else if (!node->IsDirectory()) {
    command->error = ZnNFSEnum::NFSERR_NOTDIR;
  } else if (!node->children.IsEmpty()) {
    command->error = ZnNFSEnum::NFSERR_NOTEMPTY;
  }
}

// Whether a file of this name would be taken for a symbolic link.
bool ZnSMBNFSFileSystem::WouldBeLink(ZnSMBNFSNode* directory, const ZnUniString& name) {
  ZnSMBNFSTree* tree = GetTree(directory);
  return tree && IsLinkName(name, tree->config.linkstring);
}

// Shares hold files only. A client that makes a FIFO, a socket or a device says so in the type bits of the mode.
void ZnSMBNFSFileSystem::CheckCreateFile(ZnSMBNFSCommand* command) {
  const uint32_t type = ZnToldMode(command->sattr).value_or(0) & kTypeBits;
  if (type != 0 && type != kRegularFile) {
    command->error = ZnNFSEnum::NFSERR_PERM;
    return;
  }
  ZnSMBNFSNode* directory = command->node.Get();
  command->error = NewNameStatus(directory, command->name);
  const bool exists = command->error == ZnNFSEnum::NFSERR_EXIST;
  if (exists && FindByName(directory, command->name, ZnNameMatch::Entry)->IsDirectory()) {
    command->error = ZnNFSEnum::NFSERR_ISDIR;
  } else if ((exists || command->error == ZnNFSEnum::NFS_OK) && WouldBeLink(directory, command->name)) {
    command->error = ZnNFSEnum::NFSERR_ACCES;
  }
}

void ZnSMBNFSFileSystem::CheckMakeDirectory(ZnSMBNFSCommand* command) {
  command->error = NewNameStatus(command->node.Get(), command->name);
}

void ZnSMBNFSFileSystem::CheckCreateLink(ZnSMBNFSCommand* command) {
  command->error = NewNameStatus(command->node2.Get(), command->name);
}

ZnNFSEnum::Status ZnSMBNFSFileSystem::NewNameStatus(ZnSMBNFSNode* directory, const ZnUniString& name) {
  if (!directory) return ZnNFSEnum::NFSERR_STALE;
  if (FindByName(directory, name, ZnNameMatch::Entry)) return ZnNFSEnum::NFSERR_EXIST;
  return NameStatus(directory, name);
}

// The link's file gets the share's permissions; nothing else is set.
void ZnSMBNFSFileSystem::CheckCreateSymLink(ZnSMBNFSCommand* command) {
  ZnSMBNFSTree* tree = command->node ? GetTree(command->node.Get()) : nullptr;
  if (!tree) {
    command->error = command->node ? ZnNFSEnum::NFSERR_ACCES : ZnNFSEnum::NFSERR_STALE;
    return;
  }
  ZnNFSSattr& attributes = command->ownsattr;
  attributes.mode = static_cast<uint32_t>(tree->config.unixperms);
  attributes.uid = attributes.gid = attributes.size = kUnset;
  attributes.atime.seconds = attributes.mtime.seconds = kUnset;
  attributes.atime.useconds = attributes.mtime.useconds = 0;
  command->sattr = &attributes;
  command->exclusive = true;
  const ZnUniString shown = command->name;
  command->name = ToLinkName(shown, tree->config.linkstring);
  const bool exists = !ZnLeavesDirectory(shown) && FindByName(command->node.Get(), shown, ZnNameMatch::Entry);
  command->error = exists ? ZnNFSEnum::NFSERR_EXIST : NameStatus(command->node.Get(), command->name);
}

// A client that is told of another file system copies instead.
void ZnSMBNFSFileSystem::CheckRenamePlace(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSNode* directory = command->node2.Get();
  if (!node || !directory) {
    command->error = ZnNFSEnum::NFSERR_STALE;
  } else if (!node->IsInside() || !GetTree(node) || ZnIsAtOrBelow(directory, node)) {
    command->error = ZnNFSEnum::NFSERR_ACCES;
  } else if (node->sharenode != directory->sharenode) {
    command->error = ZnNFSEnum::NFSERR_XDEV;
  } else if (!directory->IsDirectory()) {
    command->error = ZnNFSEnum::NFSERR_NOTDIR;
  }
}

ZnSMBNFSNode* ZnSMBNFSFileSystem::RenameTarget(const ZnSMBNFSCommand& command) {
  ZnSMBNFSNode* directory = command.node2.Get();
  if (!directory || ZnLeavesDirectory(command.name)) return nullptr;
  ZnSMBNFSNode* found = FindByName(directory, command.name, ZnNameMatch::Entry);
  return found == command.node.Get() ? nullptr : found;
}

void ZnSMBNFSFileSystem::CheckRename(ZnSMBNFSCommand* command) {
  CheckRenamePlace(command);
  if (command->error != ZnNFSEnum::NFS_OK) return;
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSNode* directory = command->node2.Get();
  ZnSMBNFSNode* target = RenameTarget(*command);
  // A link stays one under its new name.
  const ZnUniString& linkstring = GetTree(node)->config.linkstring;
  if (IsLinkName(node->name, linkstring) && !IsLinkName(command->name, linkstring))
    command->name = ToLinkName(command->name, linkstring);
  command->error = NameStatus(directory, command->name, node);
  if (command->error != ZnNFSEnum::NFS_OK || !target) return;
  if (node->IsDirectory() != target->IsDirectory()) {
    command->error = target->IsDirectory() ? ZnNFSEnum::NFSERR_ISDIR : ZnNFSEnum::NFSERR_NOTDIR;
  } else if (!target->children.IsEmpty()) {
    command->error = ZnNFSEnum::NFSERR_NOTEMPTY;
  }
}

void ZnSMBNFSFileSystem::CheckRemoveFile(ZnSMBNFSCommand* command) { RefuseDirectory(command); }

bool ZnSMBNFSFileSystem::SetAttrNeedTruncate(ZnSMBNFSCommand* command) { return command->sattr->size != kUnset; }
