#pragma once
// The multi-byte Chinese sets: two-byte codes in a table, and in GB 18030 also four-byte sequences that are counted
// through. A four-byte sequence has bytes 81-FE, 30-39, 81-FE, 30-39, each rolling over into the one on its left.

#include "runtime/codeset_tables.h"

struct CharmapTable {
  const ZnPairTable& pairs;
  uint8_t firstLead;
  uint8_t lastLead;
  uint8_t firstHighTrail;  // trails are 40-7E, and from here to FE
  std::span<const ZnCharmapRange> ranges;

  // Writes the code of a character into `bytes` (4 of them). Gives its length, 0 when there is none.
  size_t Lookup(char16_t character, uint8_t* bytes) const;
  // The character of a big-endian two-byte code or four-byte sequence, of any value; false when it has none.
  bool Lookup2(unsigned bytes, char16_t& character) const;
  bool Lookup4(uint32_t bytes, char16_t& character) const;
};
