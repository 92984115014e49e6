#include "session/attribute_tasks.h"

#include "model/node.h"
#include "model/open_file.h"
#include "model/told_attributes.h"
#include "session/machine_session.h"
#include "session/share_paths.h"
#include "smb/wire/times.h"

namespace {

constexpr uint32_t kDay = 24 * 60 * 60;  // seconds

// The client works a date out as if its time were UTC, and the time of day by taking off the midnight of that date in
// the zone of this host. This is the time that comes out as `local` on the wire, whatever that zone is.
ZnTimeVal ForDateByPath(const ZnTimeVal& local) {
  if (local.IsZero()) return local;
  ZnSMBCDate date;
  date.FromTimeVal(local);
  const uint32_t midnight = local.seconds / kDay * kDay;
  const int64_t west = int64_t{date.AsTimeVal().seconds} - midnight;
  const int64_t timeofday = (local.seconds - midnight + west + kDay) % kDay;
  return {midnight + static_cast<uint32_t>(timeofday), 0};
}

}  // namespace

// ---- what the tasks have in common ----------------------------------------------------------------------------------

ZnSMBNFSFile* ZnSettingTask::File() const { return command().node->file; }

void ZnSettingTask::AwaitTurn() {
  turn_ = session().turns().Alone(*command().node.Get(), WhenAnswered());
  if (turn_->IsThere()) Ended();
}

void ZnSettingTask::Flush() {
  ZnWaitPlace place = File() ? session().openfiles().Flush(*File(), WhenAnswered()) : nullptr;
  place ? Wait(std::move(place)) : Ended();
}

void ZnSettingTask::CloseFile() {
  ZnWaitPlace place = session().openfiles().Close(*command().node.Get(), WhenAnswered());
  place ? Wait(std::move(place)) : Ended();
}

void ZnSettingTask::UseFile() { use_ = session().openfiles().Use(*command().node.Get()); }

void ZnSettingTask::BeginsAgain() {
  use_.End();
  turn_.reset();
}

// Whoever waits for files to be closed or opened asks again: there may be more to wait for.
std::optional<ZnTaskEvent> ZnSettingTask::EventOf(const ZnSmbOutcome& outcome) {
  if (!outcome.Ok() && use_) session().openfiles().CloseAfterUse(*use_.Get());  // the next use opens it afresh
  use_.End();
  const bool asksagain = state() == E::SSTCloseFiles || state() == E::SSTCloseWritten || state() == E::SSTOpenFile;
  if (outcome.Ok() && asksagain) return ZnTaskEvent::Again;
  return ZnSessionTask::EventOf(outcome);
}

// ---- all in one request ---------------------------------------------------------------------------------------------

