#pragma once
// The encodings in which texts travel in NetBIOS packets.

#include "runtime/codeset.h"

struct ZnSmbEncoding {
  // One byte a character, whatever the byte, so that a name read from a packet is sent as it came.
  static constexpr ZnEncoding netbiosname = ZnCodeset::Latin1;
};
