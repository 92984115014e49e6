#include "runtime/inet_addr.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "runtime/network_interface.h"
#include "runtime/os_stream.h"

namespace {

constexpr size_t kAddressSize = 4;

}  // namespace

bool ZnInetAddr::Read(const uint8_t*& cursor, size_t& remaining) {
  if (remaining < kAddressSize) {
    error_ = "! (4 bytes of address expected)";
    return false;
  }
  memcpy(&address_.sin_addr, cursor, kAddressSize);
  address_.sin_port = 0;
  error_ = ZnUniString();
  cursor += kAddressSize;
  remaining -= kAddressSize;
  return true;
}

void ZnInetAddr::Write(uint8_t*& cursor) const {
  memcpy(cursor, &address_.sin_addr, kAddressSize);
  cursor += kAddressSize;
}

void ZnInetAddr::Port(int64_t value) {
  if (value < 0 || value > UINT16_MAX) {
    ZnOSStream text;
    text << "! (0 <= port " << value << " < 65536)";
    error_ = text.text();
    return;
  }
  address_.sin_port = htons(static_cast<uint16_t>(value));
  error_ = ZnUniString();
}

ZnUniString ZnInetAddr::AsString(bool withport) const {
  uint32_t a = AsUint32();
  char text[sizeof("255.255.255.255:65535")];
  int length = snprintf(text, sizeof(text), "%u.%u.%u.%u", a >> 24, a >> 16 & 255, a >> 8 & 255, a & 255);
  if (withport) snprintf(text + length, sizeof(text) - static_cast<size_t>(length), ":%u", GetPort());
  return text;
}

bool ZnInetAddr::FromString(const ZnUniString& text, bool withport) {
  if (text == "*") {
    address_.sin_addr.s_addr = INADDR_ANY;
    return true;
  }
  // Long enough that no number of digits wraps into the range.
  unsigned long bytes[kAddressSize];
  unsigned long port = 0;
  const std::string utf8 = text.AsUtf8();
  const char* form = withport ? "%lu.%lu.%lu.%lu:%lu" : "%lu.%lu.%lu.%lu";
  int filled = sscanf(utf8.c_str(), form, &bytes[0], &bytes[1], &bytes[2], &bytes[3], &port);  // NOLINT
  if (filled != (withport ? 5 : 4)) return false;
  if (std::any_of(bytes, bytes + kAddressSize, [](unsigned long b) { return b > 255; }) || port > UINT16_MAX) {
    return false;
  }
  if (port != 0) Port(static_cast<int64_t>(port));
  address_.sin_addr.s_addr = htonl(static_cast<uint32_t>(bytes[0] << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3]));
  return true;
}

bool ZnInetAddr::IsLocal(bool refresh) const {
  if (IsAddressEqual(AddressLoopback())) return true;
  const ZnDList<ZnNetworkInterface>* interfaces = nullptr;
  ZnGetNetworkInterfaces(refresh, interfaces);
  return std::any_of(interfaces->begin(), interfaces->end(),
                     [this](const ZnNetworkInterface& one) { return IsAddressEqual(one.address); });
}
