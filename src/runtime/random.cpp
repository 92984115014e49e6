#include "runtime/random.h"

#include <unistd.h>

#include <cstdlib>

#include "runtime/time_val.h"

namespace {

uint8_t NextByte() {
  static const bool seeded = [] {
    srand48(static_cast<long>(getpid()) + static_cast<long>(ZnTimeVal::now().microseconds));
    return true;
  }();
  static_cast<void>(seeded);
  return static_cast<uint8_t>(drand48() * 255.0);
}

}  // namespace

ZnByteBuffer ZnRandom::RndBuffer(size_t count) {
  ZnByteBuffer bytes;
  bytes.SetLength(count);
  uint8_t* out = bytes.Writable();
  for (size_t i = 0; i < count; i++) out[i] = NextByte();
  return bytes;
}

uint32_t ZnRandom::RndNum() {
  uint32_t number = 0;
  for (int i = 0; i < 4; i++) number = number << 8 | NextByte();
  return number;
}
