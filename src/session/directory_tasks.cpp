#include "session/directory_tasks.h"

#include "model/node.h"
#include "session/machine_session.h"
#include "session/open_files.h"
#include "session/share_paths.h"

// ---- making ---------------------------------------------------------------------------------------------------------

const ZnTaskRow ZnMakeDirectoryTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnMakeDirectoryTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTMkdir}}}},
    {E::SSTMkdir, ZN_ACTION(ZnMakeDirectoryTask, Make), {{{ZnTaskEvent::Done, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnMakeDirectoryTask::Rows() { return kRows; }

void ZnMakeDirectoryTask::AwaitTurn() {
  turn_ = session().turns().Beside(*command().node.Get(), WhenAnswered());
  if (turn_->IsThere()) Ended();
}

void ZnMakeDirectoryTask::Make() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  command().fileobject = ZnFileAt(*share, command().node->PathInside() + command().name);
  Await(client().CreateDirectory(caller(), *command().fileobject, WhenAnswered()));
}

// ---- removing -------------------------------------------------------------------------------------------------------

const ZnTaskRow ZnRemoveDirectoryTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnRemoveDirectoryTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnRemoveDirectoryTask, CloseFiles),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTRmdir}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTRmdir, ZN_ACTION(ZnRemoveDirectoryTask, Remove), {{{ZnTaskEvent::Done, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnRemoveDirectoryTask::Rows() { return kRows; }

void ZnRemoveDirectoryTask::AwaitTurn() {
  turn_ = session().turns().Alone(*command().node.Get(), WhenAnswered());
  if (turn_->IsThere()) Ended();
}

void ZnRemoveDirectoryTask::CloseFiles() {
  ZnWaitPlace place = session().openfiles().Close(*command().node.Get(), WhenAnswered());
  place ? Wait(std::move(place)) : Ended();
}

std::optional<ZnTaskEvent> ZnRemoveDirectoryTask::EventOf(const ZnSmbOutcome& outcome) {
  if (outcome.Ok() && state() == E::SSTCloseFiles) return ZnTaskEvent::Again;
  return ZnSessionTask::EventOf(outcome);
}

void ZnRemoveDirectoryTask::Remove() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  command().fileobject = ZnFileAt(*share, command().node->Path());
  Await(client().DeleteDirectory(caller(), *command().fileobject, WhenAnswered()));
}
