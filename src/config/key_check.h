#pragma once
// What is wrong with the keys of a profile, beyond its form.

#include "config/database.h"

// What is wrong with an entry's values, for keys of numbers: one that is none or out of its range, or not just one
// value. Nobody can tell what was meant by such an entry. Empty for nothing.
ZnUniString ZnMistakeOf(const ZnUniString& key, const ZnDBEntry& entry);

struct ZnKeyFindings {
  ZnUniString mistakes;           // lines; empty for none
  ZnDList<ZnUniString> warnings;  // keys that nobody reads, each with the known one that is nearest to it
};

// Looks at every entry, in the order of the text. Of each kind the first 20 are told, and how many more there are.
ZnKeyFindings ZnCheckKeys(ZnDatabase& database);
