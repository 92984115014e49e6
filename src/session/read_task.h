#pragma once
// Reads from a file.

#include "session/file_task.h"

class ZnReadTask : public ZnFileTask {
 public:
  ZnReadTask(ZnMachineSession& session, ZnSMBNFSCommand& command);
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void TakeTurnAtBytes();
  void Read();
};
