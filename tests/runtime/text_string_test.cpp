#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "runtime/uni_string.h"

namespace {

TEST(UniString, CaseOfSingleCharacters) {
  const std::array<char16_t, 3> kCases[] = {
      {'A', 'a', 'A'},          {'@', '@', '@'},          {'[', '[', '['},         {'`', '`', '`'},
      {'z', 'z', 'Z'},          {0xB5, 0xB5, 0xB5},       {0xD7, 0xF7, 0xD7},      {0xF7, 0xF7, 0xD7},
      {0xDF, 0xDF, 0xDF},       {0xFE, 0xFE, 0xDE},       {0xFF, 0xFF, 0x178},     {0x178, 0xFF, 0x178},
      {0x130, 'i', 0x130},      {0x131, 0x131, 'I'},      {0x17F, 0x17F, 'S'},     {0x1C5, 0x1C6, 0x1C4},
      {0x1F80, 0x1F80, 0x1F88}, {0x3A3, 0x3C3, 0x3A3},    {0x3C2, 0x3C2, 0x3A3},   {0x212A, 'k', 0x212A},
      {0xFF21, 0xFF41, 0xFF21}, {0xFB00, 0xFB00, 0xFB00}, {0xFFFF, 0xFFFF, 0xFFFF}};
  for (const auto& [unit, lower, upper] : kCases) {
    EXPECT_EQ(ZnUniString::Lower(unit), lower) << static_cast<unsigned>(unit);
    EXPECT_EQ(ZnUniString::Upper(unit), upper) << static_cast<unsigned>(unit);
  }
}

TEST(UniString, Numbers) {
  // As a signed number of 32 bits, and as an unsigned one of 64.
  const std::tuple<const char16_t*, int32_t, uint64_t> kCases[] = {{u"-", 0, 0},
                                                                   {u"12a", 12, 12},
                                                                   {u" 5", 0, 0},
                                                                   {u"+5", 0, 0},
                                                                   {u"-\u06F95", -95, 0},
                                                                   {u"\uFF11\u0E51\u2081", 111, 111},
                                                                   {u"\u00B2\u00B3\u00B9", 231, 231},
                                                                   {u"\u0BE7\u0BEF\u2070\u2074\u2079", 19049, 19049},
                                                                   {u"1\u0BE6", 1, 1},
                                                                   {u"4294967297", 1, 4294967297},
                                                                   {u"18446744073709551617", 1, 1},
                                                                   {u"-2147483648", INT32_MIN, 0}};
  for (const auto& [units, number, natural] : kCases) {
    ZnUniString text(units);
    EXPECT_EQ(text.AsInt32(), number) << text.AsUtf8();
    EXPECT_EQ(text.AsUint64(), natural) << text.AsUtf8();
    EXPECT_EQ(text.AsUint16(), static_cast<uint16_t>(natural)) << text.AsUtf8();
  }
}

}  // namespace
