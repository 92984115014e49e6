#include "runtime/wildcard_match.h"

#include <algorithm>
#include <vector>

namespace {

struct Token {
  enum Kind { Literal, Single, Many, Multi } kind;
  char16_t unit = 0;

  bool IsRun() const { return kind == Many || kind == Multi; }
};

std::vector<Token> Tokens(std::u16string_view pattern, const ZnWildcards& wildcards) {
  const std::u16string_view multi = wildcards.multistring.View();
  std::vector<Token> tokens;
  for (size_t i = 0; i < pattern.size(); i++) {
    if (!multi.empty() && pattern.substr(i).starts_with(multi)) {
      tokens.push_back({Token::Multi});
      i += multi.size() - 1;
    } else if (wildcards.many && pattern[i] == wildcards.many) {
      tokens.push_back({Token::Many});
    } else if (wildcards.single && pattern[i] == wildcards.single) {
      tokens.push_back({Token::Single});
    } else {
      tokens.push_back({Token::Literal, pattern[i]});
    }
  }
  return tokens;
}

// How far into the pattern one may have come: a flag for the place before each token, and one for the end. Keeping all
// places at once is what makes trying them one after the other, and so an explosion of tries, unnecessary.
using Places = std::vector<char>;

// A run may be empty, so whoever stands before one also stands behind it.
void SkipRuns(const std::vector<Token>& tokens, Places& places) {
  for (size_t i = 0; i < tokens.size(); i++) {
    if (places[i] && tokens[i].IsRun()) places[i + 1] = 1;
  }
}

bool SameUnit(char16_t one, char16_t other, bool exact) {
  return one == other || (!exact && ZnUniString::Lower(one) == ZnUniString::Lower(other));
}

}  // namespace

bool ZnWildcardMatch(const ZnUniString& pattern, const ZnUniString& text, bool exact, const ZnWildcards& wildcards,
                     size_t patternstart, size_t textstart) {
  const std::u16string_view units = text.View().substr(std::min(textstart, text.Length()));
  const std::vector<Token> tokens = Tokens(pattern.View().substr(std::min(patternstart, pattern.Length())), wildcards);

  Places places(tokens.size() + 1);
  places[0] = 1;
  SkipRuns(tokens, places);
  Places next(places.size());
  for (const char16_t unit : units) {
    std::fill(next.begin(), next.end(), 0);
    const bool stopped = wildcards.stop && unit == wildcards.stop;
    for (size_t i = 0; i < tokens.size(); i++) {
      if (!places[i]) continue;
      switch (tokens[i].kind) {
        case Token::Literal:
          if (SameUnit(tokens[i].unit, unit, exact)) next[i + 1] = 1;
          break;
        case Token::Single:
          next[i + 1] = 1;
          break;
        case Token::Many:
          if (!stopped) next[i] = 1;
          break;
        case Token::Multi:
          next[i] = 1;
          break;
      }
    }
    SkipRuns(tokens, next);
    places.swap(next);
  }
  return places.back() != 0;
}
