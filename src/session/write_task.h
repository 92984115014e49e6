#pragma once
// Writes to a file. A write of no bytes makes its offset the file's size.

#include "session/file_task.h"

class ZnWriteTask : public ZnFileTask {
 public:
  ZnWriteTask(ZnMachineSession& session, ZnSMBNFSCommand& command);
  static std::span<const ZnTaskRow> Rows();

 protected:
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;

 private:
  static const ZnTaskRow kRows[];

  void TakeTurnAtBytes();
  void Write();
  void FlushIfPromised();
};
