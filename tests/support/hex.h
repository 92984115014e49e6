#pragma once
// Bytes as people write them in tests.

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>

#include "runtime/packet.h"

// "01 02ff" is three bytes. Anything that isn't a digit is passed over, so that layouts can be spaced and broken
// freely.
inline ZnPacket Hex(std::string_view digits) {
  std::string packed;
  std::copy_if(digits.begin(), digits.end(), std::back_inserter(packed),
               [](unsigned char c) { return std::isxdigit(c) != 0; });
  ZnPacket bytes;
  for (size_t i = 0; i + 1 < packed.size(); i += 2)
    bytes.Append(static_cast<uint8_t>(std::stoi(packed.substr(i, 2), nullptr, 16)));
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
