#include <gtest/gtest.h>

#include "smb/wire/smb_visitors.h"
#include "support/hex.h"

namespace {

constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

// How texts are written shows in the sections that hold them.
TEST(SmbText, Read) {
  constexpr size_t kNoLimit = SIZE_MAX;
  const struct {
    const char *what, *digits;
    ZnEncoding encoding;
    size_t offset, limit;
    const char* text;
    size_t left;
  } cases[] = {
      {"terminated", "8200 63", kOem, 0, kNoLimit, "é", 1},
      {"nothing there", "", kOem, 0, kNoLimit, "", 0},
      {"limit before the terminator", "616200", kOem, 0, 1, "a", 2},
      {"limit behind the terminator", "61620063", kOem, 0, 4, "ab", 1},
      {"limit behind the end", "6162", kOem, 0, 9, "ab", 0},
      {"limit 0", "6162", kOem, 0, 0, "", 2},
      {"UTF-16 with a pad", "ff 61000000", kUnicode, 2, kNoLimit, "a", 0},
      {"the pad and no more", "ff", kUnicode, 0, kNoLimit, "", 0},
      {"nothing there, not even the pad", "", kUnicode, 0, kNoLimit, "", 0},
      {"UTF-16 not terminated", "61006200", kUnicode, 1, kNoLimit, "ab", 0},
      {"half a character at the end", "610062", kUnicode, 1, kNoLimit, "a", 1},
      {"zeros across characters are no terminator", "0061 0000", kUnicode, 1, kNoLimit, "\u6100", 0},
      {"UTF-16 odd limit", "61006200", kUnicode, 1, 3, "a", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const ZnPacket bytes = Hex(c.digits);
    ZnSmbReader in(bytes);
    ZnUniString text = "not this";
    EXPECT_TRUE(in.TextAt(text, c.encoding, c.offset, c.limit));
    EXPECT_EQ(text, c.text);
    EXPECT_EQ(in.Remaining(), c.left);
  }
}

}  // namespace
