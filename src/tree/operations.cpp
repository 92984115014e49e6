// Steps that hand the command to its session, and the few that answer by themselves.

#include "model/mode_attributes.h"
#include "model/told_attributes.h"
#include "tree/file_system.h"

namespace {

using E = ZnSMBNFSEnum;

constexpr unsigned kSetsAllAtOnce = 2;  // the lowest server class that takes all attributes in one call

bool SetsTimes(const ZnSMBNFSCommand& command) {
  return ZnToldAccess(command.sattr) || ZnToldModification(command.sattr);
}

// What a write does is told when it is done (ShowWrite), unless it makes the file shorter.
bool ChangesEntry(const ZnSMBNFSCommand& command, E::SessionCommand what) {
  switch (what) {
    case E::SCRequestSetAllAttribs:
    case E::SCRequestSetAttribs:
    case E::SCRequestSetTimes:
    case E::SCRequestRename:
    case E::SCRequestRm:
    case E::SCRequestRmdir:
      return true;
    case E::SCRequestWrite:
      return command.truncates;
    default:
      return false;
  }
}

// New entries are made in a share's top as well as below it; everything else needs an entry that the server stores.
bool WorksOnShares(E::SessionCommand what) {
  return what == E::SCRequestCreateFile || what == E::SCRequestMkdir || what == E::SCRequestEntry;
}

}  // namespace

void ZnSMBNFSFileSystem::Ask(ZnSMBNFSCommand* command, E::SessionCommand what) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  bool applies = node->IsInside() || (WorksOnShares(what) && node->IsShare());
  if (!applies || !GetTree(node)) return SendError(command, ZnNFSEnum::NFSERR_ACCES);
  if (ChangesEntry(*command, what)) command->change.Begin(*node, looks_);
  GetSession(node)->Request(command, what);
}

void ZnSMBNFSFileSystem::BFindEntry(ZnSMBNFSCommand* command) {
  command->look = ++looks_;
  Ask(command, E::SCRequestEntry);
}
void ZnSMBNFSFileSystem::BCreateFile(ZnSMBNFSCommand* command) { Ask(command, E::SCRequestCreateFile); }
void ZnSMBNFSFileSystem::BReadFromFile(ZnSMBNFSCommand* command) { Ask(command, E::SCRequestRead); }
void ZnSMBNFSFileSystem::BRemoveFile(ZnSMBNFSCommand* command) { Ask(command, E::SCRequestRm); }
void ZnSMBNFSFileSystem::BRemoveDirectory(ZnSMBNFSCommand* command) { Ask(command, E::SCRequestRmdir); }
void ZnSMBNFSFileSystem::BMakeDirectory(ZnSMBNFSCommand* command) { Ask(command, E::SCRequestMkdir); }

void ZnSMBNFSFileSystem::BRename(ZnSMBNFSCommand* command) {
  const ZnSMBNFSNode* node = command->node.Get();
  const bool stays = node && node->parent == command->node2.Get() && node->name == command->name;
  stays ? Continue(command) : Ask(command, E::SCRequestRename);
}

void ZnSMBNFSFileSystem::BWriteToFile(ZnSMBNFSCommand* command) {
  command->writeend = command->offset + static_cast<uint32_t>(command->data.Length());
  command->truncates = command->data.IsEmpty();
  Ask(command, E::SCRequestWrite);
}

bool ZnSMBNFSFileSystem::SetsOldWay(ZnSMBNFSNode* node) {
  ZnSMBNFSSessionBase* session = GetSession(node);
  return session && (session->config.oldsetattr || session->serverclass() < kSetsAllAtOnce);
}

// A mode that no attribute of Windows can hold isn't worth a request: the attributes in the reply show what holds.
bool ZnSMBNFSFileSystem::SetsMode(const ZnSMBNFSCommand& command) {
  ZnSMBNFSNode* node = command.node.Get();
  const ZnSMBNFSTree* tree = GetTree(node);
  return ZnToldMode(command.sattr) && tree && node->IsInside() && ZnModeCounts(node->fileobject.attribs, tree->config);
}

void ZnSMBNFSFileSystem::BSetAllAttributes(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  bool needed = !node || (!SetsOldWay(node) && (SetsMode(*command) || SetsTimes(*command)));
  needed ? Ask(command, E::SCRequestSetAllAttribs) : Continue(command);
}

void ZnSMBNFSFileSystem::BSetAttributes(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (node && !node->IsInside()) return SetMadeUp(command);
  bool needed = !node || (!node->IsDirectory() && SetsOldWay(node) && SetsMode(*command));
  needed ? Ask(command, E::SCRequestSetAttribs) : Continue(command);
}

// Users, machines and shares have the modes and owners that the configuration gives them: others have no effect, and
// are no error, for copying programs set them on whatever they meet.
void ZnSMBNFSFileSystem::SetMadeUp(ZnSMBNFSCommand* command) {
  const bool refused = SetsTimes(*command) || SetAttrNeedTruncate(command);
  refused ? SendError(command, ZnNFSEnum::NFSERR_ACCES) : Continue(command);
}

void ZnSMBNFSFileSystem::BSetTimes(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  bool needed = !node || (!node->IsDirectory() && SetsOldWay(node) && SetsTimes(*command));
  needed ? Ask(command, E::SCRequestSetTimes) : Continue(command);
}

// Shares have no hard links, and symbolic ones are made as files.
void ZnSMBNFSFileSystem::NBCreateLink(ZnSMBNFSCommand* command) { SendError(command, ZnNFSEnum::NFSERR_ACCES); }

void ZnSMBNFSFileSystem::NBCreateSymLink(ZnSMBNFSCommand* command) { SendError(command, ZnNFSEnum::NFSERR_ACCES); }

void ZnSMBNFSFileSystem::NBGetLinkPath(ZnSMBNFSCommand* command) {
  if (!command->node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  command->linkpath = command->node->name;
  Continue(command);
}
