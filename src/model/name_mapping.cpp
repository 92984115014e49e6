#include "model/name_mapping.h"

#include <algorithm>
#include <optional>

#include "config/share_config.h"
#include "model/device_name.h"

namespace {

using Name = std::u16string_view;

constexpr Name kDigits = u"0123456789ABCDEF";

// The digit's value, or -1. Only the low byte counts, so a character whose low byte is a digit passes as that digit.
int HexValue(char16_t unit) {
  const size_t digit = kDigits.find(static_cast<char16_t>(unit & 0xFF));
  return digit == Name::npos ? -1 : static_cast<int>(digit);
}

// The escapes of one share.
class Escapes {
 public:
  explicit Escapes(const ZnSMBNFSShareConfig& config)
      : chars_(config.hashchars.View()),
        mark_(static_cast<char16_t>(config.hashchar)),
        digits_(config.hashmethod == 0 ? 2 : 4),
        lowercase_(config.lowercase) {}

  bool HasMark(Name name) const { return name.find(mark_) != Name::npos; }
  ZnUniString Escape(Name name) const;
  ZnUniString Unescape(Name name) const;
  bool IsFit(Name name) const;
  bool IsShownRaw(ZnUniString name) const;
  ZnUniString RawForm(const ZnUniString& name) const;
  std::optional<ZnUniString> FromRawForm(const ZnUniString& form) const;

 private:
  bool IsAlwaysEscaped(char16_t unit) const { return (unit > 0 && unit < u' ') || chars_.find(unit) != Name::npos; }
  static bool IsEscapedAtEnd(char16_t unit) { return unit == u'.' || unit == u' '; }
  bool IsEscaped(Name name, size_t position, bool device) const;
  void AppendEscape(ZnUniString& to, char16_t unit) const;
  int EscapedValue(Name name, size_t position) const;
  ZnUniString UnescapeFrom(Name name, size_t position) const;
  bool MayStandRaw(Name name) const;
  ZnUniString EscapedMark() const;

