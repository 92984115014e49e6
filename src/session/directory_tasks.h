#pragma once
// Making and removing a directory.

#include "session/file_turns.h"
#include "session/task.h"

class ZnMakeDirectoryTask : public ZnSessionTask {
 public:
  ZnMakeDirectoryTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  void BeginsAgain() override { turn_.reset(); }

 private:
  static const ZnTaskRow kRows[];

  void AwaitTurn();
  void Make();

  ZnFileTurnPlace turn_;
};

class ZnRemoveDirectoryTask : public ZnSessionTask {
 public:
  ZnRemoveDirectoryTask(ZnMachineSession& session, ZnSMBNFSCommand& command)
      : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;
  void BeginsAgain() override { turn_.reset(); }

 private:
  static const ZnTaskRow kRows[];

  void AwaitTurn();
  void CloseFiles();
  void Remove();

  ZnFileTurnPlace turn_;
};
