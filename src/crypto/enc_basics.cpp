#include "crypto/enc_basics.h"

#include <algorithm>

ZnByteBuffer ZnEncBasics::ExtractOddsEvens(const ZnByteBuffer& buffer, bool odds) {
  ZnByteBuffer picked;
  for (size_t i = odds ? 1 : 0; i < buffer.Length(); i += 2) picked.Append(buffer[i]);
  return picked;
}

size_t ZnEncBasics::FindTheChar(const ZnByteBuffer& buffer, const uint8_t* pointer) {
  const uint8_t* begin = buffer.Data();
  return static_cast<size_t>(std::find(begin, begin + buffer.Length(), *pointer) - begin);
}

void ZnEncBasics::ConvertU32ToB_Big(uint32_t value, uint8_t* bytes) {
  for (unsigned i = 0; i < 4; i++) bytes[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

uint32_t ZnEncBasics::ConvertBToU32_Big(const uint8_t* bytes) {
  uint32_t value = 0;
  for (unsigned i = 0; i < 4; i++) value = value << 8 | bytes[i];
  return value;
}

void ZnEncBasics::ConvertU32ToB_Little(uint32_t value, uint8_t* bytes) {
  for (unsigned i = 0; i < 4; i++) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
}

uint32_t ZnEncBasics::ConvertBToU32_Little(const uint8_t* bytes) {
  uint32_t value = 0;
  for (unsigned i = 4; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

uint64_t ZnEncBasics::ConvertBToU64_Big(const uint8_t* bytes) {
  return uint64_t{ConvertBToU32_Big(bytes)} << 32 | ConvertBToU32_Big(bytes + 4);
}
