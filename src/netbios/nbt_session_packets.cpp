// Packets of the session service, in and out: framing, queues, and what each packet does in each state.

#include <algorithm>

#include "netbios/nbt_session.h"

namespace {

constexpr size_t kHeaderSize = 4;
constexpr uint8_t kLengthBit16 = 0x01;  // in the flags byte of the header

// A packet's room is made as its bytes come, so that an announced length alone costs no memory: at first this much,
// then as much again as has come.
constexpr size_t kFirstRoom = 16384;

// As much as one read takes off the socket: the largest message of most servers (16644 bytes) with its header, and some
// more. The room is shared: nothing stays in it.
constexpr size_t kAheadRoom = 20480;
uint8_t aheadRoom[kAheadRoom];

// A retarget answers with address and port (RFC 1002 section 4.3.5).
constexpr size_t kRetargetSize = 6;
constexpr unsigned kMostRetargets = 5;

constexpr unsigned In(ZnNBTSession::sessionState state) { return 1U << state; }

}  // namespace

// What a packet from the other end does, and in which states. Every other packet is forgotten, in every state.
struct ZnNBTSession::PacketRule {
  packetType type;
  unsigned states;
  void (ZnNBTSession::*received)(const ZnByteBuffer& body);
};

const ZnNBTSession::PacketRule ZnNBTSession::kPacketRules[] = {
    {MessagePacket, In(SessionEstablished), &ZnNBTSession::MessageReceived},
    {PositivePacket, In(SessionRequestSent) | In(SessionRequestAgain), &ZnNBTSession::PositiveReceived},
    {NegativePacket, In(SessionRequestSent) | In(SessionRequestAgain), &ZnNBTSession::NegativeReceived},
    {RetargetPacket, In(SessionRequestSent), &ZnNBTSession::RetargetReceived},
};

bool ZnNBTSession::SendMessage(const ZnByteBuffer& payload, packetType type) {
  return state_ != SessionClosed && QueuePacket(payload, type) && WriteQueued();
}

bool ZnNBTSession::QueuePacket(const ZnByteBuffer& payload, packetType type) {
  const size_t length = payload.Length();
  if (length > kLongestPayload) return false;
  const uint8_t header[kHeaderSize] = {type, static_cast<uint8_t>(length >> 16), static_cast<uint8_t>(length >> 8),
                                       static_cast<uint8_t>(length)};
  ZnByteBuffer packet;
  packet.Reserve(kHeaderSize + length);
  packet.Append(header, kHeaderSize);
  packet.Append(payload);
  outgoing_.push_back(std::move(packet));
  return true;
}

// Writes until the queue is empty or the socket full, and asks the loop to go on in the latter case. False when the
// connection broke; the owner has been told then, and this object may be gone.
bool ZnNBTSession::WriteQueued() {
  while (!outgoing_.empty()) {
    const ZnByteBuffer& packet = outgoing_.front();
    size_t moved = 0;
    IoStatus status = Write(packet.Data() + writeOffset_, packet.Length() - writeOffset_, moved);
    if (status == IoStatus::Failed || status == IoStatus::Closed) {
      _disconnect(true);
      return false;
    }
    writeOffset_ += moved;
    if (status == IoStatus::Partial) {
      if (AddWriteCB()) return true;
      _disconnect(true);
      return false;
    }
    if (packet[0] == RequestPacket) RequestWritten();
    outgoing_.pop_front();
    writeOffset_ = 0;
  }
  RemoveWriteCB();
  return true;
}

void ZnNBTSession::RequestWritten() {
  if (state_ == SessionRequestQueued) {
    state_ = SessionRequestSent;
  } else if (state_ == SessionRequestSent) {
    state_ = SessionRequestAgain;
  }
}

ZnByteBuffer ZnNBTSession::ReadMessage() {
  if (incoming_.empty()) return {};
  ZnByteBuffer message = std::move(incoming_.front());
  incoming_.pop_front();
  return message;
}

