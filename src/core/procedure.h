#pragma once
// What a procedure is: one row, from its number on the wire to its reply. Nothing behind the row knows by which wire
// the call came.

#include <span>

#include "model/command.h"
#include "rpc/rpc_records.h"

class ZnSMBNFSFileSystem;

// What a step's action has come to.
enum class ZnStepOutcome {
  Called,   // the file system has the command, and may have ended it: touch nothing
  GoOn,     // nothing to do here: on to the next step at once
  Refused,  // command->error tells why: reply with it
};

struct ZnStep {
  const char* name;  // of the action, for people
  ZnStepOutcome (*action)(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command);
};

struct ZnArguments {
  // Reads them from the wire; false when they don't decode.
  bool (*decode)(ZnXdrReader& in, ZnSMBNFSArguments& arguments);
  // The handle among them that the first step looks for; null where there is none.
  const ZnNFSFileHandle& (*handle)(const ZnSMBNFSArguments& arguments);
};

// What a call has to do with the root of the tree, which the daemon doesn't know until it is told.
enum class ZnRoot {
  NotNeeded,
  Needed,   // while there is none the call is rejected
  Brought,  // while there is none, the call's handle becomes it
};

// What a repetition of an answered call gets.
enum class ZnOnRepeat {
  ServeAnew,
  SameReply,  // the first one: done twice, the call would fail or undo what others did meanwhile
};

struct ZnProcedure {
  uint32_t number;
  const char* name;
  ZnArguments arguments;
  ZnRoot root;
  ZnOnRepeat onrepeat;
  std::span<const ZnStep> steps;
  // Writes the result when the steps are done or one has failed: command.error and, when that is NFS_OK, what the
  // procedure tells of the command's node and data. Null where the procedure isn't served.
  void (*reply)(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
};

struct ZnProgram {
  uint32_t number, version;
  std::span<const ZnProcedure> procedures;  // by their numbers, from 0 on
  ZnRPCEnum::AcceptStat beyond;             // what a call of a higher number gets
};
