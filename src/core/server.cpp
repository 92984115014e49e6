#include "core/server.h"

#include <csignal>

#include "runtime/keyed_hash.h"

namespace {

ZnCallKey KeyOf(const ZnSMBNFSCommand& command) {
  return {command.source, command.xid, static_cast<uint32_t>(command.command), command.argumentshash};
}

const ZnSMBNFSStep* FindStep(const ZnSMBNFSProcedure& procedure, ZnSMBNFSEnum::Status status) {
  for (const ZnSMBNFSStep& step : procedure.steps) {
    if (step.on == status) return &step;
  }
  return nullptr;
}

}  // namespace

ZnSMBNFSServer::ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config)
    : ZnSMBNFSServer(process, loop, config, [](auto* server, auto* eventloop, const auto& settings) {
        return std::make_unique<ZnSMBNFSFileSystem>(server, eventloop, settings);
      }) {}

ZnSMBNFSServer::ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config,
                               MakeFileSystem make)
    : ZnNFSServer(loop, static_cast<unsigned>(config.port), ZnCallerFilter::SocketAddress(config)),
      loop_(loop),
      config_(config),
      filesystem_(make(this, loop, config_)),
      callers_(loop, config_),
      stop_(this, &ZnSMBNFSServer::SignalCB, 0),
      buserror_(this, &ZnSMBNFSServer::SignalCB, SIGBUS),
      segmentfault_(this, &ZnSMBNFSServer::SignalCB, SIGSEGV),
      hangup_(this, &ZnSMBNFSServer::HangUpCB),
      cleanup_(this, &ZnSMBNFSServer::TimeoutCallback),
      timer_(loop, &cleanup_) {
  if (config_.roothandle) TakeConfiguredRoot(*config_.roothandle);
  CatchSignals(process);
  ArmCleanUp();
}

ZnSMBNFSServer::~ZnSMBNFSServer() = default;

void ZnSMBNFSServer::CatchSignals(ZnProcess* process) {
  process->CatchSignal(SIGHUP, &hangup_);
  process->CatchSignal(SIGTERM, &stop_);
  process->CatchSignal(SIGBUS, &buserror_);
  process->CatchSignal(SIGSEGV, &segmentfault_);
}

// --- Filters ---

void ZnSMBNFSServer::HandleRpcMessage(ZnRPCMessageFromClient& message, ZnRPCAuthBlock& credentials,
                                      const ZnInetAddr& source) {
  const ZnRPCCallBody& body = message.call_body;
  if (body.program == kNfsProgram) {
    if (!callers_.ServesPort(source)) return SendAuthError(source, message.xid, ZnRPCEnum::AUTH_TOOWEAK);
    const uint64_t arguments = ZnKeyedHash(body.rpc_data.Data(), body.rpc_data.Length());
    call_ = {source, message.xid, body.procedure, arguments};
    if (duplicates_.IsInFlight(call_)) return;
    if (const ZnPacket* reply = duplicates_.FindReply(call_)) return SendAgain(source, *reply);
  }
  ZnNFSServer::HandleRpcMessage(message, credentials, source);
}

bool ZnSMBNFSServer::CheckInited(const ZnInetAddr& source, uint32_t xid) {
  if (filesystem_->IsInitialised()) return true;
  SendAuthError(source, xid, ZnRPCEnum::AUTH_REJECTEDCRED);
  return false;
}

// --- Calls ---

template <class Args>
void ZnSMBNFSServer::Begin(int procedure, const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, Args& args) {
  if (!CheckInited(source, xid)) return;
  auto* command = new ZnSMBNFSCommand(source, auth, xid, this);  // its own owner from here on
  command->command = procedure;
  command->argumentshash = call_.arguments;
  command->args = std::move(args);
  duplicates_.Begin(KeyOf(*command));
  HandleCommand(command);
}

void ZnSMBNFSServer::ProcGetattr(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) {
  DefineRoot(args);
  Begin(1, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcSetattr(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSSattrargs& args) {
  Begin(2, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcLookup(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) {
  Begin(4, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcReadlink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) {
  Begin(5, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcRead(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSReadargs& args) {
  Begin(6, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcWrite(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSWriteargs& args) {
  Begin(8, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcCreate(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSCreateargs& args) {
  Begin(9, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcRemove(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) {
  Begin(10, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcRename(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSRenameargs& args) {
  Begin(11, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcLink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSLinkargs& args) {
  Begin(12, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcSymlink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSSymlinkargs& args) {
  Begin(13, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcMkdir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSCreateargs& args) {
  Begin(14, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcRmdir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) {
  Begin(15, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcReaddir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSReaddirargs& args) {
  Begin(16, source, auth, xid, args);
}

void ZnSMBNFSServer::ProcStatfs(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) {
  DefineRoot(args);
  Begin(17, source, auth, xid, args);
}

void ZnSMBNFSServer::TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes) {
  ZnNFSFileHandle handle;
  handle.bytes = bytes;
  filesystem_->_init(handle);
}

// The daemon never invents the root's handle: it is the one the host was given at mount time. Where the profile doesn't
// tell it, the first call to ask for attributes brings it.
void ZnSMBNFSServer::DefineRoot(const ZnNFSFileHandle& handle) {
  if (!filesystem_->IsInitialised()) filesystem_->_init(handle);
}

// --- Commands ---

void ZnSMBNFSServer::HandleCommand(ZnSMBNFSCommand* command) {
  const ZnSMBNFSProcedure* procedure = ZnFindProcedure(command->command);
  while (procedure && command->status != ZnSMBNFSEnum::STError) {
    const ZnSMBNFSStep* step = FindStep(*procedure, command->status);
    if (!step) {
      procedure = nullptr;
      break;
    }
    StepTaken(*command, *step);
    command->status = step->next;
    switch (step->action(*filesystem_, *command)) {
      case ZnSMBNFSOutcome::Called:
        return;
      case ZnSMBNFSOutcome::GoOn:
        break;
      case ZnSMBNFSOutcome::Refused:
        command->status = ZnSMBNFSEnum::STError;
        break;
      case ZnSMBNFSOutcome::Reply:
        Reply(command, *procedure);
        return;
    }
  }
  if (procedure) {
    Reply(command, *procedure);
  } else {
    delete command;
  }
}

void ZnSMBNFSServer::Reply(ZnSMBNFSCommand* command, const ZnSMBNFSProcedure& procedure) {
  procedure.reply(*this, *filesystem_, *command);
  if (procedure.onrepeat == ZnOnRepeat::SameReply) duplicates_.Keep(KeyOf(*command), LastReply());
  delete command;
}

void ZnSMBNFSServer::StepTaken(const ZnSMBNFSCommand&, const ZnSMBNFSStep&) {}

void ZnSMBNFSServer::CommandEnds(const ZnSMBNFSCommand& command) { duplicates_.End(KeyOf(command)); }

// --- Signals and the clean-up timer ---

// Whoever sends it has edited the profile, and wants to hear if it can't be used.
void ZnSMBNFSServer::HangUpCB(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch) {
  filesystem_->FollowProfile(true);
}

void ZnSMBNFSServer::SignalCB(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch, unsigned code) {
  loop_->ExitEventLoop(static_cast<int>(code));
}

void ZnSMBNFSServer::TimeoutCallback(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch value) {
  if (value == ZnEvent::Withdrawn) return;
  filesystem_->CleanUpSessions();
  ArmCleanUp();
}

void ZnSMBNFSServer::ArmCleanUp() { timer_.Set(std::chrono::seconds(filesystem_->serverconfig().CleanUpSeconds())); }
