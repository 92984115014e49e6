// Files that were written and aren't on the server's disk yet, on shares that don't flush every write.
//
// Servers date what was written at the flush or, without one, at the close, and we close a file long after its last
// write. So it is flushed as soon as nothing was written for a while, and at the latest before it is closed or
// something else of it is set: what waits to be dated would undo that.

#include <algorithm>

#include "session/session.h"

namespace {

constexpr std::chrono::milliseconds kRest{500};

bool HasRested(const ZnSMBNFSFile& file) { return ZnSteadyClock::now() >= file.lastused + kRest; }

}  // namespace

void ZnSMBNFSSession::FlushSoon(ZnSMBNFSFile& file) {
  file.unflushed = true;
  if (!flushtimer_.IsSet()) flushtimer_.Set(kRest);
}

void ZnSMBNFSSession::FlushTimeout(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch) {
  const auto unflushed = [](auto& file) { return file->unflushed; };
  if (std::none_of(files.begin(), files.end(), unflushed)) return;
  flushtimer_.Set(kRest);
  if (std::any_of(files.begin(), files.end(), [&](auto& file) { return unflushed(file) && HasRested(*file); })) {
    QueueCleanUp();
  }
}

// What is to be removed goes unflushed.
ZnSMBNFSFile* ZnSMBNFSSession::NextToFlush(const Command& command) const {
  const bool cleaning = command.sessioncommand == ZnSMBNFSEnum::SCCleanUp;
  const bool removing = command.sessioncommand == ZnSMBNFSEnum::SCRequestRm;
  const auto found = std::find_if(files.begin(), files.end(), [&](auto& file) {
    if (removing && file->node.Get() == command.node.Get()) return false;
    return file->unflushed && !file->inuse && (file->close || (cleaning && HasRested(*file)));
  });
  return found == files.end() ? nullptr : found->get();
}

void ZnSMBNFSSession::Flush(Command& command, ZnSMBNFSFile& file) {
  file.unflushed = false;
  command.fileobject = std::make_unique<ZnSMBCFileObject>(file);
  Called(FlushFile(file, &callback_));
}

void ZnSMBNFSSession::FlushFirst(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  file && file->unflushed ? Flush(command, *file) : Advance();
}
