// Making, removing and renaming.

#include "model/name_mapping.h"
#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

// How servers say that they don't know the move command, as code times 256 plus class.
constexpr unsigned kUnknownMove[] = {22 * 256 + 2, 64 * 256 + 2, 1 * 256 + 1, 50 * 256 + 1};

bool StaysInDirectory(const ZnSMBNFSCommand& command) { return command.node->parent == command.node2.Get(); }

}  // namespace

void ZnSMBNFSSession::GetMkdir(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->PathInside() + command.name);
  Called(CreateDir(*command.fileobject, &callback_));
}

void ZnSMBNFSSession::GetRmdir(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->path + command.node->name);
  Called(DeleteDir(*command.fileobject, &callback_));
}

void ZnSMBNFSSession::GetRm(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->path + command.node->name);
  Called(DeleteFile(*command.fileobject, &callback_));
}

void ZnSMBNFSSession::GetRename(Command& command) {
  const ZnSMBNFSNode* target = command.node2.Get();
  const ZnSMBNFSTree* from = TreeOf(command);
  const ZnSMBNFSTree* to = TreeOf(target);
  if (!from || !to) return Fail();
  command.fileobject = FileObject(*from, command.node->path + command.node->name);
  command.fileobject->attribs = command.node->fileobject.attribs;
  command.fileobject2 = FileObject(*to, target->PathInside() + command.name);
  MoveOrRename(command);
}

void ZnSMBNFSSession::MoveOrRename(Command& command) {
  const bool onetree = command.fileobject->tid == command.fileobject2->tid;
  if (StaysInDirectory(command) || (nomovecommand_ && onetree)) return Rename(command);
  Called(MoveFile(*command.fileobject, *command.fileobject2, &callback_));
}

void ZnSMBNFSSession::Rename(Command& command) {
  Called(RenameFile(*command.fileobject, command.fileobject2->path, &callback_));
}

// Whether a move has just failed because the server doesn't know it, and a rename from path to path can stand in.
bool ZnSMBNFSSession::MoveIsUnknown(const Command& command) const {
  if (command.sessioncommand != E::SCRequestRename || command.sessionstatus != E::SSTRename) return false;
  if (nomovecommand_ || !command.node || !command.node2 || StaysInDirectory(command)) return false;
  if (command.fileobject->tid != command.fileobject2->tid) return false;
  return std::find(std::begin(kUnknownMove), std::end(kUnknownMove), command.refusal) != std::end(kUnknownMove);
}
