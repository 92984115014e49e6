#pragma once
// Sections that many commands share.

#include "smb/wire/smb_visitors.h"

// No words, or no data. In a reply anything is accepted: the command has nothing of interest there.
struct ZnSMBCNoWords : ZnSmbRecord<ZnSMBCNoWords> {
  template <class Io>
  bool Fields(Io&) {
    return true;
  }
  bool operator==(const ZnSMBCNoWords&) const = default;
};

struct ZnSMBCNoData : ZnSmbRecord<ZnSMBCNoData> {
  template <class Io>
  bool Fields(Io&) {
    return true;
  }
  bool operator==(const ZnSMBCNoData&) const = default;
};

// Exactly one word.
struct ZnSMBCWord : ZnSmbRecord<ZnSMBCWord> {
  uint16_t value = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(value);
  }
  bool operator==(const ZnSMBCWord&) const = default;
};

// The prefix of the "X" commands: always "no further command". A reply that chains one fails. (MS-CIFS 2.2.3.4)
struct ZnSMBCNoChainedCommand : ZnSmbRecord<ZnSMBCNoChainedCommand> {
  template <class Io>
  bool Fields(Io& io) {
    return io.Constant(0xFF) && io.Constant(0) && io.Reserved(2);
  }
  bool operator==(const ZnSMBCNoChainedCommand&) const = default;
};
