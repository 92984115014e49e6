// The life of a connection, and how requests go out.

#include "smb/client/connection.h"

#include <algorithm>

namespace {

using Values = ZnSMBClientValues;

// An exchange's id: where it stands in the table, and above that a number that never comes again.
constexpr unsigned kIndexBits = 24;
constexpr uint64_t kIndexMask = (uint64_t{1} << kIndexBits) - 1;
uint64_t lastSerial = 0;

// Signatures have a number each; the logon that agrees on the key takes 0 and 1.
constexpr uint32_t kFirstSequence = 2;

// By ZnNbtConnection::End.
constexpr Values::Reason kReasonOfEnd[] = {Values::ErrConnect, Values::ErrTimedOut, Values::ErrDisconnect,
                                           Values::ErrWrite};

}  // namespace

ZnSmbConnection::ZnSmbConnection(ZnEventLoopBase* loop, Owner* owner)
    : loop_(loop), owner_(owner), nbt_(loop, this), deadline_(loop, &timeIsOver_) {
  for (uint16_t number = 0; number < kMostInFlight; number++) {
    places_[number] = free_.emplace(free_.end());
    places_[number]->number = number;
    places_[number]->in = &free_;
  }
}

ZnSmbConnection::~ZnSmbConnection() { loop_->CancelTurnEnd(&turnEnds_); }

bool ZnSmbConnection::Connect(const ZnMachine& own, const ZnMachine& server, std::chrono::milliseconds patience) {
  Close();
  MostInFlight(1);
  for (Place& place : free_) place.taken = 0;
  moved_ = {};
  signing_.reset();
  return nbt_.Connect(own, server, patience);
}

void ZnSmbConnection::Close() {
  nbt_.Close();
  FailAll(Values::ErrDisconnect);
}

void ZnSmbConnection::SessionEstablished() { owner_->Connected(); }

void ZnSmbConnection::SessionEnded(ZnNbtConnection::End end) { End(kReasonOfEnd[static_cast<size_t>(end)]); }

// The owner may do anything in there: nothing of this object is touched behind a call of this.
void ZnSmbConnection::End(Reason reason) {
  nbt_.Close();
  FailAll(reason);
  owner_->ConnectionLost(reason);
}

void ZnSmbConnection::FailAll(Reason reason) {
  conversation_++;
  deadline_.Cancel();
  for (Places* const list : {&overdue_, &inFlight_}) {
    while (!list->empty()) {
      Place& place = list->front();
      const ZnSmbExchangeId id = std::exchange(place.exchange, 0);
      if (id != answering_) Fail(id, {reason, nbt_.WasCutBefore(place.end)});
      Move(list->begin(), free_);
    }
  }
  while (const ZnSmbExchangeId id = turns_.Pop()) Fail(id, {reason, true});
}

void ZnSmbConnection::MostInFlight(unsigned count) {
  most_ = std::clamp(count, 1U, kMostInFlight);
  if (waiting_ > 0) loop_->AtTurnEnd(&turnEnds_);
}

void ZnSmbConnection::SignWith(const ZnSmbSigning& signing) {
  if (!signing.IsOn()) return;
  signing_ = signing;
  nextSequence_ = kFirstSequence;
}

// ---- exchanges

ZnSmbExchangeId ZnSmbConnection::Send(ZnSmbRequest request, ZnSmbExchangeOwner* owner) {
  if (unused_.empty()) {
    unused_.push_back(static_cast<uint32_t>(exchanges_.size()));
    exchanges_.emplace_back();
  }
  Exchange& exchange = exchanges_[unused_.back()];
  exchange.id = ++lastSerial << kIndexBits | unused_.back();
  unused_.pop_back();
  exchange.owner = owner;
  if (IsUp()) {
    turns_.Push(request.caller, exchange.id);
    exchange.request = std::move(request);
    exchange.waits = true;
    waiting_++;
  } else {
    Fail(exchange.id, {Values::ErrNotConnected, true});
  }
  loop_->AtTurnEnd(&turnEnds_);
  return exchange.id;
}

void ZnSmbConnection::GiveUp(ZnSmbExchangeId id) { Forget(id); }

// Null when the exchange is over.
ZnSmbConnection::Exchange* ZnSmbConnection::Find(ZnSmbExchangeId id) {
  const size_t index = id & kIndexMask;
  return id != 0 && index < exchanges_.size() && exchanges_[index].id == id ? &exchanges_[index] : nullptr;
}

// The exchange is over. Gives its owner; null when it was over already.
ZnSmbExchangeOwner* ZnSmbConnection::Forget(ZnSmbExchangeId id) {
  Exchange* const exchange = Find(id);
  if (!exchange) return nullptr;
  if (exchange->place) exchange->place->exchange = 0;
  if (exchange->waits) waiting_--;
  ZnSmbExchangeOwner* const owner = exchange->owner;
  *exchange = Exchange();
  unused_.push_back(static_cast<uint32_t>(id & kIndexMask));
  return owner;
}

// To be told at the turn's end.
void ZnSmbConnection::Fail(ZnSmbExchangeId id, const ZnSmbNoReply& why) {
  Exchange* const exchange = Find(id);
  if (!exchange) return;
  if (exchange->waits) waiting_--;
  exchange->waits = false;
  exchange->place = nullptr;
  exchange->request = ZnSmbRequest();
  failures_.emplace_back(id, why);
  loop_->AtTurnEnd(&turnEnds_);
}

void ZnSmbConnection::TurnEnds(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (!TellFailures()) return;
  while (waiting_ > 0 && InFlight() < most_) {
    const ZnSmbExchangeId id = turns_.Pop();
    if (Exchange* const exchange = Find(id)) Launch(*exchange);
  }
}

// False when an owner has deleted this object. What fails meanwhile is told at the next turn's end.
bool ZnSmbConnection::TellFailures() {
  const ZnWeakRef<ZnReferable> alive(&alive_);
  for (size_t count = failures_.size(); count > 0 && alive; count--) {
    const auto [id, why] = failures_.front();
    failures_.pop_front();
    if (ZnSmbExchangeOwner* const owner = Forget(id)) owner->NotReplied(id, why);
  }
  return static_cast<bool>(alive);
}

// Sends the request from the next free place.
void ZnSmbConnection::Launch(Exchange& exchange) {
  ZnSmbRequest& request = exchange.request;
  const size_t size = request.message.Length() + request.tail.Length();
  if (request.message.Length() < kZnSmbFramingSize || size > ZnNbtSessionHeader::kLongestPayload) {
    return Fail(exchange.id, {Values::ErrInternal, true});
  }
  const auto place = free_.begin();
  place->taken++;
  place->exchange = exchange.id;
  place->command = request.command;
  ZnSMBCHeader::SetMid(request.message, MidOf(*place));
  Sign(request, *place);
  place->end = nbt_.Send(std::move(request.message), std::move(request.tail));
  exchange.place = &*place;
  exchange.waits = false;
  waiting_--;
  StartTime(place);
}

// A request takes two numbers: its own, and that of each message of its reply.
void ZnSmbConnection::Sign(ZnSmbRequest& request, Place& place) {
  place.sequence = 0;
  if (!signing_) return;
  place.sequence = std::exchange(nextSequence_, nextSequence_ + 2);
  signing_->Sign(request.message, place.sequence, {request.tail.Data(), request.tail.Length()});
}
