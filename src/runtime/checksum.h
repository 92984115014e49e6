#pragma once
// Checksums of names and secrets: the CRC of the POSIX cksum command without its final complement. Not for security.

#include <cstdint>

#include "runtime/uni_string.h"

class ZnCheckSum {
 public:
  // Of bytes; an empty buffer gives 0.
  static uint32_t Sum(const ZnByteBuffer& bytes);
  // Of text, each unit as two bytes, low byte first. Three values are reserved: "." gives 1, ".." gives 2, the empty
  // text 3.
  static uint32_t Sum(const ZnUniString& text);
  // The same over the lower-case form, equal for names that differ in case only.
  static uint32_t SumCaseless(const ZnUniString& text);
};
