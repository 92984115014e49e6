#pragma once
// The client side of the NetBIOS session service over TCP (RFC 1001 section 16, RFC 1002 section 4.3 and 5.3),
// asynchronous. It owns the socket, frames messages, queues what can't be written yet, follows a retarget response,
// sends keepalives, and reports to one owner.
//
// The owner may delete the session, end the conversation or connect again inside any callback. A conversation that has
// ended leaves nothing behind: the next one begins with empty queues, no half-read packet and no timer.

#include <deque>
#include <span>

#include "netbios/machine.h"
#include "runtime/event_loop.h"
#include "runtime/socket.h"
#include "runtime/timer.h"
#include "runtime/weak_ref.h"

class ZnNBTSession : public ZnSocket {
 public:
  // What the owner is told.
  enum cbdispatch {
    SessionConnected = 0,     // the other end has accepted the session
    SessionDisconnected = 1,  // the conversation is over, already torn down
    SessionMessage = 2,       // ReadMessage has a message
    SessionTimedOut = 3,      // no answer to the session request; SessionDisconnected follows
  };
  using SessionCallback = ZnCallback<cbdispatch>;

  enum packetType : uint8_t {
    MessagePacket = 0x00,
    RequestPacket = 0x81,
    PositivePacket = 0x82,
    NegativePacket = 0x83,
    RetargetPacket = 0x84,
    KeepAlivePacket = 0x85,
  };

  enum sessionState : unsigned {
    SessionClosed = 0,
    SessionRequestQueued = 1,  // connection pending, nothing written yet
    SessionRequestSent = 2,    // waiting for a response; a retarget is followed
    SessionRequestAgain = 4,   // a second request was written on the same connection; a retarget is ignored
    SessionEstablished = 5,
  };

  // The longest payload of a packet: 17 bits of length.
  static constexpr size_t kLongestPayload = 0x1FFFF;

  // No socket yet. Neither argument is owned; `callback` may be null.
  ZnNBTSession(ZnEventLoopBase* loop, SessionCallback* callback);
  // Ends the conversation without telling the owner.
  ~ZnNBTSession() override;

  using ZnSocket::Bind;
  using ZnSocket::Connect;
  // Says who we are: the calling name, and the address the socket is bound to.
  bool Bind(const ZnMachine& machine);
  // Ends a conversation that goes on, without telling the owner, and starts one with `machine` at its address and port.
  // True: under way, SessionConnected or SessionDisconnected will come. False: it couldn't start, Error() says why, and
  // nothing will come.
  bool Connect(const ZnMachine& machine);

  // Queues a packet and writes as much as goes out at once. False when it is longer than kLongestPayload or there is no
  // connection, or when the write found the connection broken: in that case the owner has been told before this
  // returns, and this object may be gone.
  bool SendMessage(const ZnByteBuffer& payload, packetType type);
  bool WriteMessage(const ZnByteBuffer& payload) { return SendMessage(payload, MessagePacket); }
  // The oldest complete message, without its header; empty when there is none.
  ZnByteBuffer ReadMessage();
  bool HasMessage() const { return !incoming_.empty(); }
  // Queues one keepalive packet.
  bool KeepAlive() { return SendMessage(ZnByteBuffer(), KeepAlivePacket); }

  // Ends the conversation: callbacks, timers, queues and socket are gone. With `notify` the owner is told last. Nothing
  // when closed.
  void _disconnect(bool notify);

  sessionState State() const { return state_; }
  bool IsEstablished() const { return state_ == SessionEstablished; }
  // The conversation that goes on, or that went last, got as far as a positive response.
  bool WasEstablished() const { return wasEstablished_; }
  // The conversation that went last ended before the other end had acknowledged all that was sent. So it can't have
  // acted on the last message; docs/sessions.md tells what this rests on.
  bool LeftUnacknowledged() const { return leftUnacknowledged_; }
  const ZnMachine& OwnMachine() const { return own_; }
  const ZnMachine& Destination() const { return destination_; }  // after a retarget the new one

  void SetSessionCallback(SessionCallback* callback) { callback_ = callback; }
  // How long the session request may take (10 seconds), and how often a keepalive goes out (300 seconds).
  void SetSessionTimeout(std::chrono::milliseconds span) { timeout_ = span; }
  void SetKeepAliveInterval(std::chrono::milliseconds span) { keepAliveInterval_ = span; }

  // What the loop calls when the socket is ready; they may be called directly too.
  void ReadAvailable();
  void WriteAvailable() { WriteQueued(); }

 private:
  struct PacketRule;
  static const PacketRule kPacketRules[];

  bool AddReadCB();
  void RemoveReadCB();
  bool AddWriteCB();
  void RemoveWriteCB();
  void Read_CB(ZnEventCallback*, ZnEvent::cbdispatch) { ReadAvailable(); }
  void Write_CB(ZnEventCallback*, ZnEvent::cbdispatch) { WriteAvailable(); }
  void Timeout_CB(ZnEventCallback*, ZnEvent::cbdispatch);
  void Keepalive_CB(ZnEventCallback*, ZnEvent::cbdispatch);

  bool StartConversation(const ZnMachine& machine);
  bool StartRequest();
  void Abandon();
  void StartKeepAlive();
  bool QueuePacket(const ZnByteBuffer& payload, packetType type);
  bool WriteQueued();
  void RequestWritten();
  bool ReadHeader();
  bool ReadBody();
  std::span<const uint8_t> NextBytes(size_t most);
  bool ReadAhead();
  void KeepAhead();
  void ForgetPacket();
  void HandlePacket(packetType type, const ZnByteBuffer& body);
  void MessageReceived(const ZnByteBuffer& body);
  void PositiveReceived(const ZnByteBuffer& body);
  void NegativeReceived(const ZnByteBuffer& body);
  void RetargetReceived(const ZnByteBuffer& body);
  void Tell(cbdispatch event);

  ZnEventLoopBase* loop_;
  SessionCallback* callback_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTSession> readCallback_{this, &ZnNBTSession::Read_CB};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTSession> writeCallback_{this, &ZnNBTSession::Write_CB};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTSession> timeoutCallback_{this, &ZnNBTSession::Timeout_CB};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTSession> keepAliveCallback_{this, &ZnNBTSession::Keepalive_CB};
  ZnTimer timeoutTimer_;
  ZnTimer keepAliveTimer_;
  std::chrono::milliseconds timeout_{10000};
  std::chrono::milliseconds keepAliveInterval_{300000};

  sessionState state_ = SessionClosed;
  bool wasEstablished_ = false;
  bool leftUnacknowledged_ = false;
  bool readRegistered_ = false;
  bool writeRegistered_ = false;
  unsigned retargets_ = 0;     // followed since the owner's Connect
  unsigned conversation_ = 0;  // counts connections, to notice one that began inside a callback
  ZnMachine own_;
  ZnMachine destination_;

  std::deque<ZnByteBuffer> incoming_;  // complete payloads
  std::deque<ZnByteBuffer> outgoing_;  // packets with their header
  size_t writeOffset_ = 0;             // bytes of the first outgoing packet that are written

  // The packet in progress.
  uint8_t header_[4] = {};
  size_t headerRead_ = 0;
  ZnByteBuffer body_;
  // What the last read took off the socket and hasn't found its place: in a room that all sessions share, and in a
  // buffer of this one's own while anybody else may read.
  std::span<const uint8_t> ahead_;
  ZnByteBuffer aheadKept_;

  ZnReferable alive_;
};
