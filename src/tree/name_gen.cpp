#include "tree/name_gen.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::u16string_view kIllegalShort = u" +,.:;=[]";
constexpr std::u16string_view kIllegalLong = u"\"*/:<>?\\|";
constexpr std::u16string_view kReserved[] = {u"AUX", u"CLOCK$", u"COM1", u"COM2", u"COM3", u"COM4",
                                             u"CON", u"LPT1",   u"LPT2", u"LPT3", u"NUL",  u"PRN"};
constexpr size_t kLongestReserved = 6;
constexpr size_t kShortBase = 8;
constexpr size_t kShortExtension = 3;

bool IsLegalShort(char16_t unit) { return kIllegalShort.find(unit) == std::u16string_view::npos; }
bool IsLegalLong(char16_t unit) { return kIllegalLong.find(unit) == std::u16string_view::npos; }

// The position of the last dot, or the length when there is none.
size_t DotOf(const ZnUniString& name) { return std::min(name.SearchReverse(u'.'), name.Length()); }

template <class Legal>
ZnUniString Keep(const ZnUniString& name, size_t from, size_t to, Legal legal) {
  ZnUniString kept;
  for (size_t i = from; i < to; i++) {
    if (legal(name[i])) kept.Append(name[i]);
  }
  return kept;
}

void DropTrailing(ZnUniString& text, char16_t unit) {
  size_t length = text.Length();
  while (length > 0 && text[length - 1] == unit) length--;
  text.Truncate(length);
}

ZnUniString Join(const ZnUniString& base, const ZnUniString& extension) {
  return extension.IsEmpty() ? base : base + "." + extension;
}

}  // namespace

ZnUniString ZnNameGen::ToShortName(const ZnUniString& name) {
  size_t dot = DotOf(name);
  // The dot itself is one of the three positions looked at, and never legal.
  ZnUniString extension = Keep(name, dot, std::min(dot + kShortExtension, name.Length()), IsLegalShort);
  return Join(Keep(name, 0, std::min(dot, kShortBase), IsLegalShort), extension);
}

ZnUniString ZnNameGen::ToLongName(const ZnUniString& name) {
  size_t dot = DotOf(name);
  ZnUniString base = Keep(name, 0, dot, IsLegalLong);
  ZnUniString extension = dot < name.Length() ? Keep(name, dot + 1, name.Length(), IsLegalLong) : ZnUniString();
  DropTrailing(extension, u' ');
  if (extension.IsEmpty()) DropTrailing(base, u' ');
  return Join(base, extension);
}

bool ZnNameGen::IsReservedName(ZnUniString name) {
  if (name.Length() > kLongestReserved) return false;
  name.UpperCase();
  return std::find(std::begin(kReserved), std::end(kReserved), name.View()) != std::end(kReserved);
}
