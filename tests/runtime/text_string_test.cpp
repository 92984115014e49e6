#include <gtest/gtest.h>

#include <array>

#include "runtime/uni_string.h"

namespace {

TEST(UniString, CaseOfSingleCharacters) {
  const std::array<char16_t, 3> kCases[] = {{0xDF, 0xDF, 0xDF},       {0xFE, 0xFE, 0xDE},      {0xFF, 0xFF, 0x178},
                                            {0x178, 0xFF, 0x178},     {0x130, 'i', 0x130},     {0x131, 0x131, 'I'},
                                            {0x17F, 0x17F, 'S'},      {0x1C5, 0x1C6, 0x1C4},   {0xFF21, 0xFF41, 0xFF21},
                                            {0xFB00, 0xFB00, 0xFB00}, {0xFFFF, 0xFFFF, 0xFFFF}};
  for (const auto& [unit, lower, upper] : kCases) {
    EXPECT_EQ(ZnUniString::Lower(unit), lower) << static_cast<unsigned>(unit);
    EXPECT_EQ(ZnUniString::Upper(unit), upper) << static_cast<unsigned>(unit);
  }
}

}  // namespace
