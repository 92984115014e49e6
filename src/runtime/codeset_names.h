#pragma once
// The names of encodings and options, upper case, in the order of the numbers. The first of a number is its canonical
// name.

#include <cstddef>
#include <span>

#include "runtime/codeset.h"

struct ZnCodesetName {
  unsigned number;
  const char* name;
};

extern constinit const std::span<const ZnCodesetName> kZnCodesetNames;
extern constinit const std::span<const ZnCodesetName> kZnCodesetOptions;
