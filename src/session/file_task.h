#pragma once
// A task about one file: it takes its turn at the file, and has it opened where it needs that.

#include "session/file_turns.h"
#include "session/open_files.h"
#include "session/task.h"

class ZnFileTask : public ZnSessionTask {
 public:
  ~ZnFileTask() override;

 protected:
  using ZnSessionTask::ZnSessionTask;

  // Ends the state when the turn has come; it is kept until the task ends or gives it up. With Gone if the share has to
  // be connected anew by then: the task begins again.
  void TakeTurn(ZnFileTurnPlace turn);
  void LeaveTurn() { turn_.reset(); }

  // An action: has the file opened for what the command's openread and openwrite say. Ends with Opened when it is, and
  // with Again when it is to be asked for once more; with Gone as above.
  void OpenFile();
  // Uses the file from now on. False: it isn't open any more.
  bool UseFile();
  ZnFileUse& file() { return file_; }

  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;
  void BeginsAgain() override;

 private:
  bool ShareHasGone();

  ZnFileTurnPlace turn_;
  ZnFileUse file_;
};
