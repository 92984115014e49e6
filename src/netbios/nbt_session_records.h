#pragma once
// Packets of the NetBIOS session service. (RFC 1002 section 4.3)

#include <array>

#include "netbios/nbt_fields.h"

enum class ZnNbtPacket : uint8_t {
  Message = 0x00,
  Request = 0x81,
  Positive = 0x82,
  Negative = 0x83,
  Retarget = 0x84,
  KeepAlive = 0x85,
};

// What stands in front of each packet's payload. The length has 17 bits.
struct ZnNbtSessionHeader : ZnRecord<ZnNbtSessionHeader> {
  static constexpr size_t kSize = 4;
  static constexpr size_t kLongestPayload = 0x1FFFF;

  ZnNbtPacket type = ZnNbtPacket::Message;
  bool bit16 = false;
  uint16_t low = 0;

  size_t Length() const { return (bit16 ? size_t{1} << 16 : 0) + low; }
  // `length` is at most kLongestPayload.
  void Length(size_t length) {
    bit16 = length > 0xFFFF;
    low = static_cast<uint16_t>(length);
  }

  // As packed, without an allocation for four bytes.
  std::array<uint8_t, kSize> Bytes() const {
    return {static_cast<uint8_t>(type), bit16, static_cast<uint8_t>(low >> 8), static_cast<uint8_t>(low)};
  }

  template <class Io>
  bool Fields(Io& io) {
    return io.U8(type) && io.HighIgnored(7) && io.HighBits(bit16, 1) && io.U16be(low);
  }
  bool operator==(const ZnNbtSessionHeader&) const = default;
};

// Someone else to talk to.
struct ZnNbtRetarget : ZnRecord<ZnNbtRetarget> {
  ZnInetAddr address;
  uint16_t port = 0;

  template <class Io>
  bool Fields(Io& io) {
    return ZnNBTFields::Address(io, address) && io.U16be(port);
  }
  bool operator==(const ZnNbtRetarget&) const = default;
};
