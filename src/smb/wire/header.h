#pragma once
// The 32 bytes at the start of every message. (MS-CIFS 2.2.3.1)

#include <array>

#include "smb/wire/client_values.h"
#include "smb/wire/smb_visitors.h"

struct ZnSMBCHeader : ZnSmbRecord<ZnSMBCHeader> {
  static constexpr size_t kSize = 32;
  static constexpr size_t kSignatureOffset = 14;
  static constexpr size_t kSignatureSize = 8;

  ZnSMBClientValues::Command command = ZnSMBClientValues::CmdCreateDir;
  uint8_t error_class = 0;
  uint8_t error_middle = 0;  // of a status alone
  uint16_t error_code = 0;
  bool caseless_paths = false;
  bool canonical_paths = false;
  bool oplock = false;
  bool oplock_notify = false;
  bool reply = false;
  bool long_names = false;
  bool extended_attributes = false;
  bool signs = false;              // in requests: is able to; in all that follow the logon: does
  bool extended_security = false;  // logons are those of session_sections.h that carry tokens
  bool read_if_execute = false;
  bool nt_status = false;  // the error is a status of 32 bits
  bool unicode = false;    // the strings of this message are UTF-16
  uint16_t pid_high = 0;
  std::array<uint8_t, kSignatureSize> signature{};
  uint16_t tid = 0;
  uint16_t pid = 0;
  uint16_t uid = 0;
  uint16_t mid = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.Constant(0xFF) && io.Constant('S') && io.Constant('M') && io.Constant('B') && io.U8(command) &&
           io.U8(error_class) && io.U8(error_middle) && io.U16le(error_code) && Flags(io) && io.U16le(pid_high) &&
           io.Raw(signature.data(), signature.size()) && io.Reserved(2) && io.U16le(tid) && io.U16le(pid) &&
           io.U16le(uid) && io.U16le(mid);
  }
  template <class Io>
  bool Flags(Io& io) {
    return io.LowIgnored(3) && io.LowBits(caseless_paths, 1) && io.LowBits(canonical_paths, 1) &&
           io.LowBits(oplock, 1) && io.LowBits(oplock_notify, 1) && io.LowBits(reply, 1) && io.LowBits(long_names, 1) &&
           io.LowBits(extended_attributes, 1) && io.LowBits(signs, 1) && io.LowIgnored(8) &&
           io.LowBits(extended_security, 1) && io.LowIgnored(1) && io.LowBits(read_if_execute, 1) &&
           io.LowBits(nt_status, 1) && io.LowBits(unicode, 1);
  }
  // Changes the mid of a message that is packed already.
  static void SetMid(ZnByteBuffer& message, uint16_t mid) {
    constexpr size_t kMidOffset = 30;
    uint8_t* const bytes = message.Writable() + kMidOffset;
    bytes[0] = static_cast<uint8_t>(mid);
    bytes[1] = static_cast<uint8_t>(mid >> 8);
  }
  // The error as one number: an NT status as it is, or a class with the code in the upper half.
  uint32_t Status() const { return uint32_t{error_code} << 16 | uint32_t{error_middle} << 8 | error_class; }
  // Not an error: the logon wants another round. Servers send the NT status even to those who take only classes and
  // codes, or its counterpart of those.
  bool WantsMore() const { return Status() == 0xC0000016 || (!nt_status && error_class == 1 && error_code == 234); }
  bool operator==(const ZnSMBCHeader&) const = default;
};
