#include "tree/name_gen.h"

#include <algorithm>
#include <string_view>

#include "runtime/checksum.h"

namespace {

constexpr std::u16string_view kIllegalShort = u" +,.:;=[]";
constexpr std::u16string_view kIllegalLong = u"\"*/:<>?\\|";
constexpr std::u16string_view kReserved[] = {u"AUX", u"CLOCK$", u"COM1", u"COM2", u"COM3", u"COM4",
                                             u"CON", u"LPT1",   u"LPT2", u"LPT3", u"NUL",  u"PRN"};
constexpr size_t kLongestReserved = 6;
constexpr char kTailDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUV";
constexpr size_t kShortBase = 8;
constexpr size_t kShortExtension = 3;
constexpr size_t kTailedBase = 7;

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

// One form of a name under construction.
struct Form {
  ZnUniString base, extension;
  bool exact = true;    // every character was taken over
  bool forced = false;  // gets a tail in any case

  ZnUniString Whole() const { return Join(base, extension); }
};

bool IsLower(char16_t unit) { return ZnUniString::Upper(unit) != unit; }
bool IsUpper(char16_t unit) { return ZnUniString::Lower(unit) != unit; }

// Copies one character into a part of a form, or notes that it can't be.
void Take(Form& form, ZnUniString& part, char16_t unit, bool fits, bool mangleillegal, bool manglelower,
          bool mangleupper) {
  if (fits) {
    part.Append(unit);
    form.forced |= (manglelower && IsLower(unit)) || (mangleupper && IsUpper(unit));
  } else if (mangleillegal) {
    form.forced = true;
  } else {
    form.exact = false;
  }
}

ZnUniString TailOf(const ZnUniString& name, const ZnNameGen::FNConfig& config) {
  ZnUniString tail;
  tail.Append(config.manglechar);
  uint32_t sum = ZnCheckSum::Sum(name);
  for (uint32_t i = 0; i < config.hashdigits; i++) {
    tail.Append(static_cast<char16_t>(kTailDigits[sum & 31]));
    sum >>= 5;
  }
  return tail;
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

void ZnNameGen::SetNames(const ZnUniString& name, const FNConfig* config, ZnUniString& shortname,
                         ZnUniString& longname) {
  static const FNConfig kDefaults;
  const FNConfig& how = config ? *config : kDefaults;
  shortname = longname = name;
  if (name == "." || name == "..") return;

  Form s, l;
  size_t dot = DotOf(name);
  for (size_t i = 0; i < name.Length(); i++) {
    if (i == dot) continue;
    bool inBase = i < dot;
    char16_t unit = name[i];
    ZnUniString& part = inBase ? s.base : s.extension;
    bool fits = part.Length() < (inBase ? kShortBase : kShortExtension) && IsLegalShort(unit);
    Take(s, part, unit, fits, how.mangleillegalshort, how.mangleshortlower, how.mangleshortupper);
    Take(l, inBase ? l.base : l.extension, unit, IsLegalLong(unit), how.manglelongillegal, how.manglelonglower,
         how.manglelongupper);
  }
  if (l.extension.IsEmpty() && !l.base.IsEmpty() && l.base[l.base.Length() - 1] == u'.') {
    DropTrailing(l.base, u'.');
    l.exact = false;
  }
  bool differs = s.base.Length() != l.base.Length() || s.extension.Length() != l.extension.Length();
  if (s.forced || l.forced || (how.mangleifdiffers && differs)) {
    ZnUniString tail = TailOf(name, how);
    if (s.base.Length() > kTailedBase - how.hashdigits) s.base.Truncate(kTailedBase - how.hashdigits);
    s.base += tail;
    if (l.forced) l.base += tail;
    s.exact = false;
    l.exact = l.exact && !l.forced;
  }
  if (s.base.IsEmpty() || (s.base.Length() < kTailedBase && s.extension.IsEmpty() && IsReservedName(s.base))) {
    s.base.Append(u'_');
    s.exact = false;
  }
  if (l.Whole().IsEmpty() || (l.extension.IsEmpty() && IsReservedName(l.base))) {
    l.base.Append(u'_');
    l.exact = false;
  }
  if (!s.exact || s.Whole().Length() != name.Length()) shortname = s.Whole();
  if (!l.exact || l.Whole().Length() != name.Length()) longname = l.Whole();
}
