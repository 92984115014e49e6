#include "session/open_task.h"

#include "session/machine_session.h"

using Event = ZnTaskEvent;

const ZnTaskRow ZnOpenTask::kRows[] = {
    {E::SSTTurn,
     ZN_ACTION(ZnOpenTask, TakeTurnUnlessOpen),
     {{{Event::Opened, E::SSTDone}, {Event::Done, E::SSTOpenFile}, {Event::Gone, E::SSTStart}}}},
    {E::SSTOpenFile,
     ZN_ACTION(ZnOpenTask, OpenFile),
     {{{Event::Again, E::SSTOpenFile}, {Event::Gone, E::SSTStart}, {Event::Opened, E::SSTDone}}},
     ZnTaskRow::kChangesNothing},
};

ZnOpenTask::ZnOpenTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnFileTask(session, command, Rows()) {
  command.freshopen = false;
}

std::span<const ZnTaskRow> ZnOpenTask::Rows() { return kRows; }

// A request goes by the file's path, which has to hold until it is answered.
void ZnOpenTask::TakeTurnUnlessOpen() {
  if (ZnOpenFiles::IsOpen(command())) return Ended(Event::Opened);
  TakeTurn(session().turns().Beside(*command().node.Get(), WhenAnswered()));
}
