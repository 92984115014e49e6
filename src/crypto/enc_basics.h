#pragma once
// Byte orders, and small picks from buffers.

#include "runtime/byte_buffer.h"

struct ZnEncBasics {
  // The bytes at odd positions, or at even ones, in order. The first byte's position is 0.
  static ZnByteBuffer ExtractOddsEvens(const ZnByteBuffer& buffer, bool odds);
  // Index of the first byte equal to `*pointer`; the buffer's length when there is none.
  static size_t FindTheChar(const ZnByteBuffer& buffer, const uint8_t* pointer);

  // Numbers to and from 4 or 8 bytes, which must be there.
  static void ConvertU32ToB_Big(uint32_t value, uint8_t* bytes);
  static uint32_t ConvertBToU32_Big(const uint8_t* bytes);
  static void ConvertU32ToB_Little(uint32_t value, uint8_t* bytes);
  static uint32_t ConvertBToU32_Little(const uint8_t* bytes);
  static uint64_t ConvertBToU64_Big(const uint8_t* bytes);
};
