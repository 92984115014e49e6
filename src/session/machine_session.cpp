#include "session/machine_session.h"

#include <algorithm>
#include <vector>

#include "config/smbnfs_config.h"
#include "runtime/os_stream.h"
#include "session/conversation.h"
#include "session/file_turns.h"
#include "session/open_files.h"
#include "session/reports.h"
#include "session/share_trees.h"
#include "session/task_kinds.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

bool HasPassed(ZnMoment since, int32_t seconds) { return ZnSteadyClock::now() > since + std::chrono::seconds(seconds); }

}  // namespace

ZnMachineSession::ZnMachineSession(ZnSMBNFSNode* machine, ZnSMBNFSSessionHost* host,
                                   const ZnSMBNFSMachineConfig& machineConfig)
    : host_(host),
      wakeups_(host->eventloop()),
      client_(host->eventloop(), this),
      reports_(std::make_unique<ZnSessionReports>(machinenode, config, client_)),
      conversation_(std::make_unique<ZnConversation>(host, config, client_, *reports_, wakeups_,
                                                     [this] { ConversationIsOver(); })),
      shares_(std::make_unique<ZnShareTrees>(client_, wakeups_, trees)),
      turns_(std::make_unique<ZnFileTurns>(wakeups_)),
      openfiles_(std::make_unique<ZnOpenFiles>(host->eventloop(), client_, wakeups_, config, *reports_)) {
  machinenode = machine;
  config = machineConfig;
  lastactivity = ZnSteadyClock::now();
  host_->AddSession(this);
}

ZnMachineSession::~ZnMachineSession() {
  host_->RemoveSession(this);
  for (const Entry& entry : commands_) entry.command->session = nullptr;
  commands_.clear();
  DropConnection();
}

// ---- commands -------------------------------------------------------------------------------------------------------

void ZnMachineSession::Request(ZnSMBNFSCommand* command, E::SessionCommand what) {
  command->sessioncommand = what;
  command->sessionstatus = E::SSTStart;
  command->fileobject.reset();
  command->fileobject2.reset();
  command->failure = ZnNFSEnum::NFS_OK;
  command->refusal = 0;
  if (what == E::SCRequestShares) return GetShares(*command);
  if (command->session != this && !Take(*command)) return;
  lastactivity = ZnSteadyClock::now();
  if (flushing_) {
    command->sessionstatus = E::SSTError;
    return host_->CompleteRequest(command);
  }
  Entry& entry = *index_.at(command);
  entry.task = ZnMakeTask(*this, *command);
  entry.task->Run();
}

// False, and the command is gone, if there are too many.
bool ZnMachineSession::Take(ZnSMBNFSCommand& command) {
  if (commands_.size() >= kMostCommands) {
    command.Drop();
    return false;
  }
  if (command.session) command.session->RemoveCommand(&command);  // it goes on at another machine
  command.session = this;
  command.answered = false;
  index_.emplace(&command, commands_.insert(commands_.end(), {&command, nullptr}));
  return true;
}

void ZnMachineSession::RemoveCommand(ZnSMBNFSCommand* command) {
  lastactivity = ZnSteadyClock::now();
  const auto found = index_.find(command);
  if (found == index_.end()) return;
  commands_.erase(found->second);
  index_.erase(found);
}

void ZnMachineSession::Over(ZnSessionTask& task) {
  ZnSMBNFSCommand& command = task.command();
  index_.at(&command)->task.reset();
  host_->CompleteRequest(&command);
}

// The shares are those of the configuration: the server isn't asked, and whoever waits for it isn't waited for.
void ZnMachineSession::GetShares(ZnSMBNFSCommand& command) {
  if (command.shares.IsEmpty()) {
    ZnDList<ZnUniString> names;
    ZnSMBNFSConfig::GetShareList(config.user, config.machine, names);
    const ZnMachine server(config.nbtname, ZnMachine::Server);
    for (const ZnUniString& name : names) {
      ZnSMBCShareObject share(server, name, Values::ServiceDisk);
      share.share = name;  // shown as it is configured
      command.shares.Append(share);
    }
  }
  command.sessionstatus = E::SSTGetShares;
  host_->CompleteRequest(&command);
}

// A machine that is pruned from within the completion of one of its commands leaves that command alone: it goes on up
// the stack, and finds its nodes gone.
void ZnMachineSession::SendErrors() {
  std::vector<ZnSMBNFSCommand*> failing;
  for (const Entry& entry : commands_) {
    if (entry.task) failing.push_back(entry.command);
  }
  if (failing.empty()) return;
  const size_t count = failing.size();
  ZnOSStream text;
  text << "The session was flushed with " << count << (count > 1 ? " commands" : " command") << " outstanding. "
       << (count > 1 ? "These commands" : "This command") << " will error.";
  reports_->Tell(*failing.front(), failing.front()->sessionstatus, Values::CmdNone, text.text());

  conversation_->Flush();
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const bool nested = std::exchange(flushing_, true);
  for (ZnSMBNFSCommand* command : failing) {
    const auto found = index_.find(command);
    if (found == index_.end() || !found->second->task) continue;  // a completion has ended this one too
    command->sessionstatus = E::SSTError;
    Over(*found->second->task);
    if (!alive) return;
  }
  flushing_ = nested;
}

ZnNFSEnum::Status ZnMachineSession::ConvertError(const ZnSMBNFSCommand& command) const {
  return command.failure == ZnNFSEnum::NFS_OK ? ZnNFSEnum::NFSERR_IO : command.failure;
}

ZnUniString ZnMachineSession::TableAsString() {
  ZnUniString text = ZnSessionTask::RowsAsString("*", ZnSessionTask::CommonRows());
  text += "* * * Lost SSTStart\n* * * Failed SSTError\n";
  for (const ZnTaskKind& kind : ZnTaskKinds()) {
    text += ZnSessionTask::RowsAsString(E::SessionCommandString(kind.what), kind.rows);
  }
  return text;
}

// ---- the conversation -----------------------------------------------------------------------------------------------

unsigned ZnMachineSession::serverclass() const { return conversation_->serverclass(); }

int32_t ZnMachineSession::timeoffset() const { return conversation_->timeoffset(); }

ZnTimeVal ZnMachineSession::ServerLocal(const ZnTimeVal& time) const {
  if (time.IsZero()) return time;
  const int64_t seconds = int64_t{time.seconds} - timeoffset();
  if (seconds <= 0 || seconds > UINT32_MAX) return time;
  return {static_cast<uint32_t>(seconds), time.microseconds};
}

void ZnMachineSession::ConnectionLost(Values::Reason reason) { conversation_->Lost(reason); }

void ZnMachineSession::DropConnection() { conversation_->End(); }

// Ids of shares and files mean nothing on another connection, so they go with this one.
void ZnMachineSession::ConversationIsOver() {
  shares_->Forget();
  openfiles_->DropAll();
}

void ZnMachineSession::NodeGoes(ZnSMBNFSNode& node) {
  if (node.file) openfiles_->CloseAfterUse(*node.file);
}

// What idles for long goes with its connection, unclosed. Handles stay good: the next command connects again.
bool ZnMachineSession::CleanUp() {
  const bool idle = commands_.empty() && HasPassed(lastactivity, std::max(config.sessiontimeout, 1));
  if (IsConnected() && idle) DropConnection();
  if (IsConnected()) openfiles_->CloseIdle();
  shares_->DropClosing();
  return !IsConnected();
}
