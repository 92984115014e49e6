#include "smb/wire/trans2_sections.h"

#include "support/layout_check.h"

namespace {

constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

// The third entry of a listing by a real server: 8-bit names whose length counts a terminator, short names in UTF-16,
// and a next offset that isn't 0 although no entry follows.
const char kEntry[] =
    "74000000 00000000 00e0b235e77cc201 00e0b235e77cc201 00e0b235e77cc201 00e0b235e77cc201 0500000000000000"
    "0000100000000000 20000000 13000000 00000000 18 00 4c004f0037004a00510030007e0034002e00540058005400"
    "6c6f6e672066696c65206e616d652e74787400000000";

TEST(Trans2Sections, EntryOfARealServer) {
  ZnPacket bytes = Hex(kEntry);
  ZnSMBCTrans2_DIRENTRY entry(kOem, kUnicode, 260, 0xC5);
  ASSERT_TRUE(ReadExactly(entry, bytes));
  EXPECT_EQ(entry.last_write_time.AsTimeVal(), (ZnTimeVal{1035633600, 0}));
  EXPECT_TRUE(entry.next_offset == 0x74 && entry.end_of_file == 5 && entry.xattribs.attribs.archive);
  EXPECT_EQ(entry.shortname, "LO7JQ0~4.TXT");
  EXPECT_EQ(entry.filename, "long file name.txt");
  EXPECT_FALSE(ZnSMBCTrans2_DIRENTRY(kOem, kOem, 259, 1).Read(bytes)) << "another level";

  // A name is never longer than what is there.
  memset(bytes.Writable() + 60, 0xFF, 4);
  bytes.SetLength(97);
  EXPECT_TRUE(ReadExactly(entry, bytes));
  EXPECT_EQ(entry.filename, "lon");
  // Nor is a short one longer than its field.
  for (auto [encoding, length, good] : {std::tuple{kOem, 12, true}, {kOem, 13, false}, {kUnicode, 26, false}}) {
    bytes.Writable()[68] = static_cast<uint8_t>(length);
    EXPECT_EQ(ZnSMBCTrans2_DIRENTRY(kOem, encoding, 260, 1).Read(bytes), good) << length;
  }
}

}  // namespace
