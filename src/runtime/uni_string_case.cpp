#include <algorithm>

#include "runtime/case_tables.h"
#include "runtime/uni_string.h"

namespace {

constexpr char16_t kFirstInTables = 0x100;
constexpr unsigned kCaseDistance = 32;

char16_t Mapped(const ZnCaseTable& table, char16_t unit) {
  auto found = std::lower_bound(table.from.begin(), table.from.end(), unit);
  if (found == table.from.end() || *found != unit) return unit;
  return table.to[static_cast<size_t>(found - table.from.begin())];
}

template <char16_t (&Map)(char16_t)>
void MapAll(ZnUniString& text) {
  for (size_t i = 0; i < text.Length(); i++) {
    if (char16_t mapped = Map(text[i]); mapped != text[i]) text.Set(i, mapped);  // a text without a change stays shared
  }
}

}  // namespace

// Below U+0100 the two rows of Latin-1 letters are 32 apart, and the multiplication and division signs (U+00D7, U+00F7)
// go with them.
char16_t ZnUniString::Lower(char16_t unit) {
  if (unit >= kFirstInTables) return Mapped(kZnToLower, unit);
  bool upper = unit < 0x80 ? unit >= 'A' && unit <= 'Z' : unit >= 0xC0 && unit <= 0xDE;
  return upper ? static_cast<char16_t>(unit + kCaseDistance) : unit;
}

char16_t ZnUniString::Upper(char16_t unit) {
  if (unit >= kFirstInTables) return Mapped(kZnToUpper, unit);
  if (unit == 0xFF) return 0x178;
  bool lower = unit < 0x80 ? unit >= 'a' && unit <= 'z' : unit >= 0xE0 && unit <= 0xFE;
  return lower ? static_cast<char16_t>(unit - kCaseDistance) : unit;
}

void ZnUniString::LowerCase() { MapAll<Lower>(*this); }
void ZnUniString::UpperCase() { MapAll<Upper>(*this); }

bool ZnUniString::MatchCaseless(const ZnUniString& other) const {
  if (Length() != other.Length()) return false;
  for (size_t i = 0; i < Length(); i++) {
    if (Lower((*this)[i]) != Lower(other[i])) return false;
  }
  return true;
}
