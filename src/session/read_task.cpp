#include "session/read_task.h"

#include "session/machine_session.h"

using Event = ZnTaskEvent;

const ZnTaskRow ZnReadTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnReadTask, TakeTurnAtBytes), {{{Event::Done, E::SSTOpenFile}, {Event::Gone, E::SSTStart}}}},
    // It is open usually, unless it went with a dead connection or made way for another.
    {E::SSTOpenFile,
     ZN_ACTION(ZnReadTask, OpenFile),
     {{{Event::Again, E::SSTOpenFile}, {Event::Gone, E::SSTStart}, {Event::Opened, E::SSTRead}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTRead, ZN_ACTION(ZnReadTask, Read), {{{Event::Done, E::SSTDone}}}, ZnTaskRow::kChangesNothing},
};

ZnReadTask::ZnReadTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnFileTask(session, command, Rows()) {
  command.openread = true;
  command.openwrite = command.freshopen = false;
}

std::span<const ZnTaskRow> ZnReadTask::Rows() { return kRows; }

void ZnReadTask::TakeTurnAtBytes() {
  const uint64_t begin = command().offset;
  TakeTurn(session().turns().Bytes(*command().node.Get(), {begin, begin + command().count, false}, WhenAnswered()));
}

// Fewer bytes than wanted are the end of the file.
void ZnReadTask::Read() {
  UseFile();
  Await(client().Read(caller(), *file().Get(), command().offset, command().count, &command().data, WhenAnswered()));
}
