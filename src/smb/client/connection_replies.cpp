// Replies by their multiplex id, and what happens when there is none in time.

#include <algorithm>

#include "smb/client/connection.h"

namespace {

using Values = ZnSMBClientValues;

// A multiplex id: the number of the place, and above that how often it was taken. So none is 0, and none the one in
// which servers speak of their own accord.
constexpr unsigned kPlaceBits = 6;
constexpr uint32_t kMostTaken = (1U << (16 - kPlaceBits)) - 1;
static_assert(ZnSmbConnection::kMostInFlight < 1U << kPlaceBits);

size_t NumberIn(uint16_t mid) { return mid & ((1U << kPlaceBits) - 1); }
uint32_t TakenIn(uint16_t mid) { return mid >> kPlaceBits; }

// A server asks for a lock back that it granted. We never ask for one, so nothing depends on the answer.
// (MS-CIFS 2.2.4.32.1)
bool IsLockBreak(const ZnSMBCHeader& header) {
  constexpr unsigned kLockingX = 0x24;
  return header.command == kLockingX && header.mid == 0xFFFF;
}

}  // namespace

uint16_t ZnSmbConnection::MidOf(const Place& place) {
  return static_cast<uint16_t>(((place.taken - 1) % kMostTaken + 1) << kPlaceBits | place.number);
}

bool ZnSmbConnection::WasSent(uint16_t mid) const {
  return NumberIn(mid) < kMostInFlight && TakenIn(mid) > 0 && TakenIn(mid) <= places_[NumberIn(mid)]->taken;
}

void ZnSmbConnection::Move(Places::iterator place, Places& to) {
  to.splice(to.end(), *std::exchange(place->in, &to), place);
}

// What was answered already is passed over: a copy of a reply, or the rest of one that its owner gave up, tells nobody
// anything and can't be taken for another's.
void ZnSmbConnection::MessageReceived(std::span<const uint8_t> message) {
  const ZnSMBCDecode reply(message);
  if (!reply.valid) return End(Values::ErrRead);
  if (IsLockBreak(reply.header)) return;
  if (!WasSent(reply.header.mid)) return End(Values::ErrRead);
  const auto place = places_[NumberIn(reply.header.mid)];
  if (place->in == &free_ || MidOf(*place) != reply.header.mid) return;
  if (reply.header.command != place->command) return End(Values::ErrRead);
  if (!IsSignedFor(*place, message)) return End(Values::ErrBadSignature);
  Answer(place, reply);
}

bool ZnSmbConnection::IsSignedFor(const Place& place, std::span<const uint8_t> message) const {
  return place.sequence == 0 || signing_->Verify(message.data(), message.size(), place.sequence + 1);
}

// An owner that closes the connection on its reply has been answered; it hears of the end only if it waits for more.
void ZnSmbConnection::Answer(Places::iterator place, const ZnSMBCDecode& reply) {
  const Exchange* const exchange = Find(place->exchange);
  if (!exchange) return Vacate(place);
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const unsigned conversation = conversation_;
  const ZnSmbExchangeId id = answering_ = exchange->id;
  const bool more = exchange->owner->Replied(id, reply);
  if (!alive) return;
  answering_ = 0;
  if (conversation != conversation_) {
    more ? Fail(id, {Values::ErrDisconnect, false}) : static_cast<void>(Forget(id));
    return;
  }
  if (more && place->exchange != 0) return StartTime(place);
  Vacate(place);
}

void ZnSmbConnection::Vacate(Places::iterator place) {
  if (place == inFlight_.begin()) moved_ = Now();
  Forget(place->exchange);
  Move(place, free_);
  if (waiting_ > 0) loop_->AtTurnEnd(&turnEnds_);
}

// ---- deadlines

// One timer serves all: it is set for the oldest, and looks again when that has gone meanwhile.
void ZnSmbConnection::StartTime(Places::iterator place) {
  place->start = Now();
  Move(place, inFlight_);
  if (!deadline_.IsSet()) deadline_.Set(replyTimeout_);
}

void ZnSmbConnection::TimeIsOver(ZnEventCallback*, ZnEvent::cbdispatch) {
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const unsigned conversation = conversation_;
  while (alive && conversation == conversation_ && !inFlight_.empty()) {
    const auto start = std::max(inFlight_.front().start.time, moved_.time);
    const auto left = start + replyTimeout_ - ZnSteadyClock::Read();
    if (left.count() > 0) {
      deadline_.Set(left);
      return;
    }
    GiveUpOldest();
  }
}

void ZnSmbConnection::GiveUpOldest() {
  const auto oldest = inFlight_.begin();
  const bool silence = nbt_.Received() == std::max(oldest->start.received, moved_.received);
  const bool stuck = overdue_.size() + 1 >= most_;
  if (silence || stuck) return End(Values::ErrTimedOut);
  Move(oldest, overdue_);
  const ZnSmbExchangeId id = oldest->exchange;
  if (ZnSmbExchangeOwner* const owner = Forget(id)) owner->NotReplied(id, {Values::ErrTimedOut, false});
}
