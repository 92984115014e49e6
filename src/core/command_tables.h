#pragma once
// What each NFS procedure does, as tables: on a status, take a step, and the step's end finds the command at the next
// status.

#include <span>

#include "model/command.h"
#include "rpc/nfs_enum.h"

class ZnRPCServer;
class ZnSMBNFSFileSystem;

// What a step's action has come to.
enum class ZnSMBNFSOutcome {
  Called,   // the file system has the command, and may have ended it: touch nothing
  GoOn,     // nothing to do here: go on at the next status at once
  Refused,  // command->error tells why: reply with it
  Reply,    // the procedure is done: send the reply
};

using ZnSMBNFSAction = ZnSMBNFSOutcome (*)(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command);

struct ZnSMBNFSStep {
  ZnSMBNFSEnum::Status on;
  const char* name;  // of the action, for people
  ZnSMBNFSAction action;
  ZnSMBNFSEnum::Status next;  // set before the action runs
};

// What a repetition of an answered call gets.
enum class ZnOnRepeat {
  ServeAnew,
  SameReply,  // the first one: done twice, the call would fail or undo what others did meanwhile
};

struct ZnSMBNFSProcedure {
  int number;
  const char* name;
  // The handle that the first step looks for.
  const ZnNFSFileHandle& (*handle)(const ZnSMBNFSCommand& command);
  ZnOnRepeat onrepeat;
  std::span<const ZnSMBNFSStep> steps;
  // Sends the reply: command.error and, when that is NFS_OK, what the procedure tells of the command's node and data.
  void (*reply)(ZnRPCServer& server, ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command);
};

// The table of a procedure, or null when the gateway doesn't serve it.
const ZnSMBNFSProcedure* ZnFindProcedure(int number);
std::span<const ZnSMBNFSProcedure> ZnAllProcedures();
