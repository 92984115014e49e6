#pragma once
// Asks for what a directory holds under one name: under that of a known node (SCRequestAttribs), or under one of which
// nothing is known (SCRequestEntry); that there is no such entry is an answer then.

#include "session/task.h"

class ZnEntryTask : public ZnSessionTask {
 public:
  ZnEntryTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;

 private:
  static const ZnTaskRow kRows[];

  bool IsOfNode() const { return command().sessioncommand == E::SCRequestAttribs; }
  void Ask();
};
