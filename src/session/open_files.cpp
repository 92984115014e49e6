#include "session/open_files.h"

#include <algorithm>

#include "model/entries.h"
#include "session/share_paths.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

constexpr std::chrono::milliseconds kRest{500};

}  // namespace

enum class ZnOpenFiles::Stage : uint8_t { Opening, Open, Closing, Lost };

struct ZnOpenFiles::File : ZnSMBNFSFile {
  explicit File(ZnWakeups& wakeups)
      : sharers(wakeups), onlookers(wakeups), flushes{ZnWaitList(wakeups), ZnWaitList(wakeups)} {}

  bool IsOpenNow() const { return stage == Stage::Open; }
  ZnWaitList& FlushUnderWay() { return flushes[turn]; }
  ZnWaitList& NextFlush() { return flushes[1 - turn]; }

  ZnSMBNFSHandle handle;  // of its node
  Files::iterator position;
  Stage stage = Stage::Opening;
  ZnSmbCaller caller = 0;  // who opened it
  unsigned users = 0;
  ZnSmbCall call;         // the open or close under way
  ZnSmbCall flush;        // under way
  ZnWaitList sharers;     // wait for just this open, and fail with it
  ZnWaitList onlookers;   // want to know when it has been opened, or is closed
  ZnWaitList flushes[2];  // those who wait for the flush under way, and for the next
  unsigned turn = 0;      // which is which
};

// ---- use ------------------------------------------------------------------------------------------------------------

ZnFileUse& ZnFileUse::operator=(ZnFileUse&& other) noexcept {
  End();
  files_ = other.files_;
  file_ = std::exchange(other.file_, {});
  return *this;
}

void ZnFileUse::End() {
  ZnSMBNFSFile* file = file_.Get();
  file_ = nullptr;
  if (file) files_->EndUse(*file);
}

ZnSMBNFSFile* ZnFileUse::Get() const { return file_ && file_->isopen ? file_.Get() : nullptr; }

ZnFileUse ZnOpenFiles::Use(const ZnSMBNFSNode& node) {
  ZnFileUse use;
  File* file = static_cast<File*>(node.file);
  if (!file) return use;
  file->users++;
  file->lastused = ZnSteadyClock::now();
  files_.splice(files_.end(), files_, file->position);
  use.files_ = this;
  use.file_ = file;
  return use;
}

void ZnOpenFiles::EndUse(ZnSMBNFSFile& used) {
  auto& file = static_cast<File&>(used);
  file.lastused = ZnSteadyClock::now();
  if (--file.users > 0) return;
  CloseIfUnused(file);
  MakeRoomFor(0);
}

// ---- opening --------------------------------------------------------------------------------------------------------

ZnOpenFiles::ZnOpenFiles(ZnEventLoopBase* loop, ZnSmbClient& client, ZnWakeups& wakeups,
                         const ZnSMBNFSMachineConfig& config, const ZnSessionReports& reports)
    : loop_(loop), client_(client), wakeups_(wakeups), config_(config), reports_(reports) {}

ZnOpenFiles::~ZnOpenFiles() {
  DropAll();
  loop_->CancelTurnEnd(&duecallback_);
}

ZnOpenFiles::File* ZnOpenFiles::Find(const ZnSMBNFSNode& node) const {
  if (node.file) return static_cast<File*>(node.file);
  const auto found = bynode_.find(node.handle);
  return found == bynode_.end() ? nullptr : found->second;
}

bool ZnOpenFiles::IsOpen(const ZnSMBNFSCommand& command) {
  const ZnSMBNFSFile* file = command.node->file;
  return file && !file->close && (file->readable || !command.openread) && (file->writable || !command.openwrite);
}

ZnWaitPlace ZnOpenFiles::Open(ZnSMBNFSCommand& command, ZnSmbCaller caller, ZnSmbDone done) {
  if (IsOpen(command)) return nullptr;
  File* file = Find(*command.node.Get());
  if (!file) {
    command.freshopen = true;
    return Begin(command, caller).sharers.Enter(std::move(done));
  }
  if (file->IsOpenNow() && !file->close) {
    command.openread |= file->readable;
    command.openwrite |= file->writable;
    CloseAfterUse(*file);
  }
  const bool shares =
      file->stage == Stage::Opening && file->readable == command.openread && file->writable == command.openwrite;
  return (shares ? file->sharers : file->onlookers).Enter(std::move(done));
}

