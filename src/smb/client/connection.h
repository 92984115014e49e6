#pragma once
// One connection to one SMB server: the NetBIOS session beneath it, and the exchanges that are under way on it, by
// multiplex id. It knows nothing of what the requests mean.
//
// At most as many exchanges are in flight as the server takes (MostInFlight); the rest wait, those of one caller in
// order, the callers in turn. Whatever is ready in one turn of the loop goes out in one system call at its end.
//
// Each exchange has a deadline of its own: ReplyTimeout after it went out, or after the oldest one that was in flight
// with it was answered, since lines may be slow and most servers answer in order. When that passes its owner hears
// ErrTimedOut; a reply that still comes is read and discarded, and until then the exchange keeps its place among those
// in flight, for the server is still at it. So a late reply costs one call, not the connection. These end it:
//   ErrTimedOut      an exchange's time is over and nothing at all has come in it, or every place is taken by exchanges
//                    whose time is over; or no answer to the NetBIOS session request
//   ErrRead          a message that can't be read, or whose id or command was never asked for
//   ErrBadSignature  a message that wasn't signed as agreed
//   ErrWrite, ErrDisconnect  the socket broke; the server hung up
//   ErrConnect       it didn't come about
// The connection's owner is told first, then each exchange's: what they hear is the reason of the end.

#include <array>
#include <chrono>
#include <deque>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "netbios/nbt_connection.h"
#include "runtime/timer.h"
#include "runtime/weak_ref.h"
#include "smb/client/exchange.h"
#include "smb/client/signing.h"
#include "smb/client/turns.h"

class ZnSmbConnection : private ZnNbtConnection::Owner {
 public:
  using Reason = ZnSMBClientValues::Reason;

  // May do anything in either call, deleting the connection included, but for running the event loop.
  class Owner {
   public:
    Owner() = default;
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    virtual ~Owner() = default;
    // The server has taken the NetBIOS session; requests may go out.
    virtual void Connected() = 0;
    // The connection has ended, or didn't come about, by itself; never from within a call of the owner's. It is closed
    // already; Connect may be called. The exchanges' owners hear next, from the loop.
    virtual void ConnectionLost(Reason reason) = 0;
  };

  static constexpr unsigned kMostInFlight = 50;

  ZnSmbConnection(ZnEventLoopBase* loop, Owner* owner);  // neither owned
  ZnSmbConnection(const ZnSmbConnection&) = delete;
  ZnSmbConnection& operator=(const ZnSmbConnection&) = delete;
  // Ends it likewise, but nobody hears anything any more.
  ~ZnSmbConnection() override;

  // Ends what goes on as Close does, and starts a connection from the NetBIOS name `own`, bound to its address, to
  // `server` at its address and port; `patience` is how long the session request may take. MostInFlight is 1 again,
  // nothing is signed. False: it couldn't start (Error() says why), and the owner hears nothing.
  bool Connect(const ZnMachine& own, const ZnMachine& server, std::chrono::milliseconds patience);
  // Ends it without a word to the server. Exchanges' owners hear ErrDisconnect from the loop, the owner hears nothing.
  void Close();
  // From Connected on until the end.
  bool IsUp() const { return nbt_.IsEstablished(); }
  // Whether the server is known to have hung up (looked at before the first request after a rest). False when not up.
  bool HasHungUp() const { return nbt_.HasHungUp(); }
  const ZnUnixError& Error() const { return nbt_.Error(); }  // of the last Connect or the last end

  void ReplyTimeout(std::chrono::milliseconds span) { replyTimeout_ = span; }  // 10 s at first
  void MostInFlight(unsigned count);                                           // kept within 1 and kMostInFlight
  // Signs what goes out from now on, and wants each reply to it signed. Sequence numbers begin at 2: those before
  // belong to the logon that agreed on the key.
  // Nothing when `signing` isn't on.
  void SignWith(const ZnSmbSigning& signing);

