#pragma once
// Removing a file.

#include "session/removing_task.h"

class ZnRemoveTask : public ZnRemovingTask {
 public:
  ZnRemoveTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnRemovingTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;
  void BeginsAgain() override { turn_.reset(); }

 private:
  static const ZnTaskRow kRows[];

  void AwaitTurn();
  void CloseFile();
  void Remove();

  ZnFileTurnPlace turn_;
};
