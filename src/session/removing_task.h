#pragma once
// What the tasks share that remove a file, be it all that they are for, be it what a rename has replaced. Whether that
// is allowed is for the directory's permissions to say, as on this host: a file that is read-only for its server is
// made writable first.

#include "session/file_turns.h"
#include "session/task.h"

class ZnRemovingTask : public ZnSessionTask {
 protected:
  using ZnSessionTask::ZnSessionTask;

  // The file to be removed. `node` tells its attributes; null where nothing is known of them.
  void Doom(const ZnSMBCFileObject& file, const ZnSMBNFSNode* node);
  void Spare();
  const std::optional<ZnSMBCFileObject>& Doomed() const { return doomed_; }

  // The actions. There may be nothing to remove.
  void RemoveDoomed();
  void MakeWritable();
  void ProtectAgain();
  // Of a refused removal: ReadOnly, StaysReadOnly (which the user has been told), or null.
  std::optional<ZnTaskEvent> EventOfRemoval(const ZnSmbOutcome& refusal);

 private:
  std::optional<ZnSMBCFileObject> doomed_;
  bool madewritable_ = false;
};
