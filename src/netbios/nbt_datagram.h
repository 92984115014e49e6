#pragma once
// Packets of the NetBIOS datagram service (RFC 1002 section 4.4).

#include "netbios/nbt_fields.h"
#include "netbios/nbt_name.h"

// The user data of a datagram: whatever is left of the packet.
struct ZnNBTDataFragment : ZnRecord<ZnNBTDataFragment> {
  ZnPacket bytes;

  template <class Io>
  bool Fields(Io& io) {
    return io.Rest(bytes);
  }
  bool operator==(const ZnNBTDataFragment&) const = default;
};

struct ZnNBTDatagram : ZnRecord<ZnNBTDatagram> {
  enum messageType : uint8_t {
    DirectUnique = 0x10,
    DirectGroup = 0x11,
    Broadcast = 0x12,
    Error = 0x13,
    QueryRequest = 0x14,
    PositiveResponse = 0x15,
    NegativeResponse = 0x16,
  };

  messageType type = DirectUnique;
  uint8_t nodeType = 0;  // SNT: the kind of node that sends
  bool first = true;     // F: the first fragment
  bool more = false;     // M: more fragments follow
  uint16_t id = 0;
  ZnInetAddr source;  // with port
  uint16_t length = 0;
  uint16_t offset = 0;
  ZnNBTName sourcename;    // of messages only
  ZnNBTName destname;      // of messages and queries
  ZnNBTDataFragment data;  // of messages only

  bool IsMessage() const { return type >= DirectUnique && type <= Broadcast; }
  bool IsQuery() const { return type >= QueryRequest && type <= NegativeResponse; }

  template <class Io>
  bool Fields(Io& io) {
    return io.U8(type) && io.HighIgnored(4) && io.HighBits(nodeType, 2) && io.HighBits(first, 1) &&
           io.HighBits(more, 1) && io.U16be(id) && Source(io) && io.U16be(length) && io.U16be(offset) &&
           (!IsMessage() || io.Record(sourcename)) && (!(IsMessage() || IsQuery()) || io.Record(destname)) &&
           (!IsMessage() || io.Record(data));
  }
  bool operator==(const ZnNBTDatagram&) const = default;

 private:
  template <class Io>
  bool Source(Io& io) {
    uint16_t port = source.GetPort();
    if (!ZnNBTFields::Address(io, source) || !io.U16be(port)) return false;
    if constexpr (Io::kReading) source.Port(port);
    return true;
  }
};
