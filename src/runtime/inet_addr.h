#pragma once
// Contract. An IPv4 address with a port, as a value.

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <functional>

#include "runtime/uni_string.h"

class ZnInetAddr {
 public:
  // Any address (0.0.0.0), port 0.
  ZnInetAddr() = default;
  explicit ZnInetAddr(const sockaddr_in& address) : ZnInetAddr(address.sin_addr) {
    address_.sin_port = address.sin_port;
  }
  explicit ZnInetAddr(in_addr address) { address_.sin_addr = address; }
  // The four bytes as they are written, 127, 0, 0, 1 for the local host.
  ZnInetAddr(uint8_t a, uint8_t b, uint8_t c, uint8_t d)
      : ZnInetAddr(uint32_t{a} << 24 | uint32_t{b} << 16 | uint32_t{c} << 8 | d) {}
  // `address` in host order, the first byte highest: 0x7F000001 is 127.0.0.1.
  explicit ZnInetAddr(uint32_t address) { address_.sin_addr.s_addr = htonl(address); }

  static ZnInetAddr AddressAny() { return {}; }
  static ZnInetAddr AddressLoopback() { return ZnInetAddr(INADDR_LOOPBACK); }

  // Takes four bytes in network order at `cursor`, moving it on and lowering `remaining`; the port becomes 0. With
  // fewer left: false, an error is held, and nothing else changes.
  bool Read(const uint8_t*& cursor, size_t& remaining);
  // Puts the four bytes at `cursor`, which has room for them, and moves it on.
  void Write(uint8_t*& cursor) const;

  // The port in host order.
  uint16_t GetPort() const { return ntohs(address_.sin_port); }
  // Sets the port. Outside 0 to 65535 the port stays and the address holds an error.
  void Port(int64_t value);
  // The address in host order.
  uint32_t AsUint32() const { return ntohl(address_.sin_addr.s_addr); }
  // "127.0.0.1", or with the port "127.0.0.1:139".
  ZnUniString AsString(bool withport) const;
  // Reads the dotted form, with ":" and a port when `withport`; "*" alone is the any address. Text behind the form is
  // ignored. False, changing nothing, when it isn't one. A port of 0 leaves the port as it is.
  bool FromString(const ZnUniString& text, bool withport);

  // What went wrong in the last Read or Port that failed; empty when all is well.
  const ZnUniString& Error() const { return error_; }

  // The same host, whatever the port.
  bool IsAddressEqual(const ZnInetAddr& other) const { return AsUint32() == other.AsUint32(); }
  // The same host and port.
  bool operator==(const ZnInetAddr& other) const { return IsAddressEqual(other) && GetPort() == other.GetPort(); }
  // This host: 127.0.0.1, or the address of one of its interfaces, whose list is read anew with `refresh`.
  bool IsLocal(bool refresh) const;

  // For system calls.
  const sockaddr_in& SockAddr() const { return address_; }

 private:
  sockaddr_in address_ = {AF_INET, 0, {INADDR_ANY}, {}};
  ZnUniString error_;
};

template <>
struct std::hash<ZnInetAddr> {
  size_t operator()(const ZnInetAddr& address) const noexcept {
    return std::hash<uint64_t>()(uint64_t{address.AsUint32()} << 16 | address.GetPort());
  }
};
