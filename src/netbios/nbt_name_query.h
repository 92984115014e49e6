#pragma once
// Name queries and node status requests over UDP (RFC 1001 section 15, RFC 1002 sections 4.2.12 and 4.2.17): to a name
// server, to broadcast addresses, or straight to a host. One query at a time, each from a port and with an id that
// nobody can guess.

#include "netbios/nbt_ns_datagram.h"
#include "runtime/event_loop.h"
#include "runtime/socket.h"
#include "runtime/timer.h"

class ZnNBTNameQuery : public ZnSocket {
 public:
  using QueryCallback = ZnCallback<bool>;

  // No socket yet. The loop isn't owned. `port` is the local port, 0 for any.
  ZnNBTNameQuery(ZnEventLoopBase* loop, uint16_t port);
  // Ends a query without telling its owner.
  ~ZnNBTNameQuery() override;

  // What a query uses that leaves it open: how often the request is sent again, and how long each sending waits for an
  // answer.
  void SetDefaults(int retries, std::chrono::milliseconds interval);
  // The port that requests are sent to: 137, but for tests.
  void SetNamePort(uint16_t port) { namePort_ = port; }

  // Asks each of `addresses` for the addresses of the machine's name. Negative `retries` and an `interval` of zero
  // stand for the defaults. True: sent, and `callback` (not owned) will be called once, with true when an answer came
  // and false when none did. The callback may delete this object. False: nothing was sent to at least one address, and
  // nothing will come. A query that still runs is dropped.
  bool Lookup(const ZnMachine& machine, const ZnDList<ZnInetAddr>& addresses, QueryCallback* callback, int retries,
              std::chrono::milliseconds interval, bool broadcast);
  // Asks the machine's address for the names it has; a machine without a name asks for all of them. As Lookup
  // otherwise.
  bool NodeStatus(const ZnMachine& machine, QueryCallback* callback, int retries, std::chrono::milliseconds interval,
                  bool broadcast);

  // Append what the answers of the last query hold; true when that is at least one.
  bool LookupResults(ZnDList<ZnInetAddr>& list) const;
  bool NodeStatusResults(ZnDList<ZnMachine>& list) const;

  bool IsRunning() const { return callback_ != nullptr; }
  // The broadcast addresses of the interfaces that are up, for Lookup.
  static ZnDList<ZnInetAddr> BroadcastAddresses();

 private:
  bool Initialise(int retries, std::chrono::milliseconds interval);
  bool OpenSocket();
  bool Start(ZnNBTNSDatagram datagram, const ZnDList<ZnInetAddr>& addresses, QueryCallback* callback);
  bool SendRequest();
  bool StartTimer() { return timer_.Set(interval_); }
  void ReadCB(ZnEventCallback*, ZnEvent::cbdispatch);
  void TimeoutCB(ZnEventCallback*, ZnEvent::cbdispatch);
  void RemoveCallbacks();
  bool IsAsked(const ZnNBTNSDatagram& datagram, const ZnNBTNSDatagramResource& answer) const;
  void Finish(bool found);

  ZnEventLoopBase* loop_;
  uint16_t localPort_;
  uint16_t namePort_ = 137;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTNameQuery> readCallback_{this, &ZnNBTNameQuery::ReadCB};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnNBTNameQuery> timeoutCallback_{this, &ZnNBTNameQuery::TimeoutCB};
  ZnTimer timer_;
  bool readRegistered_ = false;
  int defaultRetries_ = 0;
  std::chrono::milliseconds defaultInterval_{1000};

  uint16_t transactionId_ = 0;  // drawn anew for each query, as is the port
  int retriesLeft_ = 0;
  std::chrono::milliseconds interval_{};
  QueryCallback* callback_ = nullptr;  // of the query that runs
  ZnDList<ZnInetAddr> destinations_;
  ZnPacket request_;
  ZnNBTName asked_;
  bool directed_ = false;
  ZnDList<ZnNBTNSDatagram> datagrams_;  // the answers so far
};
