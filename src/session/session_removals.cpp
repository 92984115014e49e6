// Removing files. Whether that is allowed is for the directory's permissions to say, as on this host: a file that is
// read-only for its server is made writable first.

#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

constexpr unsigned kDenied = 5 * 256 + 1;

}  // namespace

void ZnSMBNFSSession::GetRm(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->Path());
  Doom(*command.fileobject, command.node.Get());
  RemoveDoomed(command);
}

// `node` tells the attributes; null where nothing is known of them.
void ZnSMBNFSSession::Doom(const ZnSMBCFileObject& file, const ZnSMBNFSNode* node) {
  doomed_ = file;
  doomed_->attribs = node ? node->fileobject.attribs : ZnSMBCFileAttributes();
  madewritable_ = false;
}

void ZnSMBNFSSession::RemoveDoomed(Command& command) {
  if (!doomed_) return Complete(command);
  Called(DeleteFile(*doomed_, &callback_));
}

bool ZnSMBNFSSession::IsReadOnly(const Command& command) const {
  return command.refusal == kDenied && doomed_ && doomed_->attribs.read_only && !madewritable_;
}

void ZnSMBNFSSession::MakeWritable(Command& command) {
  madewritable_ = true;
  command.sessionstatus = E::SSTMakeWritable;
  ZnSMBCFileObject writable = *doomed_;
  writable.attribs.read_only = false;
  Called(SetAttributes(writable, &callback_));
}

bool ZnSMBNFSSession::WasMadeWritable(const Command&) const { return madewritable_; }

void ZnSMBNFSSession::ProtectAgain(Command& command) {
  Report(FailureText());
  madewritable_ = false;
  command.sessionstatus = E::SSTProtectAgain;
  Called(SetAttributes(*doomed_, &callback_));
}
