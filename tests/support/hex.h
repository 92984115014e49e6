#pragma once
// Bytes as people write them in tests.

#include <string>
#include <string_view>

#include "runtime/packet.h"

// "01 02ff" is three bytes. Anything that isn't a digit is passed over, so that layouts can be spaced and broken
// freely.
inline ZnPacket Hex(std::string_view digits) {
  ZnPacket bytes;
  int high = -1;
  for (char c : digits) {
    int value = c >= '0' && c <= '9'   ? c - '0'
                : c >= 'a' && c <= 'f' ? c - 'a' + 10
                : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                       : -1;
    if (value < 0) continue;
    if (high < 0) {
      high = value;
      continue;
    }
    bytes.Append(static_cast<uint8_t>(high << 4 | value));
    high = -1;
  }
  return bytes;
}

inline std::string ToHex(const ZnByteBuffer& bytes) {
  std::string digits;
  for (size_t i = 0; i < bytes.Length(); i++) {
    digits += "0123456789abcdef"[bytes[i] >> 4];
    digits += "0123456789abcdef"[bytes[i] & 15];
  }
  return digits;
}
