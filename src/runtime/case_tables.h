#pragma once
// The simple case mappings of the Unicode data above U+00FF, made by tools/codeset_tables/generate.py.

#include <span>

struct ZnCaseTable {
  std::span<const char16_t> from;  // sorted
  std::span<const char16_t> to;
};
extern constinit const ZnCaseTable kZnToLower;
extern constinit const ZnCaseTable kZnToUpper;
