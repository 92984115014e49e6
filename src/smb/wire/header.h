#pragma once
// The 32 bytes at the start of every message. (MS-CIFS 2.2.3.1)

#include "smb/wire/client_values.h"
#include "smb/wire/smb_visitors.h"

struct ZnSMBCHeader : ZnSmbRecord<ZnSMBCHeader> {
  static constexpr size_t kSize = 32;

  ZnSMBClientValues::Command command = ZnSMBClientValues::CmdCreateDir;
  uint8_t error_class = 0;
  uint16_t error_code = 0;
  bool caseless_paths = false;
  bool canonical_paths = false;
  bool oplock = false;
  bool oplock_notify = false;
  bool reply = false;
  bool long_names = false;
  bool extended_attributes = false;
  bool read_if_execute = false;
  bool nt_status = false;
  bool unicode = false;  // the strings of this message are UTF-16
  uint16_t tid = 0;
  uint16_t pid = 0;
  uint16_t uid = 0;
  uint16_t mid = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.Constant(0xFF) && io.Constant('S') && io.Constant('M') && io.Constant('B') && io.U8(command) &&
           io.U8(error_class) && io.Reserved(1) && io.U16le(error_code) && Flags(io) && io.Reserved(12) &&
           io.U16le(tid) && io.U16le(pid) && io.U16le(uid) && io.U16le(mid);
  }
  template <class Io>
  bool Flags(Io& io) {
    return io.LowIgnored(3) && io.LowBits(caseless_paths, 1) && io.LowBits(canonical_paths, 1) &&
           io.LowBits(oplock, 1) && io.LowBits(oplock_notify, 1) && io.LowBits(reply, 1) && io.LowBits(long_names, 1) &&
           io.LowBits(extended_attributes, 1) && io.LowIgnored(11) && io.LowBits(read_if_execute, 1) &&
           io.LowBits(nt_status, 1) && io.LowBits(unicode, 1);
  }
  // Changes the mid of a message that is packed already.
  static void SetMid(ZnByteBuffer& message, uint16_t mid) {
    constexpr size_t kMidOffset = 30;
    uint8_t* const bytes = message.Writable() + kMidOffset;
    bytes[0] = static_cast<uint8_t>(mid);
    bytes[1] = static_cast<uint8_t>(mid >> 8);
  }
  bool operator==(const ZnSMBCHeader&) const = default;
};
