// The queue: commands come in, the head takes its steps, and each makes way for the next.

#include "session/session.h"

using E = ZnSMBNFSEnum;

ZnSMBNFSSession::ZnSMBNFSSession(ZnSMBNFSNode* machine, ZnSMBNFSSessionHost* host,
                                 const ZnSMBNFSMachineConfig& machineConfig)
    : ZnSMBClient(host->eventloop()),
      host_(host),
      flushtimer_(host->eventloop(), &flushcallback_),
      probetimer_(host->eventloop(), &probecallback_) {
  machinenode = machine;
  config = machineConfig;
  lastactivity = ZnSteadyClock::now();
  host_->AddSession(this);
}

ZnSMBNFSSession::~ZnSMBNFSSession() {
  host_->RemoveSession(this);
  namequery_.reset();
  dnsquery_.reset();
  Disconnect();
  DropFiles();
  for (auto& [command, position] : queue_) {
    command->session = nullptr;
    if (E::IsOwn(command->sessioncommand)) delete command;
  }
}

void ZnSMBNFSSession::Request(Command* command, E::SessionCommand what) {
  command->sessioncommand = what;
  command->sessionstatus = E::SSTStart;
  command->fileobject.reset();
  command->fileobject2.reset();
  command->failure = ZnNFSEnum::NFS_OK;
  command->refusal = 0;
  if (what == E::SCRequestShares) return GetShares(*command);
  if (command->session == this) {
    if (FailsAtOnce(what)) return FailAtOnce(*command);
    queue_.TakeBack(command);
    if (queue_.Head() == command) Advance();
    return;
  }
  if (!E::IsOwn(what) && queue_.Count() >= kMostWaiting) return command->Drop();

  ZnSMBNFSSessionBase* former = command->session;
  command->session = this;
  queue_.Append(command);
  if (!E::IsOwn(what)) lastactivity = ZnSteadyClock::now();
  if (former) {  // it goes on at another machine, and the next command of the former one begins
    ZnWeakRef<ZnReferable> alive(&alive_);
    former->RemoveCommand(command);
    if (!alive) return;
  }
  if (FailsAtOnce(what)) return FailAtOnce(*command);
  StartNext();
}

void ZnSMBNFSSession::RemoveCommand(Command* command) {
  if (!E::IsOwn(command->sessioncommand)) lastactivity = ZnSteadyClock::now();
  if (!queue_.Remove(command)) return;
  AbandonCall();
  busy_ = false;
  StartNext();
}

void ZnSMBNFSSession::StartNext() {
  if (busy_ || queue_.IsEmpty()) return;
  busy_ = true;
  answered_ = false;
  FindEntryAgain(*queue_.Head());
  Advance();
}

// The head takes a step: now, or, when one is on the stack, after that. So a long queue that fails at once doesn't
// nest, and a step doesn't see the next one begin under it.
void ZnSMBNFSSession::Advance() {
  again_ = true;
  if (stepping_) return;
  ZnWeakRef<ZnReferable> alive(&alive_);
  stepping_ = true;
  while (again_) {
    again_ = false;
    if (queue_.IsEmpty() || queue_.HeadIsHandedOver()) break;
    HandleCommand(*queue_.Head());
    if (!alive) return;
  }
  stepping_ = false;
}

// The command may be gone afterwards, and this session too.
void ZnSMBNFSSession::Complete(Command& command) {
  queue_.HandOver(&command);
  host_->CompleteRequest(&command);
}

// The command that a look-up or a call of the client goes on for is no longer there: whatever may still come for it
// mustn't reach the next.
void ZnSMBNFSSession::AbandonCall() {
  namequery_.reset();
  dnsquery_.reset();
  if (IsBusy()) DropConnection();
}

// A machine that is pruned from within the completion of one of its commands leaves that command alone: it goes on up
// the stack, and finds its nodes gone.
void ZnSMBNFSSession::SendErrors() {
  Command* first = queue_.FirstWaiting();
  if (!first) return;
  size_t count = queue_.Count() - (queue_.HeadIsHandedOver() ? 1 : 0);
  ZnOSStream text;
  text << "The session was flushed with " << count << (count > 1 ? " commands" : " command") << " outstanding. "
       << (count > 1 ? "These commands" : "This command") << " will error.";
  Report(text.text());

  AbandonCall();
  Lives();
  ZnWeakRef<ZnReferable> alive(&alive_);
  const bool nested = stepping_;
  const bool flushing = flushing_;
  stepping_ = flushing_ = true;
  while (Command* command = queue_.FirstWaiting()) {
    HandleCommand(*command);
    if (!alive) return;
  }
  stepping_ = nested;
  flushing_ = flushing;
  if (!nested) again_ = false;
}
