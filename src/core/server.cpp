#include "core/server.h"

#include <algorithm>
#include <csignal>

#include "model/log_catalogue.h"

size_t std::hash<ZnSMBNFSCallKey>::operator()(const ZnSMBNFSCallKey& key) const noexcept {
  uint64_t caller = uint64_t{key.address} << 16 | key.port;
  uint64_t call = uint64_t{key.xid} << 8 | static_cast<uint64_t>(key.procedure);
  return std::hash<uint64_t>()(caller * 0x9E3779B97F4A7C15 ^ call);
}

namespace {

ZnSMBNFSCallKey KeyOf(const ZnInetAddr& source, uint32_t xid, int procedure) {
  return {source.AsUint32(), source.GetPort(), xid, procedure};
}

ZnSMBNFSCallKey KeyOf(const ZnSMBNFSCommand& command) { return KeyOf(command.source, command.xid, command.command); }

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
    : ZnNFSServer(loop, static_cast<unsigned>(config.port)),
      loop_(loop),
      config_(config),
      filesystem_(make(this, loop, config_)),
      stop_(this, &ZnSMBNFSServer::SignalCB, 0),
      buserror_(this, &ZnSMBNFSServer::SignalCB, SIGBUS),
      segmentfault_(this, &ZnSMBNFSServer::SignalCB, SIGSEGV),
      cleanup_(this, &ZnSMBNFSServer::TimeoutCallback),
      timer_(loop, &cleanup_) {
  ReadAddresses();
  if (config_.roothandle) TakeConfiguredRoot(*config_.roothandle);
  CatchSignals(process);
  ArmCleanUp();
}

ZnSMBNFSServer::~ZnSMBNFSServer() = default;

void ZnSMBNFSServer::ReadAddresses() {
  for (const ZnUniString& text : config_.addresses) {
    ZnInetAddr address;
    if (text == "*") {
      wildcard_ = true;
    } else if (text == "_") {
      addresses_.Append(ZnInetAddr::AddressLoopback());
    } else if (address.FromString(text, false)) {
      addresses_.Append(address);
    } else {
      Log403(text);
    }
  }
}

void ZnSMBNFSServer::CatchSignals(ZnProcess* process) {
  process->CatchSignal(SIGHUP, &stop_);
  process->CatchSignal(SIGTERM, &stop_);
  process->CatchSignal(SIGBUS, &buserror_);
  process->CatchSignal(SIGSEGV, &segmentfault_);
}

// --- Filters ---

bool ZnSMBNFSServer::CheckSource(const ZnInetAddr& source, uint32_t xid, int procedure) {
  if (anycall_ && xid == lastxid_) return false;
  anycall_ = true;
  lastxid_ = xid;
  if (inflight_.contains(KeyOf(source, xid, procedure))) return false;
  if (IsServed(source)) return true;
  ZnUniString known;
  for (const ZnInetAddr& address : addresses_) known += (known.IsEmpty() ? "" : ", ") + address.AsString(false);
  Log102(source, wildcard_ ? "not" : "only", known);
  return false;
}

// With a wildcard the list names those that aren't served, without one those that are.
bool ZnSMBNFSServer::IsServed(const ZnInetAddr& source) const {
  bool listed = std::any_of(addresses_.begin(), addresses_.end(),
                            [&](const ZnInetAddr& address) { return address.IsAddressEqual(source); });
  return listed != wildcard_;
}

bool ZnSMBNFSServer::CheckInited(const ZnInetAddr& source, uint32_t xid) {
  if (filesystem_->IsInitialised()) return true;
  SendAuthError(source, xid, ZnRPCEnum::AUTH_REJECTEDCRED);
  return false;
}

// --- Calls ---

template <class Args>
void ZnSMBNFSServer::Begin(int procedure, const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, Args& args) {
  if (!CheckSource(source, xid, procedure)) return;
  if (!CheckInited(source, xid)) return;
  auto* command = new ZnSMBNFSCommand(source, auth, xid, this);  // its own owner from here on
  command->command = procedure;
  command->args = std::move(args);
  inflight_.insert(KeyOf(*command));
  HandleCommand(command);
}

void ZnSMBNFSServer::ProcNull(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) {
  if (CheckSource(source, xid, 0)) SendSuccess(source, xid, ZnPacket());
}

void ZnSMBNFSServer::ProcGetattr(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) {
  DefineRoot(source, args);
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
  DefineRoot(source, args);
  Begin(17, source, auth, xid, args);
}

void ZnSMBNFSServer::TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes) {
  ZnNFSFileHandle handle;
  handle.bytes = bytes;
  filesystem_->_init(handle);
}

// The daemon never invents the root's handle: it is the one the host was given at mount time. Where the profile doesn't
// tell it, the first call to ask for attributes brings it.
void ZnSMBNFSServer::DefineRoot(const ZnInetAddr& source, const ZnNFSFileHandle& handle) {
  if (!filesystem_->IsInitialised() && IsServed(source)) filesystem_->_init(handle);
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
  delete command;
}

void ZnSMBNFSServer::StepTaken(const ZnSMBNFSCommand&, const ZnSMBNFSStep&) {}

void ZnSMBNFSServer::CommandEnds(const ZnSMBNFSCommand& command) { inflight_.erase(KeyOf(command)); }

void ZnSMBNFSServer::ForgetCall(const ZnSMBNFSCommand& command) {
  if (command.xid == lastxid_) anycall_ = false;
}

// --- Signals and the clean-up timer ---

void ZnSMBNFSServer::SignalCB(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch, unsigned code) {
  loop_->ExitEventLoop(static_cast<int>(code));
}

void ZnSMBNFSServer::TimeoutCallback(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch value) {
  if (value == ZnEvent::Withdrawn) return;
  filesystem_->CleanUpSessions();
  ArmCleanUp();
}

void ZnSMBNFSServer::ArmCleanUp() { timer_.Set(std::chrono::seconds(config_.CleanUpSeconds())); }
