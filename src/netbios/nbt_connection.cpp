#include "netbios/nbt_connection.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "netbios/smb_encoding.h"

namespace {

constexpr unsigned kMostRetargets = 5;

}  // namespace

ZnNbtConnection::ZnNbtConnection(ZnEventLoopBase* loop, Owner* owner)
    : loop_(loop), owner_(owner), patienceTimer_(loop, &patienceIsOver_), keepAliveTimer_(loop, &keepAliveIsDue_) {}

bool ZnNbtConnection::Connect(const ZnMachine& own, const ZnMachine& destination, std::chrono::milliseconds patience) {
  own_ = own;
  patience_ = patience;
  retargets_ = 0;
  return Start(destination);
}

bool ZnNbtConnection::Start(const ZnMachine& destination) {
  Close();
  destination_ = destination;
  conversation_++;
  queued_ = written_ = received_ = 0;
  if (RequestSession()) return true;
  Close();
  return false;
}

// Begins the connection and queues the session request, which goes out when the connection stands. The called name
// comes first. The system's buffers are left as they are: it fits them to the line, and no longer does so once told.
bool ZnNbtConnection::RequestSession() {
  if (!socket_.Bind(own_.Address(), ZnSocket::Stream, false, 0, false)) return false;
  state_ = State::RequestQueued;
  if (!socket_.SetBlocking(false) || !socket_.SetDelay(true)) return false;
  if (!socket_.Connect(destination_.Address()) && Error().Code() != EINPROGRESS) return false;
  if (!loop_->AddFileEvent(static_cast<unsigned>(socket_.Fd()), true, false, &readable_) || !AwaitRoom()) return false;
  const ZnUniString names = destination_.EncodeRFC883() + own_.EncodeRFC883();
  Queue(ZnNbtPacket::Request, names.AsEncoding(ZnSmbEncoding::netbiosname), {});
  return patienceTimer_.Set(patience_);
}

// Back to the state of a new object. Where the other end didn't end it, what waits in the system's buffers is thrown
// away: nobody may act on it after its failure was told.
void ZnNbtConnection::Abandon(bool hungUp) {
  if (state_ == State::Closed) return;
  const size_t unacknowledged = socket_.Unacknowledged();
  reach_ = hungUp ? written_ - std::min<uint64_t>(written_, unacknowledged) : written_;
  if (!hungUp && unacknowledged > 0) socket_.SetLinger(true, 0);
  loop_->RemoveFileEvent(static_cast<unsigned>(socket_.Fd()), true, true, nullptr);
  loop_->CancelTurnEnd(&turnEnds_);
  patienceTimer_.Cancel();
  keepAliveTimer_.Cancel();
  outgoing_.clear();
  frontWritten_ = cutHeaderSize_ = 0;
  awaitsRoom_ = payloadIsCut_ = false;
  cutPayload_.reset();
  state_ = State::Closed;
  socket_.Close();
}

// After a failed transfer: it was the other end that ended the connection, and not the line between. Only its close or
// reset says that nothing is under way any more.
bool ZnNbtConnection::HasLeft() const {
  constexpr int kLine[] = {ETIMEDOUT, EHOSTUNREACH, ENETUNREACH};
  return std::ranges::find(kLine, Error().Code()) == std::end(kLine);
}

// The owner may do anything in there: nothing of this object is touched behind a call of this.
void ZnNbtConnection::Lost(End end, bool hungUp) {
  const bool established = IsEstablished();
  Abandon(hungUp);
  owner_->SessionEnded(established || end == End::NotAnswered ? end : End::NotReached);
}

// Should the loop refuse the timer, the session goes without keepalives: the other end closes it when it likes.
void ZnNbtConnection::KeepAliveIsDue(ZnEventCallback*, ZnEvent::cbdispatch) {
  Queue(ZnNbtPacket::KeepAlive, {}, {});
  keepAliveTimer_.Set(keepAliveInterval_);
}

void ZnNbtConnection::PositiveReceived(std::span<const uint8_t>) {
  state_ = State::Established;
  patienceTimer_.Cancel();
  keepAliveTimer_.Set(keepAliveInterval_);
  owner_->SessionEstablished();
}

void ZnNbtConnection::NegativeReceived(std::span<const uint8_t>) { Lost(End::NotReached, false); }

// The other end names someone else to talk to. The owner hears of it only when that leads nowhere.
void ZnNbtConnection::RetargetReceived(std::span<const uint8_t> payload) {
  ZnWireReader in(payload.data(), payload.size());
  ZnNbtRetarget retarget;
  if (!in.Record(retarget) || ++retargets_ > kMostRetargets) return Lost(End::NotReached, false);
  retarget.address.Port(retarget.port);
  ZnMachine machine = destination_;
  machine.Name(retarget.address);
  if (!Start(machine)) owner_->SessionEnded(End::NotReached);
}