// A whole packet, often all there is, comes in one read. The owner's callback may end the conversation: what was read
// ahead is looked at only while it goes on.
void ZnNBTSession::ReadAvailable() {
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const unsigned conversation = conversation_;
  do {
    if (state_ == SessionClosed || !ReadHeader() || !ReadBody()) return;
    const auto type = static_cast<packetType>(header_[0]);
    const ZnByteBuffer body = std::move(body_);
    ForgetPacket();
    KeepAhead();
    HandlePacket(type, body);
  } while (alive && conversation == conversation_ && !ahead_.empty());
}

// False, as below, when the rest isn't there yet, or when the connection is over.
bool ZnNBTSession::ReadHeader() {
  while (headerRead_ < kHeaderSize) {
    const auto bytes = NextBytes(kHeaderSize - headerRead_);
    if (bytes.empty()) return false;
    std::ranges::copy(bytes, header_ + headerRead_);
    headerRead_ += bytes.size();
  }
  return true;
}

bool ZnNBTSession::ReadBody() {
  const size_t announced =
      (header_[1] & kLengthBit16 ? size_t{1} << 16 : 0) | size_t{header_[2]} << 8 | size_t{header_[3]};
  while (body_.Length() < announced) {
    const auto bytes = NextBytes(announced - body_.Length());
    if (bytes.empty()) return false;
    const size_t more = std::max(body_.Length(), bytes.size());
    body_.Reserve(std::min(announced, std::max(kFirstRoom, body_.Length() + more)));
    body_.Append(bytes.data(), bytes.size());
  }
  return true;
}

// At least one byte and at most so many of what has come; none when nothing is there, or when the connection is over.
std::span<const uint8_t> ZnNBTSession::NextBytes(size_t most) {
  if (ahead_.empty() && !ReadAhead()) return {};
  const auto bytes = ahead_.first(std::min(most, ahead_.size()));
  ahead_ = ahead_.subspan(bytes.size());
  return bytes;
}

bool ZnNBTSession::ReadAhead() {
  size_t moved = 0;
  IoStatus status = Read(aheadRoom, kAheadRoom, moved);
  if (status == IoStatus::Failed || status == IoStatus::Closed) {
    _disconnect(true);
    return false;
  }
  ahead_ = {aheadRoom, moved};
  aheadKept_.Clear();
  return moved > 0;
}

void ZnNBTSession::KeepAhead() {
  if (ahead_.empty() || !aheadKept_.IsEmpty()) return;
  aheadKept_ = ZnByteBuffer(ahead_.data(), ahead_.size());
  ahead_ = {aheadKept_.Data(), aheadKept_.Length()};
}

void ZnNBTSession::ForgetPacket() {
  headerRead_ = 0;
  body_.Clear();
}

void ZnNBTSession::HandlePacket(packetType type, const ZnByteBuffer& body) {
  for (const PacketRule& rule : kPacketRules) {
    if (rule.type == type && (rule.states & In(state_)) != 0) {
      (this->*rule.received)(body);
      return;
    }
  }
}

void ZnNBTSession::MessageReceived(const ZnByteBuffer& body) {
  incoming_.push_back(body);
  Tell(SessionMessage);
}

void ZnNBTSession::PositiveReceived(const ZnByteBuffer&) {
  state_ = SessionEstablished;
  wasEstablished_ = true;
  timeoutTimer_.Cancel();
  StartKeepAlive();
  Tell(SessionConnected);
}

void ZnNBTSession::NegativeReceived(const ZnByteBuffer&) { _disconnect(true); }

// The other end names someone else to talk to. The owner hears of it only when that leads nowhere.
void ZnNBTSession::RetargetReceived(const ZnByteBuffer& body) {
  const uint8_t* cursor = body.Data();
  size_t remaining = body.Length();
  ZnInetAddr address;
  if (remaining < kRetargetSize || ++retargets_ > kMostRetargets) {
    _disconnect(true);
    return;
  }
  address.Read(cursor, remaining);
  address.Port(cursor[0] << 8 | cursor[1]);
  ZnMachine machine = destination_;
  machine.Name(address);
  if (!StartConversation(machine)) Tell(SessionDisconnected);
}
