// Names and packets against the examples and layouts of RFC 1001 and RFC 1002.

#include <gtest/gtest.h>

#include "netbios/fred.h"
#include "netbios/nbt_ns_datagram.h"
#include "support/read_exactly.h"

namespace {

TEST(Name, Decodes) {
  const std::pair<const char*, const char*> cases[] = {
      // a null name: refused
      {FRED_HEX, "FRED           "},
      {"04 4547 4341 07 4E455442494F53 03 434F4D 00", "F.NETBIOS.COM"},
      {"", nullptr},
      {"00", nullptr},
      {"05 4547 4341 41 00", nullptr},        // odd
      {"04 4551 4341 00", nullptr},           // a "Q"
      {"04 4547 4341", nullptr},              // no end
      {"04 4547 4341 05 41 00", nullptr},     // scope label longer than what is left
      {"04 4547 4341 C0 0C 00 00", nullptr},  // pointer in a scope
      {"7E 4547 4341 00", nullptr},           // longer than the packet
  };
  for (const auto& [digits, meant] : cases) {
    const ZnPacket bytes = Hex(digits);
    ZnWireReader in(bytes);
    ZnNBTName name;
    EXPECT_EQ(name.Read(in), meant != nullptr) << digits;
    EXPECT_EQ(name.valid, meant != nullptr);
    if (!meant) continue;
    EXPECT_EQ(name.name, meant);
    EXPECT_TRUE(name.type == 0x20 && in.Remaining() == 0) << digits;
  }
}

TEST(NameServicePacket, RefusesDataThatIsCutOrContradictsItself) {
  const ZnPacket statusOfNode =
      Hex("0001 8400 0000 0001 0000 0000" FRED_HEX
          "0021 0001 00000000 0029 02"
          "465245442020202020202020202020 20 0400 574F524B0041414141414141414141 00 8C00 01020304");
  for (size_t length = 0; length <= statusOfNode.Length(); length++) {
    ZnNBTNSDatagram packet;
    EXPECT_EQ(ReadExactly(packet, statusOfNode, length), length == statusOfNode.Length()) << length;
  }
  for (const char* digits : {
           "0001 8400 FFFF FFFF FFFF FFFF",
           "0001 8400 0000 0001 0000 0000" FRED_HEX "0001 0001 00000000 0005 7F00000100",  // an A record of five bytes
           "0001 8400 0000 0001 0000 0000" FRED_HEX "0020 0001 00000000 0007 60007F000001 00",
           "0001 8400 0000 0001 0000 0000" FRED_HEX "0021 0001 00000000 0013 02"  // two nodes counted, one there
           "465245442020202020202020202020 20 0400",
           "0001 8400 0000 0001 0000 0000" FRED_HEX "0021 0001 00000000 0000",
           "0001 8400 0000 0001 0000 0000" FRED_HEX "0020 0001 00000000 FFFF 6000 7F000001",
       }) {
    ZnNBTNSDatagram packet;
    EXPECT_FALSE(ReadExactly(packet, Hex(digits))) << digits;
  }
}

}  // namespace
