#pragma once
// Which task does what a session is asked for.

#include "session/task.h"

struct ZnTaskKind {
  ZnSMBNFSEnum::SessionCommand what;
  std::unique_ptr<ZnSessionTask> (*make)(ZnMachineSession&, ZnSMBNFSCommand&);
  std::span<const ZnTaskRow> rows;
};

std::span<const ZnTaskKind> ZnTaskKinds();
// For command.sessioncommand, which is one of those.
std::unique_ptr<ZnSessionTask> ZnMakeTask(ZnMachineSession& session, ZnSMBNFSCommand& command);
