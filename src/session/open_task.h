#pragma once
// Has a file opened for what the command's openread and openwrite say, before it is read or written.

#include "session/file_task.h"

class ZnOpenTask : public ZnFileTask {
 public:
  ZnOpenTask(ZnMachineSession& session, ZnSMBNFSCommand& command);
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void TakeTurnUnlessOpen();
};
