// A machine that can't be reached: only the first call waits for that to turn out. From then on calls fail at once, and
// the session itself tries again, until a connection stands.

#include <algorithm>

#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

// Whoever fails faster than this holds nobody up, so each call may try for itself.
constexpr std::chrono::milliseconds kQuick{250};
// From the beginning of one attempt to the next.
constexpr std::chrono::seconds kBetweenAttempts{5};
// For so long after the last call attempts go on. When all is quiet, the next call tries for itself, and waits.
constexpr std::chrono::seconds kInterest{60};

}  // namespace

bool ZnSMBNFSSession::FailsAtOnce(E::SessionCommand what) const { return unreachable_ && !E::IsOwn(what); }

// The user has read why when it turned out. The command may stand anywhere in the queue: it doesn't wait for its turn.
void ZnSMBNFSSession::FailAtOnce(Command& command) {
  lastrefused_ = ZnSteadyClock::now();
  command.sessionstatus = E::SSTError;
  Complete(command);
}

// No address was found, or no connection came about.
void ZnSMBNFSSession::NotReached() {
  const ZnMoment now = ZnSteadyClock::now();
  if (!unreachable_) lastrefused_ = now;
  unreachable_ = now - attempt_ >= kQuick;
  suspect_ = false;
  if (unreachable_) probetimer_.Set(std::max(attempt_ + kBetweenAttempts - now, ZnSteadyClock::duration()));
}

void ZnSMBNFSSession::Lives() {
  unreachable_ = suspect_ = false;
  probetimer_.Cancel();
}

void ZnSMBNFSSession::ProbeCB(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (ZnSteadyClock::now() - lastrefused_ > kInterest) return Lives();
  Request(new Command(ZnInetAddr(), 0, nullptr), E::SCProbe);
}

void ZnSMBNFSSession::EndProbe(Command& command) { delete &command; }
