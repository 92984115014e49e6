#pragma once
// The files that a session holds open on its server. NFS has no open and close, so a file stays open between calls:
// until it hasn't been used for a while, its mode doesn't fit, too many are open, or something is to happen to it that
// needs it closed. All who want one file share one open.
//
// A file that is in use isn't closed: whoever reads, writes or sets something through its id holds a ZnFileUse, and a
// close waits for the last of them. What was written is flushed before it is closed. Failures of a close are told to
// the user and hold nobody up.
//
// Servers date what was written at the flush or, without one, at the close, and we close a file long after its last
// write. So what nobody flushes is flushed as soon as nothing was written for a while: what waits to be dated would
// undo a time that is set meanwhile.

#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "config/machine_config.h"
#include "model/command.h"
#include "model/open_file.h"
#include "runtime/timer.h"
#include "session/reports.h"
#include "session/wait_list.h"
#include "smb/client/client.h"

class ZnOpenFiles;

// Keeps an open file from being closed, for as long as it is held.
class ZnFileUse {
 public:
  ZnFileUse() = default;
  ZnFileUse(ZnFileUse&& other) noexcept { *this = std::move(other); }
  ZnFileUse& operator=(ZnFileUse&& other) noexcept;
  ~ZnFileUse() { End(); }

  void End();
  // Null when it went with its connection, or was never had.
  ZnSMBNFSFile* Get() const;
  ZnSMBNFSFile* operator->() const { return Get(); }
  explicit operator bool() const { return Get() != nullptr; }

 private:
  friend class ZnOpenFiles;
  ZnOpenFiles* files_ = nullptr;
  ZnWeakRef<ZnSMBNFSFile> file_;
};

class ZnOpenFiles {
 public:
  // All of these outlive it, and it outlives every ZnFileUse.
  ZnOpenFiles(ZnEventLoopBase* loop, ZnSmbClient& client, ZnWakeups& wakeups, const ZnSMBNFSMachineConfig& config,
              const ZnSessionReports& reports);
  ZnOpenFiles(const ZnOpenFiles&) = delete;
  ZnOpenFiles& operator=(const ZnOpenFiles&) = delete;
  ~ZnOpenFiles();  // DropAll

  // ---- opening. The command's openread and openwrite say what for; the node's share is connected.

  // Whether the command's node is open for that.
  static bool IsOpen(const ZnSMBNFSCommand& command);
  // Sees to it that it becomes so. Null: it is. Otherwise `done` is called when there is something new (ask again then)
  // or when the open has failed. A file that is open for less is opened again for both, and the command wants both from
  // then on: so a reader and a writer of one file don't keep closing it under each other. `freshopen` of the command is
  // set if it is the first to want it open. An open goes on when nobody waits for it any more.
  ZnWaitPlace Open(ZnSMBNFSCommand& command, ZnSmbCaller caller, ZnSmbDone done);
  // Uses the node's file; of nothing when it isn't open.
  ZnFileUse Use(const ZnSMBNFSNode& node);

  // ---- flushing

  // Something was written through it. A time that NFS has set before holds no longer.
  void Written(ZnSMBNFSFile& file);
  // Waits until the server has on its disk what was written before. Null: nothing is left to be flushed. All who ask in
  // one turn of the loop, or while a flush is under way, share one.
  ZnWaitPlace Flush(ZnSMBNFSFile& file, ZnSmbDone done);

  // ---- closing

  // Has everything closed that is open at or below a node, once it isn't used any more. Null: nothing is. Otherwise
  // `done` is called when there is less (ask again then).
  ZnWaitPlace Close(const ZnSMBNFSNode& top, ZnSmbDone done);
  // Has it closed when nobody uses it any more.
  void CloseAfterUse(ZnSMBNFSFile& file);
  // What has been idle for longer than its share allows, and what has lost its node.
  void CloseIdle();
  // Forgets all of them: their connection is gone. What the tree worked out for itself about them is out of date.
  void DropAll();

  size_t Count() const { return files_.size(); }

 private:
  friend class ZnFileUse;
  enum class Stage : uint8_t;
  struct File;
  using Files = std::list<File>;

  File* Find(const ZnSMBNFSNode& node) const;
  File& Begin(ZnSMBNFSCommand& command, ZnSmbCaller caller);
  void Opened(File& file, const ZnSmbOutcome& outcome);
  void MakeRoomFor(size_t more);
  void EndUse(ZnSMBNFSFile& file);
  void CloseIfUnused(File& file);
  void BeginClose(File& file);
  void Closed(File& file, const ZnSmbOutcome& outcome);
  void BeginFlush(File& file);
  void Flushed(File& file, const ZnSmbOutcome& outcome);
  void FlushDue(ZnEventCallback*, ZnEvent::cbdispatch);
  void FlushRested(ZnEventCallback*, ZnEvent::cbdispatch);
  void Forget(File& file);
  static void Detach(File& file);

  ZnEventLoopBase* loop_;
  ZnSmbClient& client_;
  ZnWakeups& wakeups_;
  const ZnSMBNFSMachineConfig& config_;
  const ZnSessionReports& reports_;
  Files files_;                                       // the one that was used longest ago first
  Files lost_;                                        // went with their connection; something of theirs is to end yet
  std::unordered_map<ZnSMBNFSHandle, File*> bynode_;  // of files_, by the handle of the node
  std::vector<ZnWeakRef<ZnSMBNFSFile>> due_;          // to be flushed when the loop's turn ends
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnOpenFiles> duecallback_{this, &ZnOpenFiles::FlushDue};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnOpenFiles> restedcallback_{this, &ZnOpenFiles::FlushRested};
  ZnTimer rested_{loop_, &restedcallback_};
};
