#include "rpc/name_encoding.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "rpc/xdr.h"

namespace {

class NameEncoding : public testing::Test {
 protected:
  ~NameEncoding() override { ZnRPCString::rpcenc = ZnCodeset::Latin1; }

  static std::string Form(std::u16string_view name) {
    const ZnByteBuffer form = ZnEncodeRpcName(ZnUniString(name));
    return {reinterpret_cast<const char*>(form.Data()), form.Length()};
  }
  // The name that the bytes mean; "(none)" for bytes that are no text.
  static ZnUniString Meant(std::string_view form) {
    ZnUniString name;
    return ZnDecodeRpcName(reinterpret_cast<const uint8_t*>(form.data()), form.size(), name) ? name : "(none)";
  }
};

TEST_F(NameEncoding, Table) {
  const struct {
    ZnEncoding encoding;
    std::u16string_view name;
    const char* form;
  } cases[] = {
      {ZnCodeset::Latin1, u"日本", "#65E5#672C"}, {ZnCodeset::Latin1, u"日.日.", "#65E5.#65E5."},
      {ZnCodeset::Latin1, u"C#.txt", "C#.txt"},   {ZnCodeset::Latin1, u"#日", "###65E5"},
      {ZnCodeset::Latin1, u"#65E5", "##65E5"},    {ZnCodeset::Latin1, u"##65E5", "####65E5"},
      {ZnCodeset::Latin1, u"#0041", "#0041"},     {ZnCodeset::Latin1, u"é", "\xE9"},
      {ZnCodeset::Utf8, u"#65E5", "#65E5"},       {ZnCodeset::Utf8, u"\U0001F600", "\xF0\x9F\x98\x80"},
      {ZnCodeset::Utf8, u"#D800", "##D800"},      {ZnCodeset::Utf8, {u"\xD800", 1}, "#D800"},
  };
  for (const auto& c : cases) {
    ZnRPCString::rpcenc = c.encoding;
    EXPECT_EQ(Form(c.name), c.form);
    EXPECT_EQ(Meant(c.form), ZnUniString(c.name)) << c.form;
  }
}

TEST_F(NameEncoding, WhatIsNoUtf8IsRefused) {
  ZnRPCString::rpcenc = ZnCodeset::Utf8;
  for (const char* bad :
       {"\xC0\xAE", "\xE0\x80\xAF", "\xED\xA0\x80", "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80",
        "\xF8\x88\x80\x80\x80", "a\xC3", "a\xE2\x82", "\xF0\x9F\x98", "\xFF", "\x80z"})
    EXPECT_EQ(Meant(bad), "(none)") << bad;
}

// Every name has a form of its own that leads back to it, above all names that look like escapes.
TEST_F(NameEncoding, NoTwoNamesShareAForm) {
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  const std::u16string_view kParts[] = {u"#", u"##", u"65E5", u"#65E5",       u"#D800",       u"日",
                                        u"é", u"a",  u"A",    {u"\xD800", 1}, {u"\xDC00", 1}, u"#0023"};
  for (ZnEncoding encoding : {1U, 20U, 33U, 34U, 35U, 42U}) {
    ZnRPCString::rpcenc = encoding;
    std::map<std::string, std::u16string> owners;
    for (int round = 0; round < 20000; round++) {
      std::u16string name;
      for (size_t parts = 1 + random() % 6; parts > 0; parts--) name += kParts[random() % std::size(kParts)];
      const std::string form = Form(name);
      ASSERT_EQ(Meant(form), ZnUniString(name)) << form << " encoding " << encoding << " seed " << seed;
      ASSERT_TRUE(owners.emplace(form, name).first->second == name) << form << " encoding " << encoding;
    }
  }
}

}  // namespace
