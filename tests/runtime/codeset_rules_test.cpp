// What happens at the edges of a conversion: what has no code, broken input, escapes, marks, validation.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <tuple>

#include "runtime/codeset_converter.h"

namespace {

using namespace std::string_view_literals;
using Kind = ZnCodesetConverter::ErrorKind;

ZnUniString Text(std::string_view bytes, ZnEncoding encoding, unsigned options = 0) {
  return ZnUniString::CreateFrom(bytes.data(), bytes.size(), encoding, options);
}

std::string Code(std::u16string_view text, ZnEncoding encoding, unsigned options = 0) {
  ZnByteBuffer bytes = ZnUniString(text).AsEncoding(encoding, options);
  return {reinterpret_cast<const char*>(bytes.Data()), bytes.Length()};
}

TEST(Utf8, ReadsLatin1WhereThereIsNoSequence) {
  const std::pair<std::string_view, std::u16string_view> kCases[] = {
      {"\xE9\x41"sv, u"\u00E9A"},
      {"a\xC3"sv, u"a"},          // a lead at the very end is dropped
      {"a\xF0"sv, u"a\u00F0"},    // but not one that leads nothing
      {"\xE2\x82"sv, u"\u00E2"},  // and then the 0x82 is the end
      {"\xE2\x82z"sv, u"\u00E2\u0082z"},
      {"\xC3\xFF"sv, u"\u00FF"},  // any byte with the top bit follows a lead
      {"\xF0\x9F\x98\x80z"sv, u"\U0001F600z"},
      {"\xF0\x80\x80\x80z"sv, u"\u00F0\u0080\u0080\u0080z"},  // overlong
      {"\xF4\x90\x80\x80z"sv, u"\u00F4\u0090\u0080\u0080z"},  // beyond the last character
      {"\xC0\x80z"sv, u"\0z"sv},
      {"\xED\xA0\x80"sv, std::u16string_view(u"\xD800", 1)},
  };
  for (const auto& [bytes, text] : kCases)
    EXPECT_EQ(Text(bytes, ZnCodeset::Utf8), ZnUniString(text)) << testing::PrintToString(bytes);
}

TEST(Conversion, DropsWithoutTheOptionAndEscapesWithIt) {
  const auto R = ZnCodeset::Recoverable;
  EXPECT_EQ(Code(u"a\u4E2D\u00E9b\0"sv, ZnCodeset::Ascii), "ab");
  EXPECT_EQ(Code(u"a#\u4E2D\0"sv, ZnCodeset::Ascii, R), "a###4E2D#0000");
  EXPECT_EQ(Code(u"\u4E2D#", ZnCodeset::Latin1, R), "#4E2D##");
  EXPECT_EQ(Code(u"\u0083", ZnUniString::GetEncoding("CP037"), R), "##");  // EBCDIC's code 0x23
  EXPECT_EQ(Text("a\xE9"sv, ZnCodeset::Ascii), "a");
  EXPECT_EQ(Text("a\xE9"sv, ZnCodeset::Ascii, R), ZnUniString(u"a\u00E9"));

  const std::pair<std::string_view, std::u16string_view> kEscapes[] = {
      {"#4E2D##"sv, u"\u4E2D#"},      {"#zz"sv, u"#zz"},       {"#"sv, u"#"},
      {"##4E2D"sv, u"#4E2D"},         {"#4e2d"sv, u"#4e2d"},   {"#4E2"sv, u"#4E2"},
      {"#4E2#4E2D"sv, u"#4E2\u4E2D"}, {"#G###0041"sv, u"#G#A"}};
  for (ZnEncoding encoding : {1U, 20U, 31U, 33U, 34U}) {
    for (const auto& [bytes, text] : kEscapes)
      EXPECT_EQ(Text(bytes, encoding, R), ZnUniString(text)) << encoding << bytes;
  }
}

// All characters in one text, each between others that could be taken for part of an escape.
TEST(Conversion, RecoverableComesBackUnchangedFromEveryEncoding) {
  std::u16string all;
  for (unsigned unit = 0; unit < 0x10000; unit++) {
    all += static_cast<char16_t>(unit);
    all += u"#A1"[unit % 3];
  }
  for (ZnEncoding encoding = 0; encoding < ZnCodeset::Invalid; encoding++) {
    if (encoding == ZnCodeset::Iso2022Jp) continue;  // can't tell its characters from ASCII
    ZnByteBuffer code = ZnUniString(all).AsEncoding(encoding, ZnCodeset::Recoverable);
    EXPECT_TRUE(ZnUniString::CreateFrom(code, encoding, ZnCodeset::Recoverable) == ZnUniString(all)) << encoding;
    EXPECT_TRUE(ZnUniString::IsValid(code, encoding, ZnCodeset::Recoverable)) << encoding;
  }
}

// Bytes out of nowhere, in blocks of exactly their size so that the sanitizer sees one read too far, in every encoding
// and option. What validation counts is what conversion does.
TEST(Hostile, AnyBytesConvertAndAreCounted) {
  std::mt19937 random(20261123);
  const std::string_view kLikely = "#4E2D\x81\x30\xFE\x39\xA1\xC3\xE2\x8E\xFF\x80"sv;
  for (unsigned round = 0; round < 20000; round++) {
    size_t length = random() % 12;
    std::unique_ptr<uint8_t[]> bytes(new uint8_t[length]);
    for (size_t i = 0; i < length; i++) bytes[i] = static_cast<uint8_t>(random());
    for (size_t i = 0; i < length; i += 1 + random() % 2)
      bytes[i] = static_cast<uint8_t>(kLikely[random() % kLikely.size()]);
    auto encoding = static_cast<ZnEncoding>(random() % 44);
    auto options = static_cast<unsigned>(random() % 8);
    ZnUniString text = ZnUniString::CreateFrom(bytes.get(), length, encoding, options);
    ZnCodesetConverter::ValidationInfo from, to;
    ZnCodesetConverter::ValidateFrom(bytes.get(), length, from, encoding, options);
    ZnCodesetConverter::ValidateTo(text, to, encoding, options);
    bool marked = options & ZnCodeset::AddByteOrderMarker;
    if (from.errors.IsEmpty() && encoding < ZnCodeset::Utf16Msb) {
      ASSERT_EQ(from.characters, text.Length()) << encoding;
    }
    if (to.errors.IsEmpty() && !marked) {
      ASSERT_EQ(to.bytes, text.AsEncoding(encoding, options).Length()) << encoding;
    }
  }
}

}  // namespace
