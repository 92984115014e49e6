// Renaming, also over what is there. Nothing is lost on the way: the server replaces the file in one request where it
// can; else what is in the way goes aside under another name, and only when the new file stands in its place is it
// removed.

#include <algorithm>

#include "model/entries.h"
#include "model/name_mapping.h"
#include "runtime/random.h"
#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

// What servers say, as code times 256 plus class: that they don't know the move command, or the level of information
// that replaces; and that a name is taken.
constexpr unsigned kUnknownMove[] = {22 * 256 + 2, 64 * 256 + 2, 1 * 256 + 1, 50 * 256 + 1};
constexpr unsigned kUnknownLevel[] = {124 * 256 + 1, 50 * 256 + 1, 87 * 256 + 1, 1 * 256 + 1, 22 * 256 + 2};
constexpr unsigned kTaken[] = {80 * 256 + 1, 183 * 256 + 1};
constexpr unsigned kDenied = 5 * 256 + 1;

template <size_t N>
bool IsOneOf(const unsigned (&refusals)[N], unsigned refusal) {
  return std::find(std::begin(refusals), std::end(refusals), refusal) != std::end(refusals);
}

bool StaysInDirectory(const ZnSMBNFSCommand& command) { return command.node->parent == command.node2.Get(); }

// A name that any server takes and nobody uses.
ZnUniString NameAside() {
  ZnUniString name = "~h";
  for (uint32_t random = ZnRandom::RndNum(), digits = 6; digits > 0; digits--, random >>= 4)
    name.Append(u"0123456789ABCDEF"[random % 16]);
  return name + ".TMP";
}

}  // namespace

ZnSMBNFSNode* ZnSMBNFSSession::RenameTarget(const Command& command) {
  const ZnSMBNFSNode* directory = command.node2.Get();
  const ZnSMBNFSTree* tree = TreeOf(directory);
  if (command.sessioncommand != E::SCRequestRename || !tree) return nullptr;
  ZnSMBNFSNode* found = ZnEntryShownAs(*directory, command.name, tree->config.linkstring);
  return found == command.node.Get() ? nullptr : found;
}

void ZnSMBNFSSession::GetRename(Command& command) {
  const ZnSMBNFSNode* directory = command.node2.Get();
  const ZnSMBNFSTree* from = TreeOf(command);
  const ZnSMBNFSTree* to = TreeOf(directory);
  if (!from || !to) return Fail();
  command.fileobject = FileObject(*from, command.node->Path());
  command.fileobject->attribs = command.node->fileobject.attribs;
  const ZnSMBNFSNode* target = RenameTarget(command);
  const bool taken = target && target->name == command.name;
  command.fileobject2 = FileObject(*to, taken ? target->Path() : directory->PathInside() + command.name);
  doomed_.reset();
  madewritable_ = replacetried_ = false;
  // A link and a file that clients see under one name have two on the share.
  if (target && !taken) Doom(*FileObject(*to, target->Path()), target);
  taken&& MayReplace(command) ? Replace(command) : MoveOrRename(command);
}

// Directories are left to those ways in which the server looks whether they are empty.
bool ZnSMBNFSSession::MayReplace(const Command& command) const {
  return CanReplace() && !noreplace_ && !replacetried_ && StaysInDirectory(command) && !command.node->IsDirectory();
}

void ZnSMBNFSSession::Replace(Command& command) {
  replacetried_ = true;
  command.sessionstatus = E::SSTReplace;
  const ZnUniString& path = command.fileobject2->path;
  Called(ReplaceFile(*command.fileobject, path.SubString(path.SearchReverse(u'\\') + 1), &callback_));
}

void ZnSMBNFSSession::MoveOrRename(Command& command) {
  const bool onetree = command.fileobject->tid == command.fileobject2->tid;
  if (StaysInDirectory(command) || (nomovecommand_ && onetree)) return Rename(command);
  Called(MoveFile(*command.fileobject, *command.fileobject2, &callback_));
}

