#pragma once
// Names of enumerators as text, from tables.

#include <concepts>
#include <span>
#include <string>
#include <utility>

struct ZnEnumName {
  long value;
  const char* name;
};

// The name of `value` in `names`, or "Unknown <type> (<value>)".
inline std::string ZnNameOf(std::span<const ZnEnumName> names, const char* type, std::integral auto value) {
  for (const ZnEnumName& row : names) {
    if (std::cmp_equal(row.value, value)) return row.name;
  }
  return std::string("Unknown ") + type + " (" + std::to_string(value) + ")";
}
