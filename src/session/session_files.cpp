// The files that are open on the server. NFS has no open and close, so a file stays open between calls: until it hasn't
// been used for a while, its mode doesn't fit, too many are open, or something is to happen to it that needs it closed.

#include <algorithm>

#include "model/entries.h"
#include "model/name_mapping.h"
#include "model/told_attributes.h"
#include "session/session.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

// How a file is opened for what a command wants, and what others may do with it meanwhile.
struct Mode {
  Values::Access access;
  Values::Sharing sharing;
};

Mode ModeOf(const ZnSMBNFSCommand& command) {
  if (!command.openwrite) return {Values::AccessRead, Values::DenyNone};
  return {command.openread ? Values::AccessReadWrite : Values::AccessWrite, Values::DenyWrite};
}

bool Covers(const ZnSMBNFSFile& file, const ZnSMBNFSCommand& command) {
  return (file.readable || !command.openread) && (file.writable || !command.openwrite);
}

}  // namespace

std::unique_ptr<ZnSMBCFileObject> ZnSMBNFSSession::FileObject(const ZnSMBNFSTree& tree, const ZnUniString& path) {
  auto object = std::make_unique<ZnSMBCFileObject>(tree, InternalToWindowsPath(path, tree.config));
  object->created = object->accessed = object->modified = ZnTimeVal();
  return object;
}

// ---- opening --------------------------------------------------------------------------------------------------------

// A file that is open for less than the command wants is opened again for both, so that a reader and a writer of one
// file don't keep closing it under each other.
void ZnSMBNFSSession::SetOpenMode(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  const bool usable = file && !file->close && Covers(*file, command);
  if (file && !usable) {
    file->close = true;
    command.openread |= file->readable;
    command.openwrite |= file->writable;
  }
  const auto most = static_cast<size_t>(std::max(config.maxopenfiles, 1));
  if (!file && files.size() >= most) files.front()->close = true;
  CloseNextFile(command);
}

void ZnSMBNFSSession::GetOpenFile(Command& command) {
  if (ZnSMBNFSFile* file = command.node->file) {
    file->lastused = ZnSteadyClock::now();
    file->fresh = command.freshopen = false;
    return Advance();
  }
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  const Mode mode = ModeOf(command);
  command.fileobject = FileObject(*tree, command.node->Path());
  command.fileobject->access = mode.access;
  Called(OpenFile(command.fileobject.get(), mode.sharing, false, Values::OFOpen, &callback_));
}

// The node may have gone while the open was under way; the file is open on the server nevertheless.
void ZnSMBNFSSession::ProcessOpenFile(Command& command) {
  ZnSMBNFSNode* node = command.node.Get();
  if (node && node->file) return;
  ZnSMBNFSFile& file = AddFile(*command.fileobject);
  file.readable = command.openread;
  file.writable = command.openwrite;
  file.fresh = command.freshopen = true;
  file.close = !node;
  file.node = node;
  if (node) node->file = &file;
}

void ZnSMBNFSSession::OpenDone(Command& command) {
  ProcessOpenFile(command);
  command.node ? Complete(command) : Fail();
}

ZnSMBNFSFile& ZnSMBNFSSession::AddFile(const ZnSMBCFileObject& opened) {
  auto file = std::make_unique<ZnSMBNFSFile>();
  static_cast<ZnSMBCFileObject&>(*file) = opened;
  file->lastused = ZnSteadyClock::now();
  files.push_back(std::move(file));
  return *files.back();
}

// ---- creating -------------------------------------------------------------------------------------------------------

void ZnSMBNFSSession::GetCreateFile(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->PathInside() + command.name);
  command.fileobject->attribs = AttribsToSet(command, *tree, ZnSMBCFileAttributes());
  command.fileobject->modified = ServerLocal(ZnToldModification(command.sattr).value_or(ZnTimeVal()));
  command.fileobject->access = Values::AccessWrite;
  const auto existing = command.exclusive ? Values::OFFail : Values::OFOpen;
  Called(OpenFile(command.fileobject.get(), Values::DenyWrite, true, existing, &callback_));
}

// A created file isn't left open: its node isn't known yet. Servers ignore the time in the request that creates it, so
// the close carries it again.
void ZnSMBNFSSession::ProcessCreateFile(Command& command) {
  ZnSMBNFSFile& file = AddFile(*command.fileobject);
  file.writable = true;
  file.close = true;
  file.closetime = ServerLocal(ZnToldModification(command.sattr).value_or(ZnTimeVal()));
  CloseNextFile(command);
}

// ---- closing --------------------------------------------------------------------------------------------------------

// What is to be renamed, removed or replaced mustn't be open, nor anything below it. It is opened again, by its new
// path, when it is used next.
void ZnSMBNFSSession::CloseEntry(Command& command) {
  const ZnSMBNFSNode* target = RenameTarget(command);
  for (auto& file : files) {
    const ZnSMBNFSNode* node = file->node.Get();
    if (ZnIsAtOrBelow(node, command.node.Get()) || (target && ZnIsAtOrBelow(node, target))) file->close = true;
  }
  CloseNextFile(command);
}

// A close carries a modification time only if NFS has told us one: our own idea of "now" would make the file older than
// what another machine wrote in between, and servers take the time from every close, even of a file that was only read.
void ZnSMBNFSSession::CloseNextFile(Command& command) {
  if (ZnSMBNFSFile* file = NextToFlush(command)) return Flush(command, *file);
  auto position = std::find_if(files.begin(), files.end(), [](auto& file) { return file->close && !file->inuse; });
  if (position == files.end()) {
    command.sessionstatus = E::SSTClosedAllFiles;
    return Advance();
  }
  const auto file = TakeFile(position->get());
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*file);
  const Result result = CloseFile(command.fileobject.get(), file->closetime, &callback_);
  if (result != ResultFailure || ConversationIsOver()) return Called(result);
  Report(FailureText());
  Advance();
}

std::unique_ptr<ZnSMBNFSFile> ZnSMBNFSSession::TakeFile(const ZnSMBNFSFile* wanted) {
  auto position = std::find_if(files.begin(), files.end(), [wanted](auto& file) { return file.get() == wanted; });
  auto file = std::move(*position);
  files.erase(position);
  if (file->node && file->node->file == file.get()) file->node->file = nullptr;
  return file;
}

// Forgets all files without closing them: their connection is gone. What the tree worked out for itself about them is
// asked for again.
void ZnSMBNFSSession::DropFiles() {
  while (!files.empty()) {
    const auto file = TakeFile(files.front().get());
    if (file->node) OutOfDate(file->node.Get(), false);
  }
}
