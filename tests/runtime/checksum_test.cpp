#include "runtime/checksum.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

// The published check value of the cksum command's sum, without its final complement.
TEST(CheckSum, OfBytesIsThatOfTheCommand) { EXPECT_EQ(ZnCheckSum::Sum(ZnByteBuffer("123456789", 9)), ~930766865U); }

// The sums come from a bit by bit calculation outside of this program.
TEST(CheckSum, OfTextGoesOverUnitsLowByteFirstAndTheirNumber) {
  const std::tuple<ZnUniString, uint32_t, ZnUniString> cases[] = {
      {".", 1, "."},
      {"..", 2, ".."},
      {"", 3, ""},
      {"a", 0x48270010, "A"},
      {"stra\xC3\x9F\x65", 0x625c7b86, "STRA\xC3\x9F\x45"},
      {ZnUniString(std::u16string(300, u'x')), 0x81f61d31, ZnUniString(std::u16string(300, u'X'))},
      {ZnUniString(std::u16string(1, u'\0')), 0x04c11db7, ZnUniString(std::u16string(1, u'\0'))},
  };
  for (const auto& [text, sum, othercase] : cases) {
    EXPECT_EQ(ZnCheckSum::Sum(text), sum) << text.AsUtf8();
    EXPECT_EQ(ZnCheckSum::SumCaseless(othercase), sum) << text.AsUtf8();
  }
}

}  // namespace
