#include "session/remove_task.h"

#include "model/node.h"
#include "model/open_file.h"
#include "session/machine_session.h"
#include "session/open_files.h"
#include "session/share_paths.h"

const ZnTaskRow ZnRemoveTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnRemoveTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnRemoveTask, CloseFile),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTRm}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTRm,
     ZN_ACTION(ZnRemoveTask, Remove),
     {{{ZnTaskEvent::Done, E::SSTDone},
       {ZnTaskEvent::ReadOnly, E::SSTMakeWritable},
       {ZnTaskEvent::StaysReadOnly, E::SSTProtectAgain}}}},
    {E::SSTMakeWritable, ZN_ACTION(ZnRemoveTask, MakeWritable), {{{ZnTaskEvent::Done, E::SSTRm}}}},
    {E::SSTProtectAgain, ZN_ACTION(ZnRemoveTask, ProtectAgain), {{{ZnTaskEvent::Done, E::SSTError}}}},
};

std::span<const ZnTaskRow> ZnRemoveTask::Rows() { return kRows; }

void ZnRemoveTask::AwaitTurn() {
  turn_ = session().turns().Alone(*command().node.Get(), WhenAnswered());
  if (turn_->IsThere()) Ended();
}

// What is to be removed mustn't be open, and needn't be flushed.
void ZnRemoveTask::CloseFile() {
  if (ZnSMBNFSFile* file = command().node->file) file->unflushed = false;
  ZnWaitPlace place = session().openfiles().Close(*command().node.Get(), WhenAnswered());
  place ? Wait(std::move(place)) : Ended();
}

void ZnRemoveTask::Remove() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  if (!Doomed()) {
    command().fileobject = ZnFileAt(*share, command().node->Path());
    Doom(*command().fileobject, command().node.Get());
  }
  RemoveDoomed();
}

std::optional<ZnTaskEvent> ZnRemoveTask::EventOf(const ZnSmbOutcome& outcome) {
  if (outcome.Ok() && state() == E::SSTCloseFiles) return ZnTaskEvent::Again;
  if (outcome.Refusal() != 0 && state() == E::SSTRm) return EventOfRemoval(outcome);
  return ZnSessionTask::EventOf(outcome);
}
