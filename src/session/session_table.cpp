// The state machine of a session as a table: on a status of a command, the next status and the action that leads there.
//
// An action starts a call of the client and returns; when the call has succeeded the command is handled again, at the
// status that was set before. An action with nothing to wait for has the command handled again at once. CloseNextFile
// is entered again after each file, and itself moves on to SSTClosedAllFiles. Complete hands the command to the tree.

#include "session/session.h"

struct ZnSMBNFSSession::Row {
  ZnSMBNFSEnum::SessionCommand command;
  ZnSMBNFSEnum::SessionStatus on;
  ZnSMBNFSEnum::SessionStatus next;
  void (ZnSMBNFSSession::*action)(Command&);
  const char* name;
  bool needsnode = true;  // pointless once the command's node is gone
};

using E = ZnSMBNFSEnum;

#define DO(action) &ZnSMBNFSSession::action, #action

const ZnSMBNFSSession::Row ZnSMBNFSSession::kCommonRows[] = {
    // The command doesn't matter here.
    {E::SCRequestDirs, E::SSTStart, E::SSTGetAddress, DO(FindAddress)},
    {E::SCRequestDirs, E::SSTGetAddress, E::SSTConnect, DO(CheckConnected)},
    {E::SCRequestDirs, E::SSTConnect, E::SSTConnectTree, DO(CheckTreeConnected)},
    {E::SCRequestDirs, E::SSTError, E::SSTError, DO(Complete), false},
};

const ZnSMBNFSSession::Row ZnSMBNFSSession::kRows[] = {
    {E::SCRequestDirs, E::SSTConnectTree, E::SSTGetDirs, DO(GetDirs)},
    {E::SCRequestDirs, E::SSTGetDirs, E::SSTGetDirs, DO(Complete)},

    {E::SCRequestAttribs, E::SSTConnectTree, E::SSTGetAttribs, DO(GetAttribs)},
    {E::SCRequestAttribs, E::SSTGetAttribs, E::SSTGetAttribs, DO(Complete)},

    {E::SCRequestEntry, E::SSTConnectTree, E::SSTGetAttribs, DO(GetEntry)},
    {E::SCRequestEntry, E::SSTGetAttribs, E::SSTGetAttribs, DO(Complete)},

    {E::SCRequestMkdir, E::SSTConnectTree, E::SSTMkdir, DO(GetMkdir)},
    {E::SCRequestMkdir, E::SSTMkdir, E::SSTMkdir, DO(Complete)},

    {E::SCRequestSetAllAttribs, E::SSTConnectTree, E::SSTFlush, DO(FlushFirst)},
    {E::SCRequestSetAllAttribs, E::SSTFlush, E::SSTGetSetAttribs, DO(GetSetAllAttribs)},
    {E::SCRequestSetAllAttribs, E::SSTGetSetAttribs, E::SSTGetSetAttribs, DO(SetAllDone)},
    {E::SCRequestSetAllAttribs, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestSetAllAttribs, E::SSTClosedAllFiles, E::SSTClosedAllFiles, DO(Complete)},

    {E::SCRequestRmdir, E::SSTConnectTree, E::SSTCloseFiles, DO(CloseEntry)},
    {E::SCRequestRmdir, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestRmdir, E::SSTClosedAllFiles, E::SSTRmdir, DO(GetRmdir)},
    {E::SCRequestRmdir, E::SSTRmdir, E::SSTRmdir, DO(Complete)},

    {E::SCRequestCreateFile, E::SSTConnectTree, E::SSTCreateFile, DO(GetCreateFile)},
    {E::SCRequestCreateFile, E::SSTCreateFile, E::SSTCloseFiles, DO(ProcessCreateFile), false},
    {E::SCRequestCreateFile, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile), false},
    {E::SCRequestCreateFile, E::SSTClosedAllFiles, E::SSTClosedAllFiles, DO(Complete)},

    {E::SCRequestOpenFile, E::SSTConnectTree, E::SSTCloseFiles, DO(SetOpenMode)},
    {E::SCRequestOpenFile, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestOpenFile, E::SSTClosedAllFiles, E::SSTOpenFile, DO(GetOpenFile)},
    {E::SCRequestOpenFile, E::SSTOpenFile, E::SSTOpenFile, DO(OpenDone), false},

    {E::SCRequestWrite, E::SSTConnectTree, E::SSTWrite, DO(StartWrite)},
    {E::SCRequestWrite, E::SSTOpenFile, E::SSTWrite, DO(WriteOpened), false},
    {E::SCRequestWrite, E::SSTWrite, E::SSTWrite, DO(NextWrite)},
    {E::SCRequestWrite, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestWrite, E::SSTClosedAllFiles, E::SSTClosedAllFiles, DO(Complete)},
    {E::SCRequestWrite, E::SSTError, E::SSTError, DO(TransferFailed), false},

    {E::SCRequestRead, E::SSTConnectTree, E::SSTRead, DO(StartRead)},
    {E::SCRequestRead, E::SSTOpenFile, E::SSTRead, DO(ReadOpened), false},
    {E::SCRequestRead, E::SSTRead, E::SSTRead, DO(NextRead)},
    {E::SCRequestRead, E::SSTError, E::SSTError, DO(TransferFailed), false},

    {E::SCRequestRm, E::SSTConnectTree, E::SSTCloseFiles, DO(CloseEntry)},
    {E::SCRequestRm, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestRm, E::SSTClosedAllFiles, E::SSTRm, DO(GetRm)},
    {E::SCRequestRm, E::SSTRm, E::SSTRm, DO(Complete)},
    {E::SCRequestRm, E::SSTMakeWritable, E::SSTRm, DO(RemoveDoomed)},
    {E::SCRequestRm, E::SSTProtectAgain, E::SSTError, DO(Complete)},

    {E::SCRequestSetAttribs, E::SSTConnectTree, E::SSTGetSetAttribs, DO(CloseBeforeSetAttribs)},
    {E::SCRequestSetAttribs, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestSetAttribs, E::SSTClosedAllFiles, E::SSTGetSetAttribs, DO(GetSetAttribs)},
    {E::SCRequestSetAttribs, E::SSTGetSetAttribs, E::SSTGetSetAttribs, DO(Complete)},

    {E::SCRequestSetTimes, E::SSTConnectTree, E::SSTFlush, DO(FlushFirst)},
    {E::SCRequestSetTimes, E::SSTFlush, E::SSTCloseWritten, DO(CloseWritten)},
    {E::SCRequestSetTimes, E::SSTCloseWritten, E::SSTSetTimes, DO(StartSetTimes)},
    {E::SCRequestSetTimes, E::SSTOpenFile, E::SSTSetTimes, DO(SetTimesOpened), false},
    {E::SCRequestSetTimes, E::SSTSetTimes, E::SSTCloseFiles, DO(ProcessSetTimes)},
    {E::SCRequestSetTimes, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestSetTimes, E::SSTClosedAllFiles, E::SSTClosedAllFiles, DO(Complete)},
    {E::SCRequestSetTimes, E::SSTError, E::SSTError, DO(TransferFailed), false},

    {E::SCRequestRename, E::SSTConnectTree, E::SSTCloseFiles, DO(CloseEntry)},
    {E::SCRequestRename, E::SSTCloseFiles, E::SSTCloseFiles, DO(CloseNextFile)},
    {E::SCRequestRename, E::SSTClosedAllFiles, E::SSTRename, DO(GetRename)},
    {E::SCRequestRename, E::SSTReplace, E::SSTReplace, DO(Complete)},
    {E::SCRequestRename, E::SSTRename, E::SSTRm, DO(RemoveDoomed)},
    {E::SCRequestRename, E::SSTMakeRoom, E::SSTRenameAgain, DO(MoveOrRename)},
    {E::SCRequestRename, E::SSTRenameAgain, E::SSTRm, DO(RemoveDoomed)},
    {E::SCRequestRename, E::SSTPutBack, E::SSTError, DO(Complete)},
    {E::SCRequestRename, E::SSTRm, E::SSTRm, DO(Complete)},
    {E::SCRequestRename, E::SSTMakeWritable, E::SSTRm, DO(RemoveDoomed)},
    {E::SCRequestRename, E::SSTProtectAgain, E::SSTRm, DO(Complete)},

    {E::SCRequestSpace, E::SSTConnectTree, E::SSTGetSpace, DO(GetSpace)},
    {E::SCRequestSpace, E::SSTGetSpace, E::SSTGetSpace, DO(Complete)},

    {E::SCCleanUp, E::SSTStart, E::SSTStart, DO(CloseNextFile), false},
    {E::SCCleanUp, E::SSTClosedAllFiles, E::SSTClosedAllTrees, DO(CloseNextTree), false},
    {E::SCCleanUp, E::SSTClosedAllTrees, E::SSTClosedAllTrees, DO(EndCleanUp), false},
    {E::SCCleanUp, E::SSTError, E::SSTError, DO(EndCleanUp), false},

    {E::SCProbe, E::SSTStart, E::SSTGetAddress, DO(FindAddress), false},
    {E::SCProbe, E::SSTGetAddress, E::SSTConnect, DO(CheckConnected), false},
    {E::SCProbe, E::SSTConnect, E::SSTConnect, DO(EndProbe), false},
    {E::SCProbe, E::SSTError, E::SSTError, DO(EndProbe), false},
};

