#include "session/task.h"

#include "model/node.h"
#include "session/conversation.h"
#include "session/failure_words.h"
#include "session/machine_session.h"
#include "session/names_held.h"
#include "session/reports.h"
#include "session/share_paths.h"
#include "session/share_trees.h"

using E = ZnSMBNFSEnum;
using Event = ZnTaskEvent;
using Values = ZnSMBClientValues;

namespace {

// Callers of one host differ by their user, those of several by their address.
ZnSmbCaller CallerOf(const ZnSMBNFSCommand& command) { return uint64_t{command.uid} << 32 | command.source.AsUint32(); }

}  // namespace

const ZnTaskRow ZnSessionTask::kCommonRows[] = {
    {E::SSTStart, ZN_ACTION(ZnSessionTask, Begin), {{{Event::Done, E::SSTConnect}, {Event::NotNeeded, E::SSTReady}}}},
    {E::SSTConnect, ZN_ACTION(ZnSessionTask, EnterConversation), {{{Event::Done, E::SSTConnectTree}}}},
    {E::SSTConnectTree,
     ZN_ACTION(ZnSessionTask, ConnectShare),
     {{{Event::Done, E::SSTReady}}},
     ZnTaskRow::kChangesNothing},
};

ZnSessionTask::ZnSessionTask(ZnMachineSession& session, ZnSMBNFSCommand& command, std::span<const ZnTaskRow> rows)
    : session_(session), command_(command), rows_(rows), caller_(CallerOf(command)) {}

ZnSessionTask::~ZnSessionTask() = default;

ZnSmbClient& ZnSessionTask::client() const { return session_.client(); }

ZnSMBNFSTree* ZnSessionTask::tree() const { return ZnTreeOf(command_.node.Get()); }

std::span<const ZnTaskRow> ZnSessionTask::CommonRows() { return kCommonRows; }

// ---- walking the table ----------------------------------------------------------------------------------------------

void ZnSessionTask::Run() { Go(E::SSTStart); }

const ZnTaskRow* ZnSessionTask::Row() const {
  for (const std::span<const ZnTaskRow> rows : {rows_, CommonRows()}) {
    for (const ZnTaskRow& row : rows) {
      if (row.state == state()) return &row;
    }
  }
  return nullptr;
}

// A state that is reached while an action is on the stack is entered when that has returned.
void ZnSessionTask::Go(E::SessionStatus next) {
  command_.sessionstatus = next == E::SSTReady ? rows_.front().state : next;
  moved_ = true;
  if (!stepping_) Step();
}

void ZnSessionTask::Step() {
  stepping_ = true;
  while (moved_) {
    moved_ = false;
    const ZnTaskRow* row = Row();
    if (!row) return session_.Over(*this);  // SSTDone, SSTError
    if (!command_.node && (row->traits & ZnTaskRow::kWithoutNode) == 0) {
      NodeHasGone();
    } else {
      (this->*row->action)();
    }
  }
  stepping_ = false;
}

// What the table has no way for fails.
void ZnSessionTask::Ended(ZnTaskEvent event) {
  for (const ZnTaskBranch& branch : Row()->next) {
    if (branch.on == event) return Go(branch.next);
  }
  FailQuietly();
}

void ZnSessionTask::Answered(const ZnSmbOutcome& told) {
  const ZnSmbOutcome outcome = told;  // may go with the call
  if (call_ && (outcome.Ok() || outcome.Refusal() != 0)) command_.answered = true;
  command_.refusal = outcome.Refusal();
  if (state() == E::SSTConnect) return outcome.Ok() ? LetThrough() : NotLetThrough();
  if (const auto event = EventOf(outcome)) return Ended(*event);
  if (MayBeginAgain(outcome)) {
    command_.retried = true;
    BeginsAgain();
    return Go(E::SSTStart);
  }
  Fails(state(), TextOf(outcome) + Remains(), outcome, ZnSessionReports::StatusOf(outcome, state()));
}

std::optional<ZnTaskEvent> ZnSessionTask::EventOf(const ZnSmbOutcome& outcome) {
  return outcome.Ok() ? std::optional(Event::Done) : std::nullopt;
}

ZnUniString ZnSessionTask::TextOf(const ZnSmbOutcome& outcome) const { return session_.reports().TextOf(outcome); }

// Servers close connections that were idle for long, and we may learn of that only by our next request. The command
// then begins again on a new connection, once, before the user sees an error. The rule, so that nothing is done twice:
//  - if the server can't have acted on the request, since it never had all of it, any command begins again;
//  - else, if the connection ended before anything was answered to the command, only a request that changes nothing on
//    the server is sent again.
// A time-out isn't an idle server's: it isn't tried again.
bool ZnSessionTask::MayBeginAgain(const ZnSmbOutcome& outcome) const {
  if (command_.retried || command_.answered || outcome.Ok()) return false;
  if (outcome.unserved) return true;
  return outcome.reason == Values::ErrDisconnect && (Row()->traits & ZnTaskRow::kChangesNothing) != 0;
}

