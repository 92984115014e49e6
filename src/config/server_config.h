#pragma once
// What the configuration says of the server as a whole.

#include <algorithm>
#include <array>
#include <optional>

#include "runtime/codeset.h"
#include "runtime/inet_addr.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

struct ZnSMBNFSServerConfig {
  int32_t port = 4444;  // UDP
  int32_t usercachemode = 1;
  std::optional<std::array<uint8_t, 32>> roothandle;  // of the file system's root; without one the first call brings it
  ZnUniString timezone;
  int32_t cleanupdelay = 10;  // seconds
  bool paranoidupdate = false;
  bool maximiselimits = false;
  ZnDList<ZnUniString> addresses;  // whose calls are accepted; never empty in a loaded record
  bool coredumps = false;          // a crash may leave an image of the memory, passwords included
  bool reservedports = false;      // only calls from ports that need root are served
  ZnDList<ZnInetAddr> winsservers;
  bool optimisticnodeinvalidation = false;
  ZnUniString symlinkname;                     // no look-up finds it
  ZnEncoding rpcencoding = ZnCodeset::Latin1;  // of the text in RPC records

  // Seconds from one clean-up to the next, at least 1: a timer of no delay would keep the loop from all else.
  uint32_t CleanUpSeconds() const { return static_cast<uint32_t>(std::max(cleanupdelay, 1)); }
};