  // Queues a request; its owner hears Replied or NotReplied later, never from within. Also when the connection isn't
  // up: ErrNotConnected, `unserved`.
  ZnSmbExchangeId Send(ZnSmbRequest request, ZnSmbExchangeOwner* owner);
  // The owner doesn't wait any longer and hears nothing more. What hasn't gone out yet is taken back; to what has, the
  // reply is read and discarded. Nothing when the exchange is over.
  void GiveUp(ZnSmbExchangeId id);

  // Those given up included that the server hasn't answered.
  size_t InFlight() const { return inFlight_.size() + overdue_.size(); }
  size_t Waiting() const { return waiting_; }  // for their turn

 private:
  using Callback = ZnSimpleCallback<ZnEvent::cbdispatch, ZnSmbConnection>;

  // What an owner waits for: its turn, the reply, or hearing that there won't be one.
  struct Place;
  using Places = std::list<Place>;
  struct Exchange {
    ZnSmbExchangeId id = 0;
    ZnSmbExchangeOwner* owner = nullptr;
    ZnSmbRequest request;    // until it goes out
    Place* place = nullptr;  // in flight
    bool waits = false;      // for its turn
  };
  // When a time began, and how much had come by then.
  struct Start {
    ZnMoment time;
    uint64_t received = 0;
  };
  // A place among those in flight. Its number and how often it was taken make the multiplex id, so that an id comes
  // again only after a thousand others of its place.
  struct Place {
    uint16_t number = 0;
    uint32_t taken = 0;            // times, on this connection
    ZnSmbExchangeId exchange = 0;  // 0: given up
    ZnSMBClientValues::Command command = ZnSMBClientValues::CmdNone;
    uint32_t sequence = 0;  // of the request's signature; 0 without
    uint64_t end = 0;       // of the request, in all that is sent
    Start start;
    Places* in = nullptr;
  };

  void SessionEstablished() override;
  void MessageReceived(std::span<const uint8_t> message) override;
  void SessionEnded(ZnNbtConnection::End end) override;

  Exchange* Find(ZnSmbExchangeId id);
  ZnSmbExchangeOwner* Forget(ZnSmbExchangeId id);
  void Fail(ZnSmbExchangeId id, const ZnSmbNoReply& why);
  void FailAll(Reason reason);
  void End(Reason reason);

  void TurnEnds(ZnEventCallback*, ZnEvent::cbdispatch);
  bool TellFailures();
  void Launch(Exchange& exchange);
  void Sign(ZnSmbRequest& request, Place& place);

  static void Move(Places::iterator place, Places& to);
  static uint16_t MidOf(const Place& place);
  bool WasSent(uint16_t mid) const;
  bool IsSignedFor(const Place& place, std::span<const uint8_t> message) const;
  void Answer(Places::iterator place, const ZnSMBCDecode& reply);
  Start Now() const { return {ZnSteadyClock::now(), nbt_.Received()}; }
  void StartTime(Places::iterator place);
  void Vacate(Places::iterator place);
  void TimeIsOver(ZnEventCallback*, ZnEvent::cbdispatch);
  void GiveUpOldest();

  ZnEventLoopBase* loop_;
  ZnSmbConnection::Owner* owner_;
  ZnNbtConnection nbt_;
  Callback turnEnds_{this, &ZnSmbConnection::TurnEnds};
  Callback timeIsOver_{this, &ZnSmbConnection::TimeIsOver};
  ZnTimer deadline_;
  std::chrono::milliseconds replyTimeout_{10000};
  unsigned most_ = 1;
  std::optional<ZnSmbSigning> signing_;
  uint32_t nextSequence_ = 0;
  unsigned conversation_ = 0;      // counts connections, to notice one that began inside a callback
  ZnSmbExchangeId answering_ = 0;  // whose owner is being told of a reply

  std::vector<Exchange> exchanges_;
  std::vector<uint32_t> unused_;  // of those
  ZnSmbTurns turns_;              // whose exchange has gone is passed over
  size_t waiting_ = 0;
  std::deque<std::pair<ZnSmbExchangeId, ZnSmbNoReply>> failures_;  // to be told at the turn's end

  Places free_, inFlight_, overdue_;  // the latter in the order in which their time began
  std::array<Places::iterator, kMostInFlight> places_;
  Start moved_;  // when the oldest in flight was answered last

  ZnReferable alive_;
};
