#pragma once
// What a server has told about itself in negotiate and session setup. As good as new for each connection.

#include "runtime/packet.h"
#include "runtime/uni_string.h"
#include "smb/wire/client_values.h"
#include "smb/wire/encodings.h"

struct ZnSMBServerInfo {
  static constexpr ZnSMBClientValues::Dialect kNoDialect{3};  // not negotiated yet
  static constexpr uint16_t kDefaultBuffer = 1024;            // what every server of the oldest dialect can take
  static constexpr uint16_t kSmallestBuffer = 300;

  ZnSMBClientValues::Dialect dialect = kNoDialect;
  ZnSMBClientValues::SecurityLevel securitylevel = ZnSMBClientValues::SecLevelShare;
  bool encryptedpasswords = false;
  bool extendedsecurity = false;  // logons carry tokens
  bool cansign = false;           // its messages, if the client does
  bool mustsign = false;
  bool unicode = true;  // strings go in Unicode: what is offered, and after negotiate what was agreed on
  bool guest = false;   // the logon was taken as guest
  uint16_t maxmpx = 0;
  uint16_t announcedbuffer = kDefaultBuffer;  // largest message it takes, in bytes, as it said
  uint32_t sessionkey = 0;
  int16_t timezone = 0;     // minutes west of UTC
  uint64_t systemtime = 0;  // when it answered, in 100 ns since 1601; 0 if it didn't tell
  ZnSMBCCapabilities capabilities;
  ZnPacket challenge;
  ZnUniString nativeos;

  // The largest message to reckon with. A server that announces less than a request needs can't be served anyway.
  uint16_t maxbuffersize() const { return announcedbuffer < kSmallestBuffer ? kSmallestBuffer : announcedbuffer; }
};
