#include "smb/wire/encodings.h"

#include "support/layout_check.h"

namespace {

TEST(Encodings, BitsThatMustBeZero) {
  for (unsigned bit = 0; bit < 16; bit++) {
    ZnPacket bytes = Hex("0000");
    bytes.Writable()[bit / 8] = static_cast<uint8_t>(1U << bit % 8);
    EXPECT_EQ(ZnSMBCOpenFunction().Read(bytes), bit < 2 || bit == 4) << bit;
    EXPECT_EQ(ZnSMBCAccessMode().Read(bytes), bit != 3 && bit != 7 && bit != 11 && bit != 13 && bit != 15) << bit;
    EXPECT_TRUE(ZnSMBCFileAttributes().Read(bytes)) << bit;
  }
}

}  // namespace
