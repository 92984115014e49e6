#include "session/rename_task.h"

#include <algorithm>

#include "model/entries.h"
#include "model/node.h"
#include "runtime/random.h"
#include "session/machine_session.h"
#include "session/open_files.h"
#include "session/reports.h"
#include "session/share_paths.h"

const ZnTaskRow ZnRenameTask::kRows[] = {
    {E::SSTTurn, ZN_ACTION(ZnRenameTask, AwaitTurns), {{{ZnTaskEvent::Done, E::SSTCloseFiles}}}},
    {E::SSTCloseFiles,
     ZN_ACTION(ZnRenameTask, CloseFiles),
     {{{ZnTaskEvent::Again, E::SSTCloseFiles}, {ZnTaskEvent::Done, E::SSTChooseWay}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTChooseWay,
     ZN_ACTION(ZnRenameTask, ChooseWay),
     {{{ZnTaskEvent::Replaces, E::SSTReplace}, {ZnTaskEvent::Done, E::SSTRename}}}},
    {E::SSTReplace,
     ZN_ACTION(ZnRenameTask, Replace),
     {{{ZnTaskEvent::Done, E::SSTRm}, {ZnTaskEvent::CannotReplace, E::SSTRename}}}},
    {E::SSTRename,
     ZN_ACTION(ZnRenameTask, MoveOrRename),
     {{{ZnTaskEvent::Done, E::SSTRm},
       {ZnTaskEvent::MoveUnknown, E::SSTRename},
       {ZnTaskEvent::NameTaken, E::SSTChooseRoom}}}},
    {E::SSTChooseRoom,
     ZN_ACTION(ZnRenameTask, ChooseRoom),
     {{{ZnTaskEvent::Replaces, E::SSTReplace},
       {ZnTaskEvent::IsDirectory, E::SSTRemoveTarget},
       {ZnTaskEvent::Done, E::SSTMakeRoom}}}},
    {E::SSTRemoveTarget, ZN_ACTION(ZnRenameTask, RemoveTarget), {{{ZnTaskEvent::Done, E::SSTRenameAgain}}}},
    {E::SSTMakeRoom, ZN_ACTION(ZnRenameTask, MoveAside), {{{ZnTaskEvent::Done, E::SSTRenameAgain}}}},
    {E::SSTRenameAgain,
     ZN_ACTION(ZnRenameTask, MoveOrRename),
     {{{ZnTaskEvent::Done, E::SSTRm},
       {ZnTaskEvent::MoveUnknown, E::SSTRenameAgain},
       {ZnTaskEvent::Refused, E::SSTPutBack}}}},
    {E::SSTPutBack, ZN_ACTION(ZnRenameTask, PutBack), {{{ZnTaskEvent::Done, E::SSTError}}}},
    // The rename itself is done from here on.
    {E::SSTRm,
     ZN_ACTION(ZnRenameTask, RemoveDoomed),
     {{{ZnTaskEvent::Done, E::SSTDone},
       {ZnTaskEvent::NotNeeded, E::SSTDone},
       {ZnTaskEvent::ReadOnly, E::SSTMakeWritable},
       {ZnTaskEvent::StaysReadOnly, E::SSTProtectAgain},
       {ZnTaskEvent::Refused, E::SSTDone}}}},
    {E::SSTMakeWritable,
     ZN_ACTION(ZnRenameTask, MakeWritable),
     {{{ZnTaskEvent::Done, E::SSTRm}, {ZnTaskEvent::Refused, E::SSTDone}}}},
    {E::SSTProtectAgain,
     ZN_ACTION(ZnRenameTask, ProtectAgain),
     {{{ZnTaskEvent::Done, E::SSTDone}, {ZnTaskEvent::Refused, E::SSTDone}}}},
};

std::span<const ZnTaskRow> ZnRenameTask::Rows() { return kRows; }

namespace {

// What servers say, as code times 256 plus class: that they don't know the move command, or the level of information
// that replaces; and that a name is taken.
constexpr unsigned kUnknownMove[] = {22 * 256 + 2, 64 * 256 + 2, 1 * 256 + 1, 50 * 256 + 1};
constexpr unsigned kUnknownLevel[] = {124 * 256 + 1, 50 * 256 + 1, 87 * 256 + 1, 1 * 256 + 1, 22 * 256 + 2};
constexpr unsigned kTaken[] = {80 * 256 + 1, 183 * 256 + 1};
constexpr unsigned kDenied = 5 * 256 + 1;

template <size_t N>
bool IsOneOf(const unsigned (&refusals)[N], unsigned refusal) {
  return std::find(std::begin(refusals), std::end(refusals), refusal) != std::end(refusals);
}

// A name that any server takes and nobody uses.
ZnUniString NameAside() {
  ZnUniString name = "~h";
  for (uint32_t random = ZnRandom::RndNum(), digits = 6; digits > 0; digits--, random >>= 4)
    name.Append(u"0123456789ABCDEF"[random % 16]);
  return name + ".TMP";
}

}  // namespace

ZnSMBNFSNode* ZnRenameTask::Target() const {
  const ZnSMBNFSNode* directory = command().node2.Get();
  const ZnSMBNFSTree* share = ZnTreeOf(directory);
  if (!share) return nullptr;
  ZnSMBNFSNode* found = ZnEntryShownAs(*directory, command().name, share->config.linkstring);
  return found == command().node.Get() ? nullptr : found;
}

bool ZnRenameTask::StaysInDirectory() const { return command().node->parent == command().node2.Get(); }

// ---- the order at what is renamed, at what is in its way, and at the directory that it goes to
// -----------------------

void ZnRenameTask::AwaitTurns() {
  ZnSMBNFSNode* directory = command().node2.Get();
  if (!directory) return FailQuietly(ZnNFSEnum::NFSERR_STALE);
  const auto go = [this](const ZnSmbOutcome&) { TurnCame(); };
  TakeTurn(session().turns().Alone(*command().node.Get(), go));
  TakeTurn(session().turns().Beside(*directory, go));
  if (ZnSMBNFSNode* target = Target()) TakeTurn(session().turns().Alone(*target, go));
  TurnCame();
}

void ZnRenameTask::TurnCame() {
  if (std::all_of(turns_.begin(), turns_.end(), [](auto& turn) { return turn->IsThere(); })) Ended();
}

// What is to be renamed or replaced mustn't be open, nor anything below it. It is opened again, by its new path, when
// it is used next.
void ZnRenameTask::CloseFiles() {
  ZnWaitPlace place = session().openfiles().Close(*command().node.Get(), WhenAnswered());
  const ZnSMBNFSNode* target = Target();
  if (!place && target) place = session().openfiles().Close(*target, WhenAnswered());
  place ? Wait(std::move(place)) : Ended();
}

// ---- the ways to rename ---------------------------------------------------------------------------------------------

void ZnRenameTask::ChooseWay() {
  const ZnSMBNFSNode* directory = command().node2.Get();
  const ZnSMBNFSTree* from = tree();
  const ZnSMBNFSTree* to = ZnTreeOf(directory);
  if (!from || !to) return FailQuietly();
  command().fileobject = ZnFileAt(*from, command().node->Path());
  command().fileobject->attribs = command().node->fileobject.attribs;
  const ZnSMBNFSNode* target = Target();
  const bool taken = target && target->name == command().name;
  command().fileobject2 = ZnFileAt(*to, taken ? target->Path() : directory->PathInside() + command().name);
  Spare();
  // A link and a file that clients see under one name have two on the share.
  if (target && !taken) Doom(*ZnFileAt(*to, target->Path()), target);
  Ended(taken && MayReplace() ? ZnTaskEvent::Replaces : ZnTaskEvent::Done);
}

// Directories are left to those ways in which the server looks whether they are empty.
bool ZnRenameTask::MayReplace() const {
  return client().CanReplace() && !session().quirks().noreplace && !replacetried_ && StaysInDirectory() &&
         !command().node->IsDirectory();
}

void ZnRenameTask::Replace() {
  replacetried_ = true;
  const ZnUniString& path = command().fileobject2->path;
  const ZnUniString name = path.SubString(path.SearchReverse(u'\\') + 1);
  Await(client().Replace(caller(), *command().fileobject, name, WhenAnswered()));
}

void ZnRenameTask::MoveOrRename() {
  const ZnSMBCFileObject& from = *command().fileobject;
  const ZnSMBCFileObject& to = *command().fileobject2;
  const bool rename = StaysInDirectory() || (session().quirks().nomove && from.tid == to.tid);
  movetried_ = !rename;
  Await(rename ? client().Rename(caller(), from, to.path, WhenAnswered())
               : client().Move(caller(), from, to, WhenAnswered()));
}

// ---- what is in the way ---------------------------------------------------------------------------------------------

// What the tree doesn't know isn't touched, unless the server can replace it by itself.
void ZnRenameTask::ChooseRoom() {
  const ZnSMBNFSNode* directory = command().node2.Get();
  const ZnSMBNFSNode* taken = directory ? ZnEntryOfAnyCase(*directory, command().name) : nullptr;
  const ZnSMBNFSTree* share = ZnTreeOf(taken);
  command().replacedunknown = !taken;
  if (taken && share && taken->name != command().name) {
    // Whose case it will be after that is the server's choice, but for this one.
    command().name = taken->name;
    command().fileobject2 = ZnFileAt(*share, taken->Path());
  }
  if (MayReplace()) return Ended(ZnTaskEvent::Replaces);
  if (!taken || taken->IsDirectory() != command().node->IsDirectory()) {
    return Fail(session().reports().TextOf(refusal_), command().failure);
  }
  if (taken->IsDirectory()) return Ended(ZnTaskEvent::IsDirectory);
  ZnSMBCFileObject aside = *command().fileobject2;
  aside.path = aside.path.SubString(0, aside.path.SearchReverse(u'\\') + 1) + NameAside();
  Doom(aside, taken);
  command().fileobject2->attribs = Doomed()->attribs;
  Ended();
}

void ZnRenameTask::RemoveTarget() { Await(client().DeleteDirectory(caller(), *command().fileobject2, WhenAnswered())); }

void ZnRenameTask::MoveAside() {
  Await(client().Rename(caller(), *command().fileobject2, Doomed()->path, WhenAnswered()));
}

void ZnRenameTask::PutBack() {
  const ZnSMBCFileObject& place = *command().fileobject2;
  Await(Doomed() ? client().Rename(caller(), *Doomed(), place.path, WhenAnswered())
                 : client().CreateDirectory(caller(), place, WhenAnswered()));
}

// For the user: what has become of the file that was in the way.
ZnUniString ZnRenameTask::Remains() const {
  if (!Doomed()) return {};
  const ZnUniString place = Doomed()->share + Doomed()->path;
  switch (state()) {
    case E::SSTMakeRoom:
      return refusal_.Ok() ? " What has that name may now be " + place + "." : ZnUniString();
    case E::SSTRenameAgain:
    case E::SSTPutBack:
    case E::SSTRm:
    case E::SSTMakeWritable:
    case E::SSTProtectAgain:
      return " What had that name before is now " + place + ".";
    default:
      return {};
  }
}

// ---- other ways, when the server refuses ----------------------------------------------------------------------------

struct ZnRenameTask::OtherWay {
  E::SessionStatus refused;
  bool (ZnRenameTask::*applies)(const ZnSmbOutcome&) const;
  ZnTaskEvent event;
  bool told = false;  // the user reads of it, for the task may end well, or with another failure
};

const ZnRenameTask::OtherWay ZnRenameTask::kOtherWays[] = {
    {E::SSTReplace, &ZnRenameTask::CannotReplace, ZnTaskEvent::CannotReplace},
    {E::SSTRename, &ZnRenameTask::MoveIsUnknown, ZnTaskEvent::MoveUnknown},
    {E::SSTRename, &ZnRenameTask::NameIsTaken, ZnTaskEvent::NameTaken},
    {E::SSTRenameAgain, &ZnRenameTask::MoveIsUnknown, ZnTaskEvent::MoveUnknown},
    {E::SSTRenameAgain, &ZnRenameTask::Always, ZnTaskEvent::Refused, true},
    {E::SSTRm, &ZnRenameTask::Always, ZnTaskEvent::Refused, true},
    {E::SSTMakeWritable, &ZnRenameTask::Always, ZnTaskEvent::Refused, true},
    {E::SSTProtectAgain, &ZnRenameTask::Always, ZnTaskEvent::Refused, true},
};

std::optional<ZnTaskEvent> ZnRenameTask::EventOf(const ZnSmbOutcome& outcome) {
  refusal_ = ZnSmbOutcome();
  if (outcome.Ok() && state() == E::SSTCloseFiles) return ZnTaskEvent::Again;
  if (outcome.Refusal() == 0) return ZnSessionTask::EventOf(outcome);
  refusal_ = outcome;
  if (state() == E::SSTRm) {
    if (const auto event = EventOfRemoval(outcome)) return event;
  }
  for (const OtherWay& way : kOtherWays) {
    if (way.refused != state() || !command().node || !(this->*way.applies)(outcome)) continue;
    if (way.event == ZnTaskEvent::MoveUnknown) session().quirks().nomove = true;
    if (way.event == ZnTaskEvent::CannotReplace && outcome.Refusal() != kDenied) session().quirks().noreplace = true;
    if (way.told) Tell(outcome, state() == E::SSTRenameAgain ? ZnUniString() : Remains());
    command().failure = ZnSessionReports::StatusOf(outcome, state());
    return way.event;
  }
  return std::nullopt;
}

// Whether a rename from path to path can stand in for a move that the server doesn't know.
bool ZnRenameTask::MoveIsUnknown(const ZnSmbOutcome& refusal) const {
  return movetried_ && command().fileobject->tid == command().fileobject2->tid &&
         IsOneOf(kUnknownMove, refusal.Refusal());
}

// The entry itself in another case of its name is no other that could make room.
bool ZnRenameTask::NameIsTaken(const ZnSmbOutcome& refusal) const {
  if (!IsOneOf(kTaken, refusal.Refusal()) || !command().node2) return false;
  return ZnEntryOfAnyCase(*command().node2.Get(), command().name) != command().node.Get();
}

// Some servers don't replace what is read-only.
bool ZnRenameTask::CannotReplace(const ZnSmbOutcome& refusal) const {
  return refusal.Refusal() == kDenied || IsOneOf(kUnknownLevel, refusal.Refusal());
}
