#include "runtime/wildcard_match.h"

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace {

TEST(WildcardMatch, CaseStopMultiAndStarts) {
  EXPECT_TRUE(ZnWildcardMatch("*/*/failure", "a/b/c/failure"));  // a run takes the separator too
  EXPECT_TRUE(ZnWildcardMatch("\u00e9*A?c*", "\u00c9t\u00e9aBC"));
  EXPECT_FALSE(ZnWildcardMatch("A", "a", true));
  const ZnWildcards path{u'/', u'?', u'*', "**"};
  EXPECT_TRUE(ZnWildcardMatch("/*/c", "/ab/c", false, path));
  EXPECT_FALSE(ZnWildcardMatch("/*/c", "/a/b/c", false, path));
  EXPECT_TRUE(ZnWildcardMatch("/**/c", "/a/b/c", false, path));
  EXPECT_TRUE(ZnWildcardMatch("xx*c", "yyyabc", true, {}, 2, 3));
  EXPECT_TRUE(ZnWildcardMatch("a", "b", true, {}, 9, 9));  // both behind their ends: nothing matches nothing
  EXPECT_TRUE(ZnWildcardMatch("*?", "*?", true, {0, 0, 0, ""}));
  EXPECT_FALSE(ZnWildcardMatch("*?", "ab", true, {0, 0, 0, ""}));
}

TEST(WildcardMatch, AgreesWithTheHostsMatcher) {
  constexpr std::string_view kLetters = "ab*?/";
  std::mt19937 random(5);
  const auto text = [&](size_t letters) {
    std::string result(random() % 9, ' ');
    for (char& letter : result) letter = kLetters[random() % letters];
    return result;
  };
  for (int i = 0; i < 5000; i++) {
    const std::string pattern = text(5), name = text(2);
    EXPECT_EQ(ZnWildcardMatch(pattern, name), fnmatch(pattern.c_str(), name.c_str(), 0) == 0) << pattern << " " << name;
  }
}

// A search that tries one split after the other wouldn't end within the age of the machine.
TEST(WildcardMatch, ManyRunsDontExplode) {
  std::string pattern;
  for (int i = 0; i < 60; i++) pattern += "*a";
  EXPECT_FALSE(ZnWildcardMatch(pattern + "*b", std::string(2000, 'a')));
}

}  // namespace
