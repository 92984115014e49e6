#pragma once
// Attributes and times that NFS sets: all in one request, or, for the old ways, attributes alone and times alone.
//
// Which clock a time on the wire goes by depends on its form: 8-byte times are UTC, all others (the 4-byte times of
// open and close, the dates of SetTimes and of the old form of SetInfo) are the server's local time.

#include "session/file_turns.h"
#include "session/open_files.h"
#include "session/task.h"

// What these have in common: they come after what was begun before at the file, and before all behind.
class ZnSettingTask : public ZnSessionTask {
 protected:
  using ZnSessionTask::ZnSessionTask;
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;
  void BeginsAgain() override;

  ZnSMBNFSFile* File() const;  // while the command's file is open
  // From here to the answer something of the file is set through its id.
  void UseFile();

  // The actions.
  void AwaitTurn();
  void Flush();
  void CloseFile();

 private:
  ZnFileTurnPlace turn_;
  ZnFileUse use_;
};

// Mode and times in one request.
class ZnSetAllTask : public ZnSettingTask {
 public:
  ZnSetAllTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSettingTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void Set();
  void Settle();
};

// The mode alone, by path.
class ZnSetModeTask : public ZnSettingTask {
 public:
  ZnSetModeTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSettingTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void Set();
};

// Times alone, of an open file.
class ZnSetTimesTask : public ZnSettingTask {
 public:
  ZnSetTimesTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSettingTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void CloseWritten();
  void Open();
  void Set();
};
