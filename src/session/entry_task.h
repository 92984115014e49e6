#pragma once
// Asks for the attributes of one entry, as a listing of its name alone. The node may be a directory: its own entry is
// in the one above.

#include "session/task.h"

class ZnEntryTask : public ZnSessionTask {
 public:
  ZnEntryTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 private:
  static const ZnTaskRow kRows[];

  void Ask();
};