// What others may do with it meanwhile: whoever reads lets them, whoever writes doesn't let them write.
ZnOpenFiles::File& ZnOpenFiles::Begin(ZnSMBNFSCommand& command, ZnSmbCaller caller) {
  MakeRoomFor(1);
  ZnSMBNFSNode& node = *command.node.Get();
  File& file = files_.emplace_back(wakeups_);
  static_cast<ZnSMBCFileObject&>(file) = *ZnFileAt(*ZnTreeOf(&node), node.Path());
  file.position = std::prev(files_.end());
  file.node = &node;
  file.handle = node.handle;
  file.caller = caller;
  file.lastused = ZnSteadyClock::now();
  file.writable = command.openwrite;
  file.readable = command.openread = command.openread || !command.openwrite;
  bynode_[node.handle] = &file;

  ZnSmbOpenMode mode;
  if (file.writable) mode.access = file.readable ? Values::AccessReadWrite : Values::AccessWrite;
  if (file.writable) mode.sharing = Values::DenyWrite;
  file.call = client_.Open(caller, &file, mode, [this, &file](const ZnSmbOutcome& outcome) { Opened(file, outcome); });
  return file;
}

// The node may have gone while the open was under way; the file is open on the server nevertheless.
void ZnOpenFiles::Opened(File& file, const ZnSmbOutcome& told) {
  const ZnSmbOutcome outcome = told;  // may go with the call
  file.call.reset();
  file.sharers.WakeAll(outcome);
  if (!outcome.Ok() || file.stage == Stage::Lost) return Forget(file);
  file.stage = Stage::Open;
  file.lastused = ZnSteadyClock::now();
  file.onlookers.WakeAll();
  if (ZnSMBNFSNode* node = file.node.Get()) {
    node->file = &file;
  } else {
    file.close = true;
  }
  CloseIfUnused(file);
}

// The one that nobody has used for longest makes way. While all are in use there may be more than are wanted. Requests
// of one connection take effect in the order in which they were sent, so there is no need to wait for the close.
void ZnOpenFiles::MakeRoomFor(size_t more) {
  const auto most = static_cast<size_t>(std::max(config_.maxopenfiles, 1));
  if (files_.size() + more <= most) return;
  const auto stays = [](const File& file) { return !file.close; };
  const auto idle = [](const File& file) { return file.IsOpenNow() && !file.close && file.users == 0; };
  if (static_cast<size_t>(std::count_if(files_.begin(), files_.end(), stays)) + more <= most) return;
  const auto oldest = std::find_if(files_.begin(), files_.end(), idle);
  if (oldest != files_.end()) CloseAfterUse(*oldest);
}

// ---- flushing -------------------------------------------------------------------------------------------------------

void ZnOpenFiles::Written(ZnSMBNFSFile& file) {
  file.lastused = file.lastwritten = ZnSteadyClock::now();
  file.closetime = ZnTimeVal();
  file.written = file.unflushed = true;
  if (!rested_.IsSet()) rested_.Set(kRest);
}

ZnWaitPlace ZnOpenFiles::Flush(ZnSMBNFSFile& asked, ZnSmbDone done) {
  auto& file = static_cast<File&>(asked);
  if (!file.unflushed) return file.flush ? file.FlushUnderWay().Enter(std::move(done)) : nullptr;
  if (!file.flush) {
    due_.emplace_back(&asked);
    loop_->AtTurnEnd(&duecallback_);
  }
  return file.NextFlush().Enter(std::move(done));
}

void ZnOpenFiles::FlushDue(ZnEventCallback*, ZnEvent::cbdispatch) {
  for (const auto& due : std::exchange(due_, {})) {
    if (auto* file = static_cast<File*>(due.Get())) BeginFlush(*file);
  }
}

void ZnOpenFiles::BeginFlush(File& file) {
  const bool wanted = file.unflushed || !file.NextFlush().IsEmpty();
  if (!wanted || !file.IsOpenNow() || file.flush) return;
  file.unflushed = false;
  file.turn = 1 - file.turn;
  file.flush = client_.Flush(file.caller, file, [this, &file](const ZnSmbOutcome& outcome) { Flushed(file, outcome); });
}

