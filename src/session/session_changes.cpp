// Changes of names: which entry a command means by the time that it begins, directories that are made and removed, and
// the other ways to go when a server refuses one.

#include "session/session.h"

using E = ZnSMBNFSEnum;

void ZnSMBNFSSession::GetMkdir(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->PathInside() + command.name);
  Called(CreateDir(*command.fileobject, &callback_));
}

void ZnSMBNFSSession::GetRmdir(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->Path());
  Called(DeleteDir(*command.fileobject, &callback_));
}

// Commands that wait are overtaken: what one was to remove or rename may have another name by now, and something else
// may stand at its own.
void ZnSMBNFSSession::FindEntryAgain(Command& command) {
  const bool wanted = command.sessioncommand == E::SCRequestRm || command.sessioncommand == E::SCRequestRmdir ||
                      command.sessioncommand == E::SCRequestRename;
  ZnSMBNFSNode* directory = command.directory.Get();
  if (!wanted || !directory) return;
  const auto* child = directory->children.Find(command.entry);
  command.node = child ? child->node : directory;
  if (child) return;
  command.failure = ZnNFSEnum::NFSERR_NOENT;
  command.sessionstatus = E::SSTError;
}

// A step that the server refused, when something else is to be done than to fail, and what that is.
struct ZnSMBNFSSession::OtherWay {
  E::SessionStatus refused;
  bool (ZnSMBNFSSession::*applies)(const Command&) const;
  void (ZnSMBNFSSession::*action)(Command&);
};

const ZnSMBNFSSession::OtherWay ZnSMBNFSSession::kOtherWays[] = {
    {E::SSTGetAttribs, &ZnSMBNFSSession::EntryIsMissing, &ZnSMBNFSSession::Complete},
    {E::SSTRename, &ZnSMBNFSSession::MoveIsUnknown, &ZnSMBNFSSession::RenameInsteadOfMove},
    {E::SSTRename, &ZnSMBNFSSession::NameIsTaken, &ZnSMBNFSSession::MakeRoom},
    {E::SSTReplace, &ZnSMBNFSSession::CannotReplace, &ZnSMBNFSSession::RenameInsteadOfReplace},
    {E::SSTRenameAgain, &ZnSMBNFSSession::HasMadeRoom, &ZnSMBNFSSession::PutBack},
    {E::SSTRm, &ZnSMBNFSSession::IsReadOnly, &ZnSMBNFSSession::MakeWritable},
    {E::SSTRm, &ZnSMBNFSSession::WasMadeWritable, &ZnSMBNFSSession::ProtectAgain},
    {E::SSTRm, &ZnSMBNFSSession::RenameIsDone, &ZnSMBNFSSession::LeaveDoomed},
};

bool ZnSMBNFSSession::GoAnotherWay(Command& command) {
  for (const OtherWay& way : kOtherWays) {
    if (way.refused != command.sessionstatus || !command.node || !(this->*way.applies)(command)) continue;
    (this->*way.action)(command);
    return true;
  }
  return false;
}
