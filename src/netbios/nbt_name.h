#pragma once
// A NetBIOS name inside a packet, in first-level encoding (RFC 1001 section 14.1, RFC 1002 section 4.1).

#include "netbios/machine.h"
#include "runtime/wire.h"

struct ZnNBTName {
  ZnUniString name;  // as it came: blanks at the end included, scope labels behind it with "." in front
  uint8_t type = 0;
  bool pointer = false;  // the packet points to the name of its first question instead of repeating it
  bool valid = true;

  ZnNBTName() = default;
  explicit ZnNBTName(const ZnMachine& machine) : name(machine.Name()), type(machine.NameType()) {}

  bool Read(ZnWireReader& in);
  // A name is written as ZnMachine::EncodeRFC883 gives it, without scope; a pointer as one to the first question.
  bool Write(ZnWireWriter& out) const;
  // Reads the encoded form, the final zero included. False when it is cut short or isn't one.
  bool DecodeRFC883(ZnWireReader& in);

  bool operator==(const ZnNBTName&) const = default;
};
