#pragma once
// The client side of the NetBIOS session service over TCP (RFC 1001 section 16, RFC 1002 section 4.3 and 5.3),
// asynchronous. It owns the socket, asks for the session, follows a retarget response, frames messages, gathers what
// goes out, sends keepalives, and reports to one owner.
//
// A connection that has ended leaves nothing behind: the next one begins with empty queues, no half-read packet and no
// timer.

#include <array>
#include <chrono>
#include <deque>
#include <memory>
#include <span>

#include "netbios/machine.h"
#include "netbios/nbt_session_records.h"
#include "runtime/event_loop.h"
#include "runtime/socket.h"
#include "runtime/timer.h"
#include "runtime/weak_ref.h"

class ZnNbtConnection {
 public:
  enum class End {
    NotReached,   // no connection, or the session was refused
    NotAnswered,  // no answer to the session request in time
    HungUp,       // by the other end, orderly or not
    NotWritten,   // a write failed
  };

  // May do anything in each call, deleting the connection or starting the next one included, but for running the event
  // loop: connections read into a room that they share.
  class Owner {
   public:
    Owner() = default;
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    virtual ~Owner() = default;
    // The other end has accepted the session.
    virtual void SessionEstablished() = 0;
    // A message, without its header. Good for this call only.
    virtual void MessageReceived(std::span<const uint8_t> message) = 0;
    // The connection is over and closed already. Never called from within a call of the owner's.
    virtual void SessionEnded(End end) = 0;
  };

  // Neither is owned.
  ZnNbtConnection(ZnEventLoopBase* loop, Owner* owner);
  ZnNbtConnection(const ZnNbtConnection&) = delete;
  ZnNbtConnection& operator=(const ZnNbtConnection&) = delete;
  ~ZnNbtConnection() { Close(); }

  // Closes what goes on, and starts a connection from `own`, bound to its address, to `destination` at its address and
  // port. `patience` is how long the session request may take, once more after each retarget. True: under way,
  // SessionEstablished or SessionEnded will come. False: it couldn't start, Error() says why, and nothing will come.
  bool Connect(const ZnMachine& own, const ZnMachine& destination, std::chrono::milliseconds patience);
  // Ends the connection without telling the owner. What the other end hasn't acknowledged doesn't go out any more.
  void Close() { Abandon(false); }

  // Queues a message, and `tail` behind it; neither is copied. All messages of one turn of the loop go out in one
  // system call at its end; what the socket doesn't take waits. Gives where it ends in all that is sent, for
  // WasCutBefore; 0 when there is no session or the message is longer than a packet can be.
  uint64_t Send(ZnPacket message, ZnByteBuffer tail = {});
  // After the end: the other end can't have all of what was sent up to there, now or later. That is certain for what
  // was never written and, if the other end hung up, for what it hadn't acknowledged; docs/sessions.md tells what the
  // latter rests on.
  bool WasCutBefore(uint64_t end) const { return end > reach_; }
  // Bytes that have come on this connection, of whatever kind.
  uint64_t Received() const { return received_; }

  bool IsEstablished() const { return state_ == State::Established; }
  // Whether the other end is known to have hung up, with nothing left to be read.
  bool HasHungUp() const { return IsEstablished() && socket_.HasHungUp(); }
  const ZnMachine& Destination() const { return destination_; }  // after a retarget the new one
  const ZnUnixError& Error() const { return socket_.Error(); }
  // How often a keepalive goes out (300 seconds), from the next session on.
  void KeepAliveInterval(std::chrono::milliseconds span) { keepAliveInterval_ = span; }

 private:
  enum class State : uint8_t { Closed, RequestQueued, RequestSent, Established };
  using Callback = ZnSimpleCallback<ZnEvent::cbdispatch, ZnNbtConnection>;
  struct Outgoing {
    std::array<uint8_t, ZnNbtSessionHeader::kSize> header;
    ZnPacket message;
    ZnByteBuffer tail;
  };
  struct PacketRule;
  static const PacketRule kPacketRules[];

  bool Start(const ZnMachine& destination);
  bool RequestSession();
  void Abandon(bool hungUp);
  bool HasLeft() const;
  void Lost(End end, bool hungUp);

  uint64_t Queue(ZnNbtPacket type, ZnPacket message, ZnByteBuffer tail);
  void WriteQueued();
  void Drop(size_t written);
  bool AwaitRoom();

  void ReadAvailable();
  bool HandleCutPacket();
  void HandlePackets(std::span<const uint8_t> bytes);
  void KeepCutPayload(const ZnNbtSessionHeader& header, std::span<const uint8_t> payload);
  bool HandlePacket(ZnNbtPacket type, std::span<const uint8_t> payload);
  void MessageReceived(std::span<const uint8_t> payload) { owner_->MessageReceived(payload); }
  void PositiveReceived(std::span<const uint8_t> payload);
  void NegativeReceived(std::span<const uint8_t> payload);
  void RetargetReceived(std::span<const uint8_t> payload);

  void Readable(ZnEventCallback*, ZnEvent::cbdispatch) { ReadAvailable(); }
  void Writable(ZnEventCallback*, ZnEvent::cbdispatch) { WriteQueued(); }
  void TurnEnds(ZnEventCallback*, ZnEvent::cbdispatch) { WriteQueued(); }
  void PatienceIsOver(ZnEventCallback*, ZnEvent::cbdispatch) { Lost(End::NotAnswered, false); }
  void KeepAliveIsDue(ZnEventCallback*, ZnEvent::cbdispatch);

  ZnEventLoopBase* loop_;
  Owner* owner_;
  Callback readable_{this, &ZnNbtConnection::Readable};
  Callback writable_{this, &ZnNbtConnection::Writable};
  Callback turnEnds_{this, &ZnNbtConnection::TurnEnds};
  Callback patienceIsOver_{this, &ZnNbtConnection::PatienceIsOver};
  Callback keepAliveIsDue_{this, &ZnNbtConnection::KeepAliveIsDue};
  ZnTimer patienceTimer_;
  ZnTimer keepAliveTimer_;
  std::chrono::milliseconds patience_{};
  std::chrono::milliseconds keepAliveInterval_{300000};

  ZnSocket socket_;
  State state_ = State::Closed;
  bool awaitsRoom_ = false;    // the socket's, for more to be written
  unsigned retargets_ = 0;     // followed since the owner's Connect
  unsigned conversation_ = 0;  // counts connections, to notice one that began inside a callback
  ZnMachine own_;
  ZnMachine destination_;

  std::deque<Outgoing> outgoing_;
  size_t frontWritten_ = 0;  // bytes of the first outgoing packet
  uint64_t queued_ = 0;      // positions in all that is sent: what was queued, and of that written
  uint64_t written_ = 0;
  uint64_t reach_ = 0;
  uint64_t received_ = 0;

  // A packet that the end of a read cut: the bytes of its header as long as that isn't whole, else the payload so far.
  uint8_t cutHeader_[ZnNbtSessionHeader::kSize] = {};
  size_t cutHeaderSize_ = 0;
  ZnNbtSessionHeader cutPacket_;
  size_t cutSize_ = 0;
  bool payloadIsCut_ = false;
  // Room for the longest payload; pages of it cost memory only once bytes are in them, whatever a header promised.
  std::unique_ptr<uint8_t[]> cutPayload_;

  ZnReferable alive_;
};
