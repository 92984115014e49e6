#include "session/create_task.h"

#include "model/told_attributes.h"
#include "session/machine_session.h"
#include "session/share_paths.h"

using Event = ZnTaskEvent;
using Values = ZnSMBClientValues;

const ZnTaskRow ZnCreateTask::kRows[] = {
    {E::SSTTurn,
     ZN_ACTION(ZnCreateTask, TakeTurnAtDirectory),
     {{{Event::Done, E::SSTCreateFile}, {Event::Gone, E::SSTStart}}}},
    {E::SSTCreateFile, ZN_ACTION(ZnCreateTask, Create), {{{Event::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles, ZN_ACTION(ZnCreateTask, Close), {{{Event::Done, E::SSTDone}}}, ZnTaskRow::kWithoutNode},
};

std::span<const ZnTaskRow> ZnCreateTask::Rows() { return kRows; }

void ZnCreateTask::TakeTurnAtDirectory() { TakeTurn(session().turns().Beside(*command().node.Get(), WhenAnswered())); }

ZnTimeVal ZnCreateTask::TimeToSet() const {
  return session().ServerLocal(ZnToldModification(command().sattr).value_or(ZnTimeVal()));
}

void ZnCreateTask::Create() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  ZnSMBNFSCommand& asks = command();
  asks.fileobject = ZnFileAt(*share, asks.node->PathInside() + asks.name);
  asks.fileobject->attribs = ZnAttribsToSet(asks, *share, ZnSMBCFileAttributes());
  asks.fileobject->modified = TimeToSet();
  const auto existing = asks.exclusive ? Values::OFFail : Values::OFOpen;
  const ZnSmbOpenMode mode{Values::AccessWrite, Values::DenyWrite, true, existing};
  Await(client().Open(caller(), asks.fileobject.get(), mode, WhenAnswered()));
}

// A created file isn't left open: its node isn't known yet. Servers ignore the time in the request that creates it, so
// the close carries it again.
void ZnCreateTask::Close() {
  const ZnSMBCFileObject opened = *command().fileobject;
  command().fileobject->isopen = false;
  Await(client().Close(caller(), opened, TimeToSet(), WhenAnswered()));
}