// What couldn't be flushed is opened afresh for its next use.
void ZnOpenFiles::Flushed(File& file, const ZnSmbOutcome& told) {
  const ZnSmbOutcome outcome = told;  // may go with the call
  file.flush.reset();
  if (!outcome.Ok()) {
    file.close = true;
    if (file.FlushUnderWay().IsEmpty()) reports_.Tell(file, E::SSTFlush, reports_.TextOf(outcome));
  }
  file.FlushUnderWay().WakeAll(outcome);
  if (file.stage == Stage::Lost) return Forget(file);
  if (!file.NextFlush().IsEmpty()) BeginFlush(file);
  CloseIfUnused(file);
}

void ZnOpenFiles::FlushRested(ZnEventCallback*, ZnEvent::cbdispatch) {
  const ZnMoment now = ZnSteadyClock::now();
  bool more = false;
  for (File& file : files_) {
    if (file.unflushed && now >= file.lastwritten + kRest) BeginFlush(file);
    more |= file.unflushed;
  }
  if (more) rested_.Set(kRest);
}

// ---- closing --------------------------------------------------------------------------------------------------------

ZnWaitPlace ZnOpenFiles::Close(const ZnSMBNFSNode& top, ZnSmbDone done) {
  File* found = nullptr;
  if (!top.IsDirectory()) {
    found = Find(top);
    if (found) CloseAfterUse(*found);
  } else {
    for (File& file : files_) {
      if (!ZnIsAtOrBelow(file.node.Get(), &top)) continue;
      CloseAfterUse(file);
      found = &file;
    }
  }
  return found ? found->onlookers.Enter(std::move(done)) : nullptr;
}

void ZnOpenFiles::CloseAfterUse(ZnSMBNFSFile& file) {
  file.close = true;
  CloseIfUnused(static_cast<File&>(file));
}

void ZnOpenFiles::CloseIfUnused(File& file) {
  if (!file.IsOpenNow() || !file.close || file.users > 0) return;
  BeginFlush(file);
  if (!file.flush) BeginClose(file);
}

// A close carries a modification time only if NFS has told us one: our own idea of "now" would make the file older than
// what another machine wrote in between, and servers take the time from every close, even of a file that was only read.
void ZnOpenFiles::BeginClose(File& file) {
  Detach(file);
  file.stage = Stage::Closing;
  file.call = client_.Close(file.caller, file, file.closetime,
                            [this, &file](const ZnSmbOutcome& outcome) { Closed(file, outcome); });
}

void ZnOpenFiles::Closed(File& file, const ZnSmbOutcome& outcome) {
  if (!outcome.Ok() && file.stage != Stage::Lost) reports_.Tell(file, E::SSTCloseFiles, reports_.TextOf(outcome));
  Forget(file);
}

void ZnOpenFiles::CloseIdle() {
  const ZnMoment now = ZnSteadyClock::now();
  for (File& file : files_) {
    const ZnSMBNFSTree* tree = ZnTreeOf(file.node.Get());
    const std::chrono::seconds longest(tree ? std::max(tree->config.openfilettl, 0) : 0);
    if (!tree || (file.users == 0 && now > file.lastused + longest)) CloseAfterUse(file);
  }
}

// ---- the end --------------------------------------------------------------------------------------------------------

void ZnOpenFiles::Detach(File& file) {
  if (file.node && file.node->file == &file) file.node->file = nullptr;
}

// It is on the server no more, or never was.
void ZnOpenFiles::Forget(File& file) {
  ZnSmbOutcome gone;
  gone.reason = Values::ErrDisconnect;
  gone.unserved = true;
  file.NextFlush().WakeAll(gone);
  file.onlookers.WakeAll();
  if (file.stage == Stage::Lost) return static_cast<void>(lost_.erase(file.position));
  bynode_.erase(file.handle);
  files_.erase(file.position);
}

// What is under way ends by itself, and with it whoever waits for it.
void ZnOpenFiles::DropAll() {
  bynode_.clear();
  for (auto each = files_.begin(); each != files_.end();) {
    File& file = *each++;
    if (file.node && file.IsOpenNow()) OutOfDate(file.node.Get(), false);
    Detach(file);
    file.stage = Stage::Lost;
    file.isopen = false;
    lost_.splice(lost_.end(), files_, file.position);
    if (!file.call && !file.flush) Forget(file);
  }
}