const ZnTaskRow ZnSetAllTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnSetAllTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTFlush}}}},
    {E::SSTFlush,
     ZN_ACTION(ZnSetAllTask, Flush),
     {{{ZnTaskEvent::Done, E::SSTGetSetAttribs}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTGetSetAttribs, ZN_ACTION(ZnSetAllTask, Set), {{{ZnTaskEvent::Done, E::SSTSettle}}}},
    {E::SSTSettle,
     ZN_ACTION(ZnSetAllTask, Settle),
     {{{ZnTaskEvent::NotNeeded, E::SSTDone}, {ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnSetAllTask, CloseFile),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnSetAllTask::Rows() { return kRows; }

// The modification time of a file that is open for writing goes through its id: servers set the time that they hold
// for it again at its close, whatever came by path. Everything else goes by path. Set through the id of a file that was
// written, they take it for the moment to date the writing, and a file that is open for reading only can't be set
// through its id at all.
void ZnSetAllTask::Set() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  ZnSMBCFileChange change;
  if (ZnToldMode(command().sattr)) {
    change.attribs = ZnAttribsToSet(command(), *share, command().node->fileobject.attribs);
  }
  change.accessed = ZnToldAccess(command().sattr);
  change.modified = ZnToldModification(command().sattr);
  if (!client().SetsLongTimes()) {
    for (auto* time : {&change.accessed, &change.modified}) {
      if (*time) *time = ForDateByPath(session().ServerLocal(**time));
    }
  }
  command().fileobject = ZnFileAt(*share, command().node->Path());
  if (File() && File()->writable && change.modified) {
    command().fileobject->fid = File()->fid;
    command().fileobject->isopen = true;
    UseFile();
  }
  Await(client().SetInfo(caller(), *command().fileobject, change, WhenAnswered()));
}

// Once the time of an open file was set, servers let no write change it any more, and set it again when the file is
// closed, over what another machine wrote meanwhile. So the file is closed at once, and opened anew for its next use.
// The time stands already: the close needn't carry it.
void ZnSetAllTask::Settle() {
  if (!File() || !ZnToldModification(command().sattr)) return Ended(ZnTaskEvent::NotNeeded);
  File()->closetime = ZnTimeVal();
  File()->unflushed = false;  // a flush would date it once more
  Ended();
}

// ---- attributes alone, by path --------------------------------------------------------------------------------------

const ZnTaskRow ZnSetModeTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnSetModeTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnSetModeTask, CloseFile),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTGetSetAttribs}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTGetSetAttribs, ZN_ACTION(ZnSetModeTask, Set), {{{ZnTaskEvent::Done, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnSetModeTask::Rows() { return kRows; }

void ZnSetModeTask::Set() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  command().fileobject = ZnFileAt(*share, command().node->Path());
  command().fileobject->attribs = ZnAttribsToSet(command(), *share, command().node->fileobject.attribs);
  Await(client().SetAttributes(caller(), *command().fileobject, WhenAnswered()));
}

// ---- times alone, of an open file -----------------------------------------------------------------------------------

const ZnTaskRow ZnSetTimesTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnSetTimesTask, AwaitTurn), {{{ZnTaskEvent::Done, E::SSTFlush}}}},
    {E::SSTFlush,
     ZN_ACTION(ZnSetTimesTask, Flush),
     {{{ZnTaskEvent::Done, E::SSTCloseWritten}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTCloseWritten,
     ZN_ACTION(ZnSetTimesTask, CloseWritten),
     {{{ZnTaskEvent::Again, E::SSTCloseWritten}, {ZnTaskEvent::Done, E::SSTOpenFile}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTOpenFile,
     ZN_ACTION(ZnSetTimesTask, Open),
     {{{ZnTaskEvent::Again, E::SSTOpenFile}, {ZnTaskEvent::Done, E::SSTSetTimes}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTSetTimes, ZN_ACTION(ZnSetTimesTask, Set), {{{ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnSetTimesTask, CloseFile),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnSetTimesTask::Rows() { return kRows; }

// Setting the access time alone through an id that was written through makes servers date the writing anew.
void ZnSetTimesTask::CloseWritten() {
  const bool closes = File() && File()->written && !ZnToldModification(command().sattr);
  closes ? CloseFile() : Ended();
}

void ZnSetTimesTask::Open() {
  command().openread = false;
  command().openwrite = true;
  ZnWaitPlace place = session().openfiles().Open(command(), caller(), WhenAnswered());
  place ? Wait(std::move(place)) : Ended();
}

// The close that follows carries the modification time too: some servers set it to their own "now" else.
void ZnSetTimesTask::Set() {
  if (!File()) return FailQuietly();
  command().fileobject = std::make_unique<ZnSMBCFileObject>(*File());
  ZnSMBCFileObject& object = *command().fileobject;
  object.created = ZnTimeVal();  // as it is, like the others that aren't told
  object.accessed = session().ServerLocal(ZnToldAccess(command().sattr).value_or(ZnTimeVal()));
  object.modified = session().ServerLocal(ZnToldModification(command().sattr).value_or(ZnTimeVal()));
  File()->closetime = object.modified;
  UseFile();
  Await(client().SetTimes(caller(), object, WhenAnswered()));
}
