#include "config/database.h"

#include <gtest/gtest.h>

#include <random>

#include "config/config_fixture.h"

namespace {

std::string Parsed(ZnDatabase& database, const char* text) {
  database.FromString(text, 0);
  return database.ErrorString().AsUtf8();
}

// The values of a key, each ended by "|".
std::string ValuesOf(const ZnDatabase& database, const ZnUniString& key) {
  ZnDList<ZnUniString> list;
  database.ListValues(key, list);
  ZnUniString joined;
  for (const ZnUniString& value : list) joined += value + "|";
  return joined.AsUtf8();
}

TEST(DatabaseText, ErrorsNameTheFirstOffendingCharacterAndWhatWasExpected) {
  const std::pair<const char*, const char*> cases[] = {
      {" # comment\r\n\t## no header, a comment\n## header\n", "Success"},
      {"x", R"e(Error: found "x" at character 1 in line 1 whilst looking for "[")e"},
      {"[a={(1)}]\n # c\n  ]", R"e(Error: found "]" at character 3 in line 3 whilst looking for "[")e"},
      {"[a", R"e(Error: found "(EOF)" at character 3 in line 1 whilst looking for "=")e"},
      {"[a=b={(1)}]", R"e(Error: found "b" at character 4 in line 1 whilst looking for "{")e"},
      {"[a={(1),(2)}]", R"e(Error: found "," at character 8 in line 1 whilst looking for "(" or "}")e"},
      {"[a={(1)}", R"e(Error: found "(EOF)" at character 9 in line 1 whilst looking for "]")e"},
      {"[a={}\xC3\xBC", "Error: found \"\xC3\xBC\" at character 6 in line 1 whilst looking for \"]\""},
      {"[a={(1\n2", R"e(Error: found "(EOF)" at character 2 in line 2 whilst looking for ")")e"},
      {"[a={\n## inside an entry a comment\n}]", "Success"},
  };
  for (const auto& [text, error] : cases) {
    ZnDatabase database;
    EXPECT_EQ(Parsed(database, text), error) << text;
  }
}

TEST(DatabaseText, ValuesAndKeysAreTakenToTheLetter) {
  ZnDatabase database;
  ASSERT_EQ(
      Parsed(database, "[a b\\=[\n= # why\n {\t(x\\)y) # one\n( \\\n(})\r\n} ][none={}][empty={()}][=\t{(no key)}]"),
      "Success");
  EXPECT_EQ(ValuesOf(database, "a b=[\n"), "x)y| \n(}|");
  EXPECT_EQ(ValuesOf(database, ""), "no key|");
  EXPECT_EQ(ValuesOf(database, "empty"), "|");
  EXPECT_TRUE(database.KeyExists("none") && ValuesOf(database, "none").empty());
}

class RandomTexts : public testing::Test {
 protected:
  unsigned seed_ = std::random_device()();
  std::mt19937 random_{seed_};
  testing::ScopedTrace trace_{__FILE__, __LINE__, seed_};
};

// Whatever can be stored comes back from its own text, in the same order.
TEST_F(RandomTexts, DatabasesSurviveTheirText) {
  auto text = [this] {
    constexpr char16_t alphabet[] = u"ab/\\)=({}[]# \n\r\t\u00e9\0\xD800";
    std::u16string units(random_() % 6, u' ');
    for (char16_t& unit : units) unit = alphabet[random_() % (std::size(alphabet) - 1)];
    return ZnUniString(units);
  };
  for (int round = 0; round < 200; round++) {
    ZnDatabase database, copy;
    for (auto i = random_() % 40; i > 0; i--) {
      ZnUniString key = text();
      database.ClearKey(key);
      for (auto n = random_() % 3; n > 0; n--) database.AppendValue(key, text());
    }
    ASSERT_TRUE(copy.FromString(database.ToString(-1), 0)) << copy.ErrorString().AsUtf8();
    ZnDList<ZnUniString> keys, copied;
    database.ListKeys("", keys);
    copy.ListKeys("", copied);
    ASSERT_EQ(keys.Count(), copied.Count());
    for (const ZnUniString& key : keys) ASSERT_EQ(ValuesOf(database, key), ValuesOf(copy, key));
  }
}

// For the sanitizers, mostly: any text parses or fails, and what is kept can be read again.
TEST_F(RandomTexts, HostileTextEndsInAnErrorOrSuccess) {
  const char* const pieces[] = {"[", "]",  "{",  "}", "(", ")",    "=",        "\\",
                                "#", "##", "\n", " ", "k", "\xFF", "[a={(b)}]"};
  for (int round = 0; round < 3000; round++) {
    std::string text;
    for (auto i = random_() % 40; i > 0; i--) text += pieces[random_() % std::size(pieces)];
    ZnDatabase database;
    bool success = database.FromString(text, 0);
    ASSERT_EQ(success, database.ErrorString() == "Success") << text;
    ASSERT_TRUE(ZnDatabase().FromString(database.ToString(-1), 0)) << text;
  }
  std::string huge = "[" + std::string(1 << 20, 'k') + "={";
  for (int i = 0; i < 1 << 16; i++) huge += "()";
  EXPECT_TRUE(ZnDatabase().FromString(huge + "}]", 0));
}

}  // namespace
