#pragma once
// A request on its way to a server, and whoever waits for its reply.

#include <cstdint>

#include "runtime/packet.h"
#include "smb/wire/client_values.h"
#include "smb/wire/message.h"

// Names an exchange for as long as the process lives; 0 names none.
using ZnSmbExchangeId = uint64_t;

// On whose behalf requests go out. Where more wait than the server takes at a time, callers take turns.
using ZnSmbCaller = uint64_t;

// Why there is no reply.
struct ZnSmbNoReply {
  ZnSMBClientValues::Reason reason = ZnSMBClientValues::ErrNone;
  bool unserved = false;  // the server can't have acted on the request, now or later: it never gets all of it
};

// What goes out: the message up to its file data, then the file data, which are never copied.
struct ZnSmbRequest {
  ZnSMBClientValues::Command command = ZnSMBClientValues::CmdNone;
  ZnPacket message;   // header, words, data section; the connection sets mid and signature
  ZnByteBuffer tail;  // the rest of the data section, shared with the caller's buffer; counted in the message already
  ZnSmbCaller caller = 0;
};

// Waits for replies. It gives its exchanges up (ZnSmbConnection::GiveUp) before it goes.
class ZnSmbExchangeOwner {
 public:
  ZnSmbExchangeOwner() = default;
  ZnSmbExchangeOwner(const ZnSmbExchangeOwner&) = delete;
  ZnSmbExchangeOwner& operator=(const ZnSmbExchangeOwner&) = delete;
  virtual ~ZnSmbExchangeOwner() = default;

  // A message that answers the request: of its command and multiplex id, refusals included. Good for this call only,
  // as are all that was read out of it without a copy. True: more messages of this reply are to come, each with a
  // deadline of its own. False: the exchange is over (whatever else the server sends to it is read and discarded).
  // The owner may delete itself, the connection, anything, and gives false then; it doesn't run the event loop.
  virtual bool Replied(ZnSmbExchangeId id, const ZnSMBCDecode& reply) = 0;
  // There won't be a reply. The exchange is gone already. Never called from within Send, GiveUp or Close.
  virtual void NotReplied(ZnSmbExchangeId id, const ZnSmbNoReply& why) = 0;
};
