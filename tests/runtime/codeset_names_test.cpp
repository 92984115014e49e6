#include <gtest/gtest.h>

#include "runtime/codeset_converter.h"

namespace {

TEST(CodesetNames, EveryEncodingHasItsCanonicalName) {
  ZnDList<ZnUniString> names;
  ZnCodesetConverter::ListSupportedEncodings(names);
  ASSERT_EQ(names.Count(), 43U);
  for (ZnEncoding encoding = 0; encoding < 43; encoding++) {
    EXPECT_EQ(names[encoding], ZnCodesetConverter::GetEncodingName(encoding));
    EXPECT_EQ(ZnCodesetConverter::GetEncoding(names[encoding].AsUtf8().c_str()), encoding);
  }
  const std::pair<const char*, ZnEncoding> kCodesets[] = {{"UTF-8", 42},  {"ANSI_X3.4-1968", 1}, {"ISO-8859-15", 33},
                                                          {"KOI8-U", 37}, {"GBK", 33},           {"", 33}};
  for (const auto& [codeset, encoding] : kCodesets)
    EXPECT_EQ(ZnCodesetConverter::GetEncodingFromLocale(codeset), encoding) << codeset;
}

}  // namespace
