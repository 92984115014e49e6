#pragma once
// Asks for the size of a share's disk and what is free of it.

#include "session/task.h"

class ZnSpaceTask : public ZnSessionTask {
 public:
  ZnSpaceTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void Ask();
};
