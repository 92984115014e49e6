#include "smb/wire/encodings.h"

#include "support/layout_check.h"

namespace {

using V = ZnSMBClientValues;

TEST(Encodings, Layouts) {
  CheckLayout(ZnSMBCCapabilities(), "04100000", [](auto& s) { s.unicode = s.dfs = true; });
  CheckLayout(ZnSMBCAccessMode(), "4355", [](auto& s) {
    s.access = V::AccessExecute, s.sharing = V::DenyNone, s.locality = 5, s.cache_mode = s.write_through = true;
  });
  CheckLayout(ZnSMBCFileAttributes(), "2900", [](auto& s) { s.read_only = s.volume = s.archive = true; });
  CheckLayout(ZnSMBCFileXAttributes(), "900800a1", [](auto& s) {
    s.attribs.directory = s.normal = s.compressed = s.posix_semantics = s.no_buffering = s.write_through = true;
  });
  CheckLayout(ZnSMBCOpenFunction(), "1200", [](auto& s) { s.action = V::OFTruncate, s.create = true; });
}

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
