// What follows when a session has done its part: what the change did to the tree, what is out of date now, and the
// status of a failure.

#include "tree/file_system.h"

namespace {

using E = ZnSMBNFSEnum;
using FS = ZnSMBNFSFileSystem;

struct Completion {
  E::SessionCommand what;
  void (FS::*step)(ZnSMBNFSCommand*);
};

constexpr Completion kCompletions[] = {
    {E::SCRequestShares, &FS::CBUpdateShareList},
    {E::SCRequestDirs, &FS::CBUpdateDirList},
    {E::SCRequestAttribs, &FS::CBUpdateNode},
    {E::SCRequestMkdir, &FS::CBMakeDirectory},
    {E::SCRequestSetAllAttribs, &FS::CBSetAllAttributes},
    {E::SCRequestRmdir, &FS::CBRemoveDirectory},
    {E::SCRequestCreateFile, &FS::CBCreateFile},
    {E::SCRequestWrite, &FS::CBWriteToFile},
    {E::SCRequestRead, &FS::CBReadFromFile},
    {E::SCRequestRm, &FS::CBRemoveFile},
    {E::SCRequestSetAttribs, &FS::CBSetAttributes},
    {E::SCRequestSetTimes, &FS::CBSetTimes},
    {E::SCRequestRename, &FS::CBRename},
    {E::SCRequestSpace, &FS::CBStatFileSystem},
    {E::SCRequestEntry, &FS::CBFindEntry},
};

bool Failed(const ZnSMBNFSCommand* command) { return command->sessionstatus == E::SSTError; }

}  // namespace

void ZnSMBNFSFileSystem::CompleteRequest(ZnSMBNFSCommand* command) {
  command->change.End();
  for (const Completion& completion : kCompletions) {
    if (completion.what == command->sessioncommand) return (this->*completion.step)(command);
  }
}

void ZnSMBNFSFileSystem::Finish(ZnSMBNFSCommand* command) {
  if (!command->node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (!Failed(command)) return Continue(command);
  SendError(command, command->session ? command->session->ConvertError(*command) : ZnNFSEnum::NFSERR_ACCES);
}

// While a file stays open others may change it only as far as we let them: what is known of it stays good then.
bool ZnSMBNFSFileSystem::MayHaveChanged(const ZnSMBNFSCommand& command) const {
  return command.freshopen || !config_.optimisticnodeinvalidation;
}

void ZnSMBNFSFileSystem::CBReadFromFile(ZnSMBNFSCommand* command) {
  if (command->node && (Failed(command) || MayHaveChanged(*command))) OutOfDate(command->node.Get(), false);
  Finish(command);
}

void ZnSMBNFSFileSystem::CBWriteToFile(ZnSMBNFSCommand* command) {
  if (ZnSMBNFSNode* node = command->node.Get()) {
    if (!Failed(command)) ShowWrite(node, command->writeend, command->truncates);
    if (MayHaveChanged(*command) || !node->file) OutOfDate(node, false);
  }
  Finish(command);
}

// Whether another machine was quicker, or may have been, or we ourselves: nobody has heard of the end.
namespace {
bool MayBeThere(const ZnSMBNFSCommand& command) {
  return command.refusal == 0 || command.failure == ZnNFSEnum::NFSERR_EXIST;
}
}  // namespace

void ZnSMBNFSFileSystem::CBCreateFile(ZnSMBNFSCommand* command) {
  if (ZnSMBNFSNode* directory = command->node.Get()) {
    if (!Failed(command)) {
      ShowChange(directory);
    } else if (MayBeThere(*command)) {
      OutOfDate(directory, true);
    }
  }
  Finish(command);
}

void ZnSMBNFSFileSystem::CBMakeDirectory(ZnSMBNFSCommand* command) { CBCreateFile(command); }

// The command goes on at the directory. A failure may mean that another machine was quicker.
void ZnSMBNFSFileSystem::CBRemoveFile(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (node && Failed(command)) {
    OutOfDate(node->parent, true);
  } else if (node) {
    command->node = node->parent;
    TakeOut(node);
  }
  Finish(command);
}

void ZnSMBNFSFileSystem::CBRemoveDirectory(ZnSMBNFSCommand* command) { CBRemoveFile(command); }

void ZnSMBNFSFileSystem::CBRename(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSNode* directory = command->node2.Get();
  if (node && Failed(command)) OutOfDate(node->parent, true);
  if (directory && (Failed(command) || command->replacedunknown)) OutOfDate(directory, true);
  if (node && directory && !Failed(command)) Move(node, directory, command->name);
  Finish(command);
}

// Older servers round times.
void ZnSMBNFSFileSystem::CBSetAttributes(ZnSMBNFSCommand* command) {
  if (ZnSMBNFSNode* node = command->node.Get()) {
    if (Failed(command) || SetsOldWay(node)) {
      OutOfDate(node, false);
    } else {
      ShowSet(node, command->sattr);
    }
  }
  Finish(command);
}

void ZnSMBNFSFileSystem::CBSetAllAttributes(ZnSMBNFSCommand* command) { CBSetAttributes(command); }

void ZnSMBNFSFileSystem::CBSetTimes(ZnSMBNFSCommand* command) { CBSetAttributes(command); }
