// Packets of a connection, in and out: framing, gathering, and what each packet does in each state.

#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <utility>

#include "netbios/nbt_connection.h"

namespace {

using Header = ZnNbtSessionHeader;

// As much as one read takes off a socket. The room is shared by all connections: nothing stays in it. A header that the
// read before cut stands in front.
constexpr size_t kRoomSize = size_t{128} * 1024;
std::array<uint8_t, Header::kSize + kRoomSize> room;

// One system call takes this many packets, of three parts each.
constexpr size_t kMostGathered = 64;

iovec Part(const uint8_t* bytes, size_t size) { return {const_cast<uint8_t*>(bytes), size}; }

// Leaves `skipped` bytes at the front out.
void Skip(std::span<iovec> parts, size_t skipped) {
  for (iovec& part : parts) {
    const size_t here = std::min(skipped, part.iov_len);
    part.iov_base = static_cast<uint8_t*>(part.iov_base) + here;
    part.iov_len -= here;
    skipped -= here;
  }
}

}  // namespace

// What a packet from the other end does, and in which state. Every other packet is forgotten, in every state.
struct ZnNbtConnection::PacketRule {
  ZnNbtPacket type;
  State state;
  void (ZnNbtConnection::*received)(std::span<const uint8_t> payload);
};

const ZnNbtConnection::PacketRule ZnNbtConnection::kPacketRules[] = {
    {ZnNbtPacket::Message, State::Established, &ZnNbtConnection::MessageReceived},
    {ZnNbtPacket::Positive, State::RequestSent, &ZnNbtConnection::PositiveReceived},
    {ZnNbtPacket::Negative, State::RequestSent, &ZnNbtConnection::NegativeReceived},
    {ZnNbtPacket::Retarget, State::RequestSent, &ZnNbtConnection::RetargetReceived},
};

uint64_t ZnNbtConnection::Send(ZnPacket message, ZnByteBuffer tail) {
  if (!IsEstablished() || message.Length() + tail.Length() > Header::kLongestPayload) return 0;
  return Queue(ZnNbtPacket::Message, std::move(message), std::move(tail));
}

uint64_t ZnNbtConnection::Queue(ZnNbtPacket type, ZnPacket message, ZnByteBuffer tail) {
  Header header;
  header.type = type;
  header.Length(message.Length() + tail.Length());
  queued_ += Header::kSize + header.Length();
  outgoing_.push_back({header.Bytes(), std::move(message), std::move(tail)});
  if (!awaitsRoom_) loop_->AtTurnEnd(&turnEnds_);
  return queued_;
}

// Writes until the queue is empty or the socket full, and asks the loop to go on in the latter case.
void ZnNbtConnection::WriteQueued() {
  while (!outgoing_.empty()) {
    std::array<iovec, 3 * kMostGathered> parts;
    size_t count = 0;
    for (size_t i = 0; i < std::min(outgoing_.size(), kMostGathered); i++) {
      const Outgoing& packet = outgoing_[i];
      parts[count++] = Part(packet.header.data(), packet.header.size());
      parts[count++] = Part(packet.message.Data(), packet.message.Length());
      parts[count++] = Part(packet.tail.Data(), packet.tail.Length());
    }
    Skip({parts.data(), 3}, frontWritten_);
    size_t moved = 0;
    const auto status = socket_.WriteParts({parts.data(), count}, moved);
    if (status == ZnFile::IoStatus::Failed || status == ZnFile::IoStatus::Closed) {
      return Lost(End::NotWritten, HasLeft());
    }
    Drop(moved);
    if (status == ZnFile::IoStatus::Partial) {
      if (!AwaitRoom()) Lost(End::NotWritten, false);
      return;
    }
  }
  if (state_ == State::RequestQueued) state_ = State::RequestSent;
  if (awaitsRoom_) loop_->RemoveFileEvent(static_cast<unsigned>(socket_.Fd()), false, true, &writable_);
  awaitsRoom_ = false;
}

// Takes what was written off the queue.
void ZnNbtConnection::Drop(size_t written) {
  written_ += written;
  frontWritten_ += written;
  while (!outgoing_.empty()) {
    const Outgoing& front = outgoing_.front();
    const size_t size = Header::kSize + front.message.Length() + front.tail.Length();
    if (frontWritten_ < size) return;
    frontWritten_ -= size;
    outgoing_.pop_front();
  }
}

bool ZnNbtConnection::AwaitRoom() {
  awaitsRoom_ = awaitsRoom_ || loop_->AddFileEvent(static_cast<unsigned>(socket_.Fd()), false, true, &writable_);
  return awaitsRoom_;
}

// One read: the rest of the payload that the last one cut, straight to its place, and whatever is behind it.
void ZnNbtConnection::ReadAvailable() {
  const size_t missing = payloadIsCut_ ? cutPacket_.Length() - cutSize_ : 0;
  const iovec parts[] = {{payloadIsCut_ ? &cutPayload_[cutSize_] : nullptr, missing},
                         {room.data() + cutHeaderSize_, kRoomSize}};
  size_t came = 0;
  const auto status = socket_.ReadParts(parts, came);
  if (status == ZnFile::IoStatus::Failed || status == ZnFile::IoStatus::Closed) return Lost(End::HungUp, HasLeft());
  received_ += came;

  const size_t completing = std::min(came, missing);
  cutSize_ += completing;
  if (completing < missing || (payloadIsCut_ && !HandleCutPacket())) return;
  std::copy_n(cutHeader_, cutHeaderSize_, room.data());
  HandlePackets({room.data(), std::exchange(cutHeaderSize_, 0) + came - completing});
}

// False, as below, when this conversation is over: the owner may have ended it, and this object may be gone.
bool ZnNbtConnection::HandleCutPacket() {
  payloadIsCut_ = false;
  // The message is good as long as the call lasts, whatever the owner does meanwhile.
  auto payload = std::move(cutPayload_);
  if (!HandlePacket(cutPacket_.type, {payload.get(), cutSize_})) return false;
  cutPayload_ = std::move(payload);
  return true;
}

void ZnNbtConnection::HandlePackets(std::span<const uint8_t> bytes) {
  while (bytes.size() >= Header::kSize) {
    Header header;
    ZnWireReader in(bytes.data(), Header::kSize);
    header.Read(in);
    const auto payload = bytes.subspan(Header::kSize);
    if (payload.size() < header.Length()) return KeepCutPayload(header, payload);
    if (!HandlePacket(header.type, payload.first(header.Length()))) return;
    bytes = payload.subspan(header.Length());
  }
  std::ranges::copy(bytes, cutHeader_);
  cutHeaderSize_ = bytes.size();
}

void ZnNbtConnection::KeepCutPayload(const Header& header, std::span<const uint8_t> payload) {
  if (!cutPayload_) cutPayload_ = std::make_unique_for_overwrite<uint8_t[]>(Header::kLongestPayload);
  std::ranges::copy(payload, cutPayload_.get());
  cutPacket_ = header;
  cutSize_ = payload.size();
  payloadIsCut_ = true;
}

bool ZnNbtConnection::HandlePacket(ZnNbtPacket type, std::span<const uint8_t> payload) {
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const unsigned conversation = conversation_;
  for (const PacketRule& rule : kPacketRules) {
    if (rule.type != type || rule.state != state_) continue;
    (this->*rule.received)(payload);
    break;
  }
  return alive && conversation == conversation_ && state_ != State::Closed;
}
