#include "session/conversation.h"

#include <algorithm>

#include "runtime/checksum.h"
#include "runtime/sys_info.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

// Whoever fails faster than this holds nobody up, so each call may try for itself.
constexpr std::chrono::milliseconds kQuick{250};
// From the beginning of one attempt to the next.
constexpr std::chrono::seconds kBetweenAttempts{5};
// For so long after the last call attempts go on. When all is quiet, the next call tries for itself, and waits.
constexpr std::chrono::seconds kInterest{60};
// How long to wait for a machine to take a connection when it has just left a request unanswered.
constexpr uint32_t kSuspectSeconds = 2;

constexpr int32_t kAsTheServerSays = -1;
constexpr int32_t kNoOffset = -2;  // the same for servers of the oldest dialect, which say nothing

// What a server can do.
enum ServerClass : unsigned { kCore = 0, kNamelessNT = 1, kWindowsNT = 2, kOther = 3 };

unsigned ClassOf(const ZnSMBServerInfo& server) {
  if (server.dialect == Values::DialectCORE) return kCore;
  if (server.dialect != Values::DialectNT) return kOther;
  if (server.nativeos.IsEmpty()) return kNamelessNT;
  return server.nativeos.StartsWith("Windows NT") ? kWindowsNT : kOther;
}

}  // namespace

ZnConversation::ZnConversation(ZnSMBNFSSessionHost* host, const ZnSMBNFSMachineConfig& config, ZnSmbClient& client,
                               ZnSessionReports& reports, ZnWakeups& wakeups, std::function<void()> over)
    : config_(config),
      client_(client),
      reports_(reports),
      over_(std::move(over)),
      finder_(host, config, [this](bool found) { AddressFound(found); }),
      waiting_(wakeups),
      probetimer_(host->eventloop(), &probecallback_) {}

bool ZnConversation::FailsAtOnce() {
  if (unreachable_) lastrefused_ = ZnSteadyClock::now();
  return unreachable_;
}

void ZnConversation::LookWhetherItStands() {
  if (Stands() && client_.HasHungUp()) End();
}

ZnWaitPlace ZnConversation::Enter(ZnSmbDone done) {
  ZnWaitPlace place = waiting_.Enter(std::move(done));
  if (!trying_) Try();
  return place;
}

// ---- beginning one --------------------------------------------------------------------------------------------------

void ZnConversation::Try() {
  trying_ = true;
  attempt_ = ZnSteadyClock::now();
  finder_.Find();
}

void ZnConversation::AddressFound(bool found) {
  if (found) return Connect();
  NotReached();
  Fails(E::SSTGetAddress, finder_.Tried(), {Values::ErrConnect});
}

void ZnConversation::Connect() {
  attempt_ = ZnSteadyClock::now();
  ApplySettings();
  reports_.TakeAddress(finder_.address());
  ZnMachine server(config_.nbtname, ZnMachine::Server);
  server.Name(finder_.address());
  connecting_ = client_.Connect(server, CallingName(), config_.winname, config_.password,
                                [this](const ZnSmbOutcome& outcome) { Connected(outcome); });
}

// The record may have been loaded again since the last connection.
void ZnConversation::ApplySettings() {
  ZnSmbSettings settings;
  settings.replytimeout = static_cast<uint32_t>(std::max(config_.smbtimeout, 1));
  if (suspect_) settings.replytimeout = std::min(settings.replytimeout, kSuspectSeconds);
  settings.domain = config_.domain;
  settings.rules = {config_.cleartext, config_.minauth, config_.signing};
  settings.encoding = config_.encoding;
  client_.Settings(settings);
}

// Digits first: a NetBIOS name holds 15 characters, and two users of one host stay distinct this way.
ZnUniString ZnConversation::CallingName() const {
  const ZnUniString name = config_.user + ZnSysInfoHostName();
  return ZnUniString::CreateFromUnsigned(ZnCheckSum::Sum(name)) + name;
}

// What was needed to log on isn't kept.
void ZnConversation::Connected(const ZnSmbOutcome& told) {
  const ZnSmbOutcome outcome = told;
  connecting_.reset();
  if (!outcome.Ok()) {
    if (outcome.Refusal() == 0) {
      finder_.Forget();
      NotReached();
    }
    return Fails(E::SSTConnect, {}, outcome);
  }
  Lives();
  ApplySettings();
  serverclass_ = ClassOf(client_.server());
  timeoffset_ = config_.timeoffset;
  if (serverclass_ == kCore) {
    if (timeoffset_ == kAsTheServerSays || timeoffset_ == kNoOffset) timeoffset_ = 0;
  } else if (timeoffset_ == kAsTheServerSays) {
    timeoffset_ = client_.server().timezone * 60;
  }
  trying_ = false;
  waiting_.WakeAll();
}

void ZnConversation::Fails(E::SessionStatus step, const ZnUniString& text, const ZnSmbOutcome& outcome) {
  trying_ = false;
  failure_ = {step, text, outcome, waiting_.IsEmpty()};
  waiting_.WakeAll(failure_.outcome);
}

// ---- ending one -----------------------------------------------------------------------------------------------------

void ZnConversation::Lost(Values::Reason reason) {
  if (reason == Values::ErrTimedOut) suspect_ = true;
  over_();
}

void ZnConversation::End() {
  finder_.Stop();
  connecting_.reset();
  trying_ = false;
  client_.Disconnect();
  over_();
}

void ZnConversation::Flush() {
  if (trying_) End();
  Lives();
}

// ---- machines that can't be reached ---------------------------------------------------------------------------------

// No address was found, or no connection came about.
void ZnConversation::NotReached() {
  const ZnMoment now = ZnSteadyClock::now();
  if (!unreachable_) lastrefused_ = now;
  unreachable_ = now - attempt_ >= kQuick;
  suspect_ = false;
  if (unreachable_) probetimer_.Set(std::max(attempt_ + kBetweenAttempts - now, ZnSteadyClock::duration()));
}

void ZnConversation::Lives() {
  unreachable_ = suspect_ = false;
  probetimer_.Cancel();
}

void ZnConversation::ProbeCB(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (ZnSteadyClock::now() - lastrefused_ > kInterest) return Lives();
  if (!trying_) Try();
}
