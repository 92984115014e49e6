#pragma once
// Random numbers without cryptographic strength, for times and challenges.

#include <cstddef>
#include <cstdint>

#include "runtime/byte_buffer.h"

class ZnRandom {
 public:
  // `count` bytes, each from 0 to 254.
  static ZnByteBuffer RndBuffer(size_t count);
  // Four such bytes as a big-endian number.
  static uint32_t RndNum();
};
