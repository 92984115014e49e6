// Names and packets against the examples and layouts of RFC 1001 and RFC 1002.

#include "netbios/fred.h"
#include "netbios/nbt_datagram.h"
#include "netbios/nbt_ns_datagram.h"
#include "support/layout_check.h"

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

// What addresses and nodes are made of an answer is a matter of queries.
TEST(NameServicePacket, Layouts) {
  const ZnNBTNSDatagram blank;
  const auto found = CheckLayout(
      blank, "BEF4 8580 0000 0001 0000 0000" FRED_HEX "0020 0001 00000E10 000C 6000 C0A80001 8000 0A000001");
  EXPECT_TRUE(!found.answers[0].addresses[0].group && found.answers[0].addresses[1].group);

  const auto status =
      CheckLayout(blank, "0001 8400 0000 0001 0000 0000" FRED_HEX
                         "0021 0001 00000000 0029 02"
                         "465245442020202020202020202020 20 0400 574F524B0041414141414141414141 00 8C00 01020304");
  EXPECT_EQ(status.answers[0].nodelist[1].Machine(), ZnMachine("WORK", 0x00));  // ends at the zero byte
}

TEST(NameServicePacket, RefusesDataThatContradictsItself) {
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