#undef DO

const ZnSMBNFSSession::Row* ZnSMBNFSSession::FindRow(E::SessionCommand command, E::SessionStatus status) {
  for (const Row& row : kRows) {
    if (row.command == command && row.on == status) return &row;
  }
  if (E::IsOwn(command)) return nullptr;  // has all its rows to itself
  for (const Row& row : kCommonRows) {
    if (row.on == status) return &row;
  }
  return nullptr;
}

// A status without a row ends here with nothing done.
void ZnSMBNFSSession::HandleCommand(Command& command) {
  if (flushing_) command.sessionstatus = E::SSTError;
  const Row* row = FindRow(command.sessioncommand, command.sessionstatus);
  if (!row) return;
  if (row->needsnode && !command.node) {
    // Whatever was moved out of a rename's way mustn't be lost from sight.
    command.refusal = 0;  // the last step, at least, was done
    const ZnUniString aside = WhereItIs(command);
    return aside.IsEmpty() ? Fail() : SendError("What was to be renamed has gone." + aside, ZnNFSEnum::NFSERR_STALE);
  }
  command.sessionstatus = row->next;
  (this->*row->action)(command);
}

ZnUniString ZnSMBNFSSession::TableAsString() {
  ZnUniString text;
  auto add = [&text](const Row& row, const ZnUniString& command) {
    text +=
        command + " " + E::SessionStatusString(row.on) + " " + E::SessionStatusString(row.next) + " " + row.name + "\n";
  };
  for (const Row& row : kCommonRows) add(row, "*");
  for (const Row& row : kRows) add(row, E::SessionCommandString(row.command));
  return text;
}
