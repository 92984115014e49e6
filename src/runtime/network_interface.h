#pragma once
// Contract. The network interfaces of this host.

#include "runtime/inet_addr.h"
#include "runtime/list.h"
#include "runtime/unix_error.h"

struct ZnNetworkInterface {
  ZnUniString name;
  ZnInetAddr address;
  ZnInetAddr broadcast;  // 0.0.0.0 when IsBroadcastValid is false
  ZnInetAddr netmask;
  unsigned flags = 0;  // as the system gives them

  bool IsUp() const { return flags & 1; }
  bool IsBroadcastValid() const { return flags & 2; }
  bool IsLoopback() const { return flags & 8; }
  bool IsRunning() const { return flags & 64; }
  bool IsPointToPoint() const { return false; }
  bool IsPrivate() const { return false; }
  bool IsUniqueAddress() const { return true; }
};

// The number of interfaces with an IPv4 address, and in `list` the shared list of them, which stays until the next
// refresh. It is read from the system with `refresh` and whenever it is empty. On a failure 0 and an empty list; the
// failed call goes to `error`, if given.
unsigned ZnGetNetworkInterfaces(bool refresh, const ZnDList<ZnNetworkInterface>*& list, ZnUnixError* error = nullptr);
