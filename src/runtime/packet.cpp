#include "runtime/packet.h"

uint8_t* ZnPacket::Alloc(size_t size) {
  Clear();
  SetLength(size);
  return Writable();
}

bool ZnPacket::Read(const uint8_t*& cursor, size_t& remaining, size_t size) {
  ok = size <= remaining;
  if (!ok) return false;
  Clear();
  Append(cursor, size);
  cursor += size;
  remaining -= size;
  return true;
}

std::string ZnPacket::DebugString(unsigned indent) const {
  static const char kDigits[] = "0123456789abcdef";
  constexpr size_t kPerLine = 16;
  std::string text;
  for (size_t i = 0; i < Length(); i++) {
    text += i % kPerLine == 0 ? std::string(size_t{2} * indent, ' ') : " ";
    text += kDigits[(*this)[i] >> 4];
    text += kDigits[(*this)[i] & 0xF];
    if (i % kPerLine == kPerLine - 1 || i + 1 == Length()) text += '\n';
  }
  return text;
}