// ---- the rows in front ----------------------------------------------------------------------------------------------

// All is there, usually.
void ZnSessionTask::Begin() {
  ZnConversation& conversation = session_.conversation();
  if (conversation.FailsAtOnce()) return FailQuietly();
  const bool rested = !command_.answered && session_.Count() == 1;
  if (rested) conversation.LookWhetherItStands();
  const ZnSMBNFSTree* share = tree();
  const bool stands = conversation.Stands() && share && share->connected;
  Ended(stands && NamesNotHeld(*share).IsEmpty() ? Event::NotNeeded : Event::Done);
}

void ZnSessionTask::EnterConversation() {
  ZnConversation& conversation = session_.conversation();
  conversation.Stands() ? Ended() : Wait(conversation.Enter(WhenAnswered()));
}

// A server that has let us in just now isn't one that has hung up long ago.
void ZnSessionTask::LetThrough() {
  command_.answered = true;
  Ended();
}

// One of those who waited tells the user.
void ZnSessionTask::NotLetThrough() {
  ZnConversation::Failure& failure = session_.conversation().failure();
  const ZnNFSEnum::Status status = ZnSessionReports::StatusOf(failure.outcome, failure.step);
  if (std::exchange(failure.told, true)) return FailQuietly(status);
  const ZnUniString text = failure.text.IsEmpty() ? TextOf(failure.outcome) : failure.text;
  Fails(failure.step, text, failure.outcome, status);
}

ZnUniString ZnSessionTask::NamesNotHeld(const ZnSMBNFSTree& share) const {
  return ZnNamesNotHeld(command_, share, client().nameencoding());
}

void ZnSessionTask::ConnectShare() {
  ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  const ZnUniString missing = NamesNotHeld(*share);
  if (!missing.IsEmpty()) return Fail(missing, ZnNFSEnum::NFSERR_ACCES);
  if (share->connected) return Ended();
  Wait(session_.shares().Connect(*share, WhenAnswered()));
}

// ---- failures -------------------------------------------------------------------------------------------------------

void ZnSessionTask::Tell(const ZnSmbOutcome& outcome, const ZnUniString& besides) {
  session_.reports().Tell(command_, state(), outcome.lastcommand, TextOf(outcome) + besides);
}

void ZnSessionTask::Fail(const ZnUniString& text, ZnNFSEnum::Status status) { Fails(state(), text, {}, status); }

void ZnSessionTask::Fails(E::SessionStatus step, const ZnUniString& text, const ZnSmbOutcome& outcome,
                          ZnNFSEnum::Status status) {
  const ZnUniString advice = ZnFailureWords::Advice(step, outcome.reason, outcome.Refusal(), status);
  session_.reports().Tell(command_, step, outcome.lastcommand, advice.IsEmpty() ? text : text + "; " + advice);
  FailQuietly(status);
}

void ZnSessionTask::FailQuietly(ZnNFSEnum::Status status) {
  command_.failure = status;
  Go(E::SSTError);
}

// What was moved out of a rename's way mustn't be lost from sight.
void ZnSessionTask::NodeHasGone() {
  command_.refusal = 0;  // the last step, at least, was done
  const ZnUniString aside = Remains();
  aside.IsEmpty() ? FailQuietly() : Fail("What was to be renamed has gone." + aside, ZnNFSEnum::NFSERR_STALE);
}

// ---- printing -------------------------------------------------------------------------------------------------------

namespace {

// By ZnTaskEvent.
constexpr const char* kEventNames[] = {"None",        "Done",          "NotNeeded",   "Again",         "Gone",
                                       "NotOpen",     "Opened",        "ReadOnly",    "NameTaken",     "Replaces",
                                       "MoveUnknown", "CannotReplace", "IsDirectory", "StaysReadOnly", "Refused",
                                       "Lost",        "Failed"};
static_assert(std::size(kEventNames) == static_cast<size_t>(Event::Failed) + 1);

}  // namespace

ZnUniString ZnSessionTask::RowsAsString(const ZnUniString& what, std::span<const ZnTaskRow> rows) {
  ZnUniString text;
  for (const ZnTaskRow& row : rows) {
    for (const ZnTaskBranch& branch : row.next) {
      if (branch.on == Event::None) continue;
      text += what + " " + E::SessionStatusString(row.state) + " " + row.name + " " +
              kEventNames[static_cast<size_t>(branch.on)] + " " + E::SessionStatusString(branch.next) + "\n";
    }
  }
  return text;
}
