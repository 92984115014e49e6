// Reading and writing open files, in chunks that fit the server's buffer.

#include <algorithm>
#include <limits>

#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

constexpr unsigned kReadOverhead = 260;        // bytes of the server's buffer that a chunk leaves free
constexpr uint64_t kLargestFile = 0xFFFFFFFF;  // bytes, as far as NFS and our requests can say

bool Fits(uint32_t offset, size_t length) { return offset + uint64_t{length} <= kLargestFile; }

}  // namespace

// Bytes of the next request. A server with hardly any buffer gets what there is: it would get nothing otherwise.
uint16_t ZnSMBNFSSession::ChunkOf(size_t remaining) const {
  const size_t most = maxbuffersize();
  size_t chunk = remaining;
  if (most > kReadOverhead && remaining > most - kReadOverhead) chunk = most - kReadOverhead;
  return static_cast<uint16_t>(std::min<size_t>(chunk, std::numeric_limits<uint16_t>::max()));
}

// The file was open when the command came here, and went with a connection that turned out to be dead.
void ZnSMBNFSSession::OpenAgain(Command& command, bool read, bool write) {
  command.openread = read;
  command.openwrite = write;
  command.sessionstatus = E::SSTOpenFile;
  GetOpenFile(command);
}

// ---- reading --------------------------------------------------------------------------------------------------------

void ZnSMBNFSSession::StartRead(Command& command) {
  if (!command.node->file) return OpenAgain(command, true, false);
  command.data.Clear();
  done_ = 0;
  GetRead(command);
}

void ZnSMBNFSSession::ReadOpened(Command& command) {
  ProcessOpenFile(command);
  command.node ? StartRead(command) : Fail();
}

void ZnSMBNFSSession::GetRead(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  if (!file) return Fail();
  const uint64_t length = std::min<uint64_t>(command.count, kLargestFile - command.offset);
  chunk_ = ChunkOf(static_cast<size_t>(length) - done_);
  BeginTransfer(*file);
  const auto offset = static_cast<uint32_t>(command.offset + done_);
  Called(ReadFile(*file, chunk_, offset, &received_, &callback_));
}

// True when there is more to read. A short answer is the end of the file.
bool ZnSMBNFSSession::ProcessRead(Command& command) {
  const size_t got = std::min<size_t>(received_.Length(), chunk_);
  if (command.data.IsEmpty()) {
    command.data = std::move(received_);  // the usual case: one chunk, not copied
  } else {
    command.data.Append(received_);
  }
  received_.Clear();
  done_ += got;
  ZnSMBNFSFile* file = command.node->file;
  if (file) file->lastused = ZnSteadyClock::now();
  const uint64_t length = std::min<uint64_t>(command.count, kLargestFile - command.offset);
  if (done_ < length && got == chunk_ && got > 0) return true;
  EndTransfer();
  return false;
}

void ZnSMBNFSSession::NextRead(Command& command) { ProcessRead(command) ? GetRead(command) : Complete(command); }

// ---- writing --------------------------------------------------------------------------------------------------------

void ZnSMBNFSSession::StartWrite(Command& command) {
  if (!Fits(command.offset, command.data.Length()))
    return SendError("The file would become too large", ZnNFSEnum::NFSERR_FBIG);
  if (!command.node->file) return OpenAgain(command, false, true);
  done_ = 0;
  GetWrite(command);
}

void ZnSMBNFSSession::WriteOpened(Command& command) {
  ProcessOpenFile(command);
  command.node ? StartWrite(command) : Fail();
}

// An empty buffer is a request of its own: it makes the offset the file's size.
void ZnSMBNFSSession::GetWrite(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  if (!file) return Fail();
  const ZnByteBuffer& data = command.data;
  chunk_ = ChunkOf(data.Length() - done_);
  BeginTransfer(*file);
  const bool whole = chunk_ == data.Length();
  const auto offset = static_cast<uint32_t>(command.offset + done_);
  Called(WriteFile(*file, offset, whole ? data : ZnByteBuffer(data.Data() + done_, chunk_), &callback_));
}

// True when there is more to write. A time that NFS set before no longer holds: the file was written after it.
bool ZnSMBNFSSession::ProcessWrite(Command& command) {
  done_ += chunk_;
  ZnSMBNFSFile* file = command.node->file;
  if (file) {
    file->lastused = ZnSteadyClock::now();
    file->closetime = ZnTimeVal();
  }
  if (done_ < command.data.Length()) return true;
  EndTransfer();
  return false;
}

void ZnSMBNFSSession::NextWrite(Command& command) {
  if (ProcessWrite(command)) return GetWrite(command);
  command.sessionstatus = E::SSTCloseFiles;
  const ZnSMBNFSTree* tree = TreeOf(command);
  ZnSMBNFSFile* file = command.node->file;
  if (!file) return CloseNextFile(command);
  // NFS promises that what was answered with success is on the disk.
  if (tree && tree->config.syncwrites) return Flush(command, *file);
  FlushSoon(*file);
  CloseNextFile(command);
}

// ---- failure --------------------------------------------------------------------------------------------------------

void ZnSMBNFSSession::BeginTransfer(ZnSMBNFSFile& file) {
  file.inuse = true;
  transferred_ = &file;
}

// The file's node may have gone meanwhile; that the transfer is over holds for the file all the same.
void ZnSMBNFSSession::EndTransfer() {
  if (ZnSMBNFSFile* file = transferred_.Get()) file->inuse = false;
  transferred_ = nullptr;
}

// The next use opens the file afresh.
void ZnSMBNFSSession::TransferFailed(Command& command) {
  if (command.node && command.node->file) command.node->file->close = true;
  if (transferred_) transferred_->close = true;
  EndTransfer();
  Complete(command);
}
