#include "core/server.h"

#include <algorithm>
#include <csignal>

#include "runtime/keyed_hash.h"

namespace {

ZnCallKey KeyOf(const ZnSMBNFSCommand& command) {
  return {command.source, command.xid, command.procedure->number, command.argumentshash};
}

// Tells calls apart that a caller numbers alike. All arguments but the data of a WRITE are shorter than what is looked
// at, and of that its file, place, length and beginning are.
uint64_t HashOf(const ZnXdrReader& arguments) {
  constexpr size_t kLooked = 1536;
  return ZnKeyedHash(arguments.Where(), std::min(arguments.Remaining(), kLooked)) ^ arguments.Remaining();
}

}  // namespace

ZnSMBNFSServer::ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config)
    : ZnSMBNFSServer(process, loop, config, [](auto* server, auto* eventloop, const auto& settings) {
        return std::make_unique<ZnSMBNFSFileSystem>(server, eventloop, settings);
      }) {}

ZnSMBNFSServer::ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config,
                               MakeFileSystem make)
    : ZnRPCServer(loop, static_cast<unsigned>(config.port), ZnCallerFilter::SocketAddress(config)),
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

// --- Calls ---

void ZnSMBNFSServer::HandleCall(const ZnRPCMessageFromClient& call, ZnXdrReader& arguments, const ZnInetAddr& source) {
  const ZnRPCCallBody& body = call.call_body;
  const ZnProgram* program = ZnFindProgram(body.program);
  if (!program) return SendMiscError(source, call.xid, ZnRPCEnum::PROG_UNAVAIL);
  if (program->number == ZnNFSEnum::kProgram && !callers_.ServesPort(source))
    return SendAuthError(source, call.xid, ZnRPCEnum::AUTH_TOOWEAK);
  // The program's number stands where others give the versions they serve: callers have always seen it so.
  if (body.version != program->version) return SendProgMismatch(source, call.xid, program->number, program->number);
  if (body.procedure >= program->procedures.size()) return SendMiscError(source, call.xid, program->beyond);
  const ZnProcedure& procedure = program->procedures[body.procedure];
  const ZnCallKey key{source, call.xid, body.procedure, HashOf(arguments)};
  if (!Repeats(procedure, key)) Begin(procedure, call, key, arguments);
}

bool ZnSMBNFSServer::Repeats(const ZnProcedure& procedure, const ZnCallKey& call) {
  if (duplicates_.IsInFlight(call)) return true;
  if (procedure.onrepeat == ZnOnRepeat::ServeAnew) return false;
  const ZnPacket* reply = duplicates_.FindReply(call);
  if (reply) SendAgain(call.caller, *reply);
  return reply != nullptr;
}

void ZnSMBNFSServer::Begin(const ZnProcedure& procedure, const ZnRPCMessageFromClient& call, const ZnCallKey& key,
                           ZnXdrReader& arguments) {
  auto command = std::make_unique<ZnSMBNFSCommand>(key.caller, call.xid, this);
  command->procedure = &procedure;
  command->uid = call.call_body.credentials.auth_body.uid;
  command->argumentshash = key.arguments;
  if (!procedure.arguments.decode(arguments, command->args))
    return SendMiscError(key.caller, call.xid, ZnRPCEnum::GARBAGE_ARGS);
  if (!procedure.reply) return SendMiscError(key.caller, call.xid, ZnRPCEnum::PROC_UNAVAIL);
  if (!HasRoot(procedure, command->args)) return SendAuthError(key.caller, call.xid, ZnRPCEnum::AUTH_REJECTEDCRED);
  begun_ = command.get();
  HandleCommand(command.release());  // its own owner from here on
  if (begun_) duplicates_.Begin(key);
  begun_ = nullptr;
}

void ZnSMBNFSServer::TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes) {
  ZnNFSFileHandle handle;
  handle.bytes = bytes;
  filesystem_->_init(handle);
}

// The daemon never invents the root's handle: it is the one the host was given at mount time. Where the profile doesn't
// tell it, the first call to ask for attributes brings it.
bool ZnSMBNFSServer::HasRoot(const ZnProcedure& procedure, const ZnSMBNFSArguments& arguments) {
  if (procedure.root == ZnRoot::NotNeeded || filesystem_->IsInitialised()) return true;
  if (procedure.root == ZnRoot::Needed) return false;
  filesystem_->_init(procedure.arguments.handle(arguments));
  return true;
}

// --- Commands ---

void ZnSMBNFSServer::HandleCommand(ZnSMBNFSCommand* command) {
  if (!command->procedure) return delete command;  // nobody called: it has done what it was for
  const std::span<const ZnStep> steps = command->procedure->steps;
  while (!command->failed && command->nextstep < steps.size()) {
    const ZnStep& step = steps[command->nextstep++];
    StepTaken(*command, step);
    const ZnStepOutcome outcome = step.action(*filesystem_, *command);
    if (outcome == ZnStepOutcome::Called) return;
    command->failed = outcome == ZnStepOutcome::Refused;
  }
  Reply(command);
}

void ZnSMBNFSServer::Reply(ZnSMBNFSCommand* command) {
  const ZnProcedure& procedure = *command->procedure;
  SendSuccess(command->source, command->xid, [&](ZnXdrWriter& out) { procedure.reply(*filesystem_, *command, out); });
  if (procedure.onrepeat == ZnOnRepeat::SameReply) duplicates_.Keep(KeyOf(*command), LastReply());
  delete command;
}

void ZnSMBNFSServer::StepTaken(const ZnSMBNFSCommand&, const ZnStep&) {}

// A command that ends in the turn of its call was never in flight: no repetition can have come meanwhile.
void ZnSMBNFSServer::CommandEnds(const ZnSMBNFSCommand& command) {
  if (&command == begun_) {
    begun_ = nullptr;
  } else {
    duplicates_.End(KeyOf(command));
  }
}

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