  Name chars_;
  char16_t mark_;
  size_t digits_;
  bool lowercase_;
};

bool Escapes::IsEscaped(Name name, size_t position, bool device) const {
  if (IsAlwaysEscaped(name[position])) return true;
  return (position == 0 && device) || (position + 1 == name.size() && IsEscapedAtEnd(name[position]));
}

bool Escapes::IsFit(Name name) const {
  const bool device = ZnIsDeviceName(name);
  for (size_t i = 0; i < name.size(); i++) {
    if (IsEscaped(name, i, device)) return false;
  }
  return true;
}

void Escapes::AppendEscape(ZnUniString& to, char16_t unit) const {
  to.Append(mark_);
  for (size_t left = digits_; left-- > 0;) to.Append(kDigits[unit >> 4 * left & 15]);
}

// A share whose names are shown in lower case can't tell in which the server has a device's letter.
ZnUniString Escapes::Escape(Name name) const {
  const bool device = ZnIsDeviceName(name);
  ZnUniString result;
  for (size_t i = 0; i < name.size(); i++) {
    if (IsEscaped(name, i, device)) {
      AppendEscape(result, lowercase_ ? ZnUniString::Upper(name[i]) : name[i]);
      continue;
    }
    if (name[i] == mark_) result.Append(mark_);
    result.Append(name[i]);
  }
  return result;
}

// The value of the digits behind an escape character, or -1 where there are none.
int Escapes::EscapedValue(Name name, size_t position) const {
  if (name.size() - position <= digits_) return -1;
  int value = 0;
  for (size_t i = 1; i <= digits_; i++) {
    const int digit = HexValue(name[position + i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

ZnUniString Escapes::UnescapeFrom(Name name, size_t position) const {
  ZnUniString result;
  for (size_t i = position; i < name.size(); i++) {
    char16_t unit = name[i];
    if (unit == mark_ && i + 1 < name.size()) {
      const int value = EscapedValue(name, i);
      const auto meant = static_cast<char16_t>(value);
      if (name[i + 1] == mark_) {
        i++;
      } else if (value >= 0 && (IsAlwaysEscaped(meant) || (i + digits_ + 1 == name.size() && IsEscapedAtEnd(meant)))) {
        unit = meant;
        i += digits_;
      }
    }
    result.Append(unit);
  }
  return result;
}

ZnUniString Escapes::Unescape(Name name) const {
  const int value = name.empty() || name[0] != mark_ ? -1 : EscapedValue(name, 0);
  if (value > 0) {
    const auto letter = static_cast<char16_t>(value);
    const ZnUniString device = ZnUniString(Name(&letter, 1)) + UnescapeFrom(name, 1 + digits_);
    if (ZnIsDeviceName(device.View())) return device;
  }
  return UnescapeFrom(name, 0);
}

// --- Names of the share with escape characters that escape nothing ---
//
// Escape leads from clients' names to some names of the share; what the others are shown as has to be taken from
// clients' names that then lead elsewhere. A name of the share that nothing leads to is shown in its raw form. The
// client's name of that form thus means it, so what Escape makes of that name is shown raw too, and so on. Every name
// is at one place of one such chain, so both directions agree on what is whose.

ZnUniString Escapes::EscapedMark() const {
  ZnUniString escape;
  AppendEscape(escape, mark_);
  return escape;
}

// Whether the raw form of a name is the name: each escape character looks like an escape, of another character, or
// stands at the end.
bool Escapes::MayStandRaw(Name name) const {
  for (size_t at = name.find(mark_); at != Name::npos; at = name.find(mark_, at + 1)) {
    if (at + 1 == name.size()) return true;
    const Name digits = name.substr(at + 1, digits_);
    if (digits.size() < digits_ || digits.find_first_not_of(kDigits) != Name::npos) return false;
    if (EscapedValue(name, at) == mark_) return false;
  }
  return true;
}

ZnUniString Escapes::RawForm(const ZnUniString& name) const {
  ZnUniString form = name;
  if (!MayStandRaw(name.View())) form.Substitute(ZnUniString(Name(&mark_, 1)), EscapedMark());
  return form;
}

// The name of the share whose raw form this is.
std::optional<ZnUniString> Escapes::FromRawForm(const ZnUniString& form) const {
  ZnUniString name = form;
  if (!MayStandRaw(form.View())) name.Substitute(EscapedMark(), ZnUniString(Name(&mark_, 1)));
  if (!HasMark(name.View()) || !IsFit(name.View()) || RawForm(name) != form) return std::nullopt;
  return name;
}

// Goes up the chain to where it begins. Each round is about a shorter name.
bool Escapes::IsShownRaw(ZnUniString name) const {
  while (true) {
    const ZnUniString unescaped = Unescape(name.View());
    if (Escape(unescaped.View()) != name) return true;
    const std::optional<ZnUniString> above = FromRawForm(unescaped);
    if (!above) return false;
    name = *above;
  }
}

}  // namespace

ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (config.hashchars.IsEmpty()) return name;
  const Escapes escapes(config);
  const std::optional<ZnUniString> raw = escapes.FromRawForm(name);
  return raw && escapes.IsShownRaw(*raw) ? *raw : escapes.Escape(name.View());
}

ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (config.hashchars.IsEmpty()) return name;
  const Escapes escapes(config);
  if (!escapes.HasMark(name.View())) return name;
  const bool raw = escapes.IsFit(name.View()) && escapes.IsShownRaw(name);
  return raw ? escapes.RawForm(name) : escapes.Unescape(name.View());
}

ZnUniString InternalToWindowsPath(const ZnUniString& path, const ZnSMBNFSShareConfig& config) {
  ZnUniString result;
  bool first = true;
  for (const ZnUniString& part : path.Split(u'\\')) {
    if (!std::exchange(first, false)) result.Append(u'\\');
    result += InternalToWindowsName(part, config);
  }
  return result;
}

bool IsLinkName(const ZnUniString& name, const ZnUniString& linkstring) {
  return !linkstring.IsEmpty() && name.StartsWith(linkstring);
}

ZnUniString FromLinkName(const ZnUniString& name, const ZnUniString& linkstring) {
  return IsLinkName(name, linkstring) ? name.SubString(linkstring.Length()) : name;
}

ZnUniString ToLinkName(const ZnUniString& name, const ZnUniString& linkstring) { return linkstring + name; }
