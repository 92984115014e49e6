#pragma once
// Matching of names with wildcards.

#include "runtime/uni_string.h"

// The characters with a meaning in a pattern; 0 or an empty text stands for none.
struct ZnWildcards {
  char16_t stop = 0;        // ends what `many` may match, the "/" of a path for instance
  char16_t single = u'?';   // any one character
  char16_t many = u'*';     // any run of characters without `stop`, the empty one too
  ZnUniString multistring;  // any run of characters, "**" for instance; goes before `many`
};

// Whether the whole of `text` from `textstart` on matches `pattern` from `patternstart` on. Characters without a
// special meaning match themselves and, unless `exact`, those of the same lower case. Takes time with the product of
// the lengths, whatever the pattern.
bool ZnWildcardMatch(const ZnUniString& pattern, const ZnUniString& text, bool exact = false,
                     const ZnWildcards& wildcards = ZnWildcards(), size_t patternstart = 0, size_t textstart = 0);