void ZnSMBNFSSession::Rename(Command& command) {
  Called(RenameFile(*command.fileobject, command.fileobject2->path, &callback_));
}

// ---- other ways, when the server refuses
// -----------------------------------------------------------------------------

// Whether a rename from path to path can stand in for a move that the server doesn't know.
bool ZnSMBNFSSession::MoveIsUnknown(const Command& command) const {
  if (nomovecommand_ || !command.node || !command.node2 || StaysInDirectory(command)) return false;
  return command.fileobject->tid == command.fileobject2->tid && IsOneOf(kUnknownMove, command.refusal);
}

void ZnSMBNFSSession::RenameInsteadOfMove(Command& command) {
  nomovecommand_ = true;
  Rename(command);
}

// Some servers don't replace what is read-only.
bool ZnSMBNFSSession::CannotReplace(const Command& command) const {
  return command.refusal == kDenied || IsOneOf(kUnknownLevel, command.refusal);
}

void ZnSMBNFSSession::RenameInsteadOfReplace(Command& command) {
  if (command.refusal != kDenied) noreplace_ = true;
  command.sessionstatus = E::SSTRename;
  Rename(command);
}

// The entry itself in another case of its name is no other that could make room.
bool ZnSMBNFSSession::NameIsTaken(const Command& command) const {
  if (!IsOneOf(kTaken, command.refusal) || !command.node || !command.node2) return false;
  return ZnEntryOfAnyCase(*command.node2.Get(), command.name) != command.node.Get();
}

// What the tree doesn't know isn't touched, unless the server can replace it by itself.
void ZnSMBNFSSession::MakeRoom(Command& command) {
  const ZnSMBNFSNode* taken = ZnEntryOfAnyCase(*command.node2.Get(), command.name);
  command.replacedunknown = !taken;
  if (taken && taken->name != command.name) {
    // Whose case it will be after that is the server's choice, but for this one.
    command.name = taken->name;
    command.fileobject2 = FileObject(*TreeOf(taken), taken->Path());
  }
  if (MayReplace(command)) return Replace(command);
  if (!taken || taken->IsDirectory() != command.node->IsDirectory()) return SendError(FailureText(), command.failure);
  command.sessionstatus = E::SSTMakeRoom;
  if (taken->IsDirectory()) return Called(DeleteDir(*command.fileobject2, &callback_));
  ZnSMBCFileObject aside = *command.fileobject2;
  aside.path = aside.path.SubString(0, aside.path.SearchReverse(u'\\') + 1) + NameAside();
  Doom(aside, taken);
  command.fileobject2->attribs = doomed_->attribs;
  Called(RenameFile(*command.fileobject2, aside.path, &callback_));
}

bool ZnSMBNFSSession::HasMadeRoom(const Command&) const { return true; }

void ZnSMBNFSSession::PutBack(Command& command) {
  Report(FailureText());
  command.sessionstatus = E::SSTPutBack;
  if (command.node->IsDirectory()) return Called(CreateDir(*command.fileobject2, &callback_));
  Called(RenameFile(*doomed_, command.fileobject2->path, &callback_));
}

bool ZnSMBNFSSession::RenameIsDone(const Command& command) const {
  return command.sessioncommand == E::SCRequestRename;
}

// The rename itself has succeeded.
void ZnSMBNFSSession::LeaveDoomed(Command& command) {
  Report(FailureText() + WhereItIs(command));
  Complete(command);
}

// For the user: what has become of the file that was in the way.
ZnUniString ZnSMBNFSSession::WhereItIs(const Command& command) const {
  if (command.sessioncommand != E::SCRequestRename || !doomed_) return "";
  const ZnUniString place = doomed_->share + doomed_->path;
  switch (command.sessionstatus) {
    case E::SSTMakeRoom:
      return command.refusal != 0 ? "" : " What has that name may now be " + place + ".";
    case E::SSTRenameAgain:
    case E::SSTPutBack:
    case E::SSTRm:
      return " What had that name before is now " + place + ".";
    default:
      return "";
  }
}
