#pragma once
// A share of a server as the client knows it: where it is and, once connected, the id (tid) under which requests name
// it.

#include "netbios/machine.h"
#include "runtime/uni_string.h"
#include "smb/wire/client_values.h"

// A plain value, copied freely. The tid is good only on the connection that gave it.
struct ZnSMBCTreeObject {
  static constexpr uint16_t kNotConnected = 0xFFFF;

  uint16_t tid = kNotConnected;
  ZnMachine machine;
  ZnUniString share;  // upper case
  ZnSMBClientValues::Service service = ZnSMBClientValues::ServiceUnknown;

  ZnSMBCTreeObject() = default;
  // `shareName` is upper-cased character by character.
  ZnSMBCTreeObject(const ZnMachine& server, const ZnUniString& shareName,
                   ZnSMBClientValues::Service kind = ZnSMBClientValues::ServiceUnknown);

  // "\\MACHINE\SHARE".
  ZnUniString UNCShare() const;

  // The text that a tree connect carries for a kind of service ("A:", "LPT1:", "COMM", "IPC"); "?????" for any other.
  static ZnUniString ServiceString(ZnSMBClientValues::Service service);
  // The reverse; ServiceUnknown for every other text.
  static ZnSMBClientValues::Service ServiceType(const ZnUniString& text);
};
