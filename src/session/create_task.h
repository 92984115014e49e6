#pragma once
// Makes a file in a directory. The command's fileobject tells afterwards what the server said of it.

#include "session/file_task.h"

class ZnCreateTask : public ZnFileTask {
 public:
  ZnCreateTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnFileTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void TakeTurnAtDirectory();
  void Create();
  void Close();
  ZnTimeVal TimeToSet() const;
};
