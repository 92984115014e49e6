#pragma once
// Mappings between code sets and Unicode, made by tools/codeset_tables/generate.py. For encoding, arrays sorted by
// character stand beside arrays of codes; for decoding, arrays of characters are indexed by what is left of a code when
// the gaps of the set are taken out.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "runtime/codeset.h"

inline constexpr char16_t kZnNoUnit = 0xFFFF;  // in an array of characters: the code has none

// Index of a character in a sorted array; the array's size when it isn't there.
inline size_t ZnFindUnit(std::span<const char16_t> units, char16_t unit) {
  auto found = std::lower_bound(units.begin(), units.end(), unit);
  return found != units.end() && *found == unit ? static_cast<size_t>(found - units.begin()) : units.size();
}

struct ZnSingleByteTable {
  ZnEncoding encoding;
  bool asciiCompatible;              // codes below 128 are ASCII and not in the arrays
  std::span<const char16_t> decode;  // by code, less 128 if compatible
  std::span<const char16_t> units;
  std::span<const uint8_t> codes;
};
extern constinit const std::span<const ZnSingleByteTable> kZnSingleByteTables;  // by encoding

// A set of two-byte codes.
struct ZnPairTable {
  std::span<const char16_t> grid;  // row by row, a lead byte each
  std::span<const char16_t> units;
  std::span<const uint16_t> codes;
};
extern constinit const ZnPairTable kZnBig5Pairs;     // leads A1-F9; trails 40-7E, A1-FE
extern constinit const ZnPairTable kZnGb18030Pairs;  // leads 81-FE; trails 40-7E, 80-FE
extern constinit const ZnPairTable kZnJisPairs;      // JIS X 0208; leads and trails 21-7E

// Four-byte sequences that follow each other as their characters do. `firstSequence` counts from 81 30 81 30.
struct ZnCharmapRange {
  char16_t first;
  char16_t last;
  uint32_t firstSequence;
};
extern constinit const std::span<const ZnCharmapRange> kZnGb18030Ranges;  // ascending in both
