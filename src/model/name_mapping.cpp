#include "model/name_mapping.h"

#include <utility>

#include "config/share_config.h"
#include "model/device_name.h"

namespace {

using Name = std::u16string_view;

constexpr char16_t kAsItStands = 0;  // no name holds it
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

  ZnUniString Escape(const ZnUniString& text) const;
  ZnUniString Unescape(Name name) const;

 private:
  bool IsAlwaysEscaped(char16_t unit) const { return (unit > 0 && unit < u' ') || chars_.find(unit) != Name::npos; }
  static bool IsEscapedAtEnd(char16_t unit) { return unit == u'.' || unit == u' '; }
  bool IsEscaped(Name name, size_t position, bool device) const;
  void AppendEscape(ZnUniString& to, char16_t unit) const;
  int EscapedValue(Name name, size_t position) const;
  ZnUniString UnescapeFrom(Name name, size_t position) const;

  Name chars_;
  char16_t mark_;
  size_t digits_;
  bool lowercase_;
};

bool Escapes::IsEscaped(Name name, size_t position, bool device) const {
  if (IsAlwaysEscaped(name[position])) return true;
  return (position == 0 && device) || (position + 1 == name.size() && IsEscapedAtEnd(name[position]));
}

void Escapes::AppendEscape(ZnUniString& to, char16_t unit) const {
  to.Append(mark_);
  for (size_t left = digits_; left-- > 0;) to.Append(kDigits[unit >> 4 * left & 15]);
}

// A share whose names are shown in lower case can't tell in which the server has a device's letter.
ZnUniString Escapes::Escape(const ZnUniString& text) const {
  const Name name = text.View();
  const bool device = ZnIsDeviceName(name);
  size_t plain = 0;
  while (plain < name.size() && name[plain] != mark_ && !IsEscaped(name, plain, device)) plain++;
  if (plain == name.size()) return text;
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
    ZnUniString device = ZnUniString(Name(&letter, 1)) + UnescapeFrom(name, 1 + digits_);
    if (ZnIsDeviceName(device.View())) return device;
  }
  return UnescapeFrom(name, 0);
}

}  // namespace

ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (!name.IsEmpty() && name[0] == kAsItStands) return name.SubString(1);
  return config.hashchars.IsEmpty() ? name : Escapes(config).Escape(name);
}

ZnUniString AsItStands(const ZnUniString& name) { return ZnUniString(Name(&kAsItStands, 1)) + name; }

ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (config.hashchars.IsEmpty() || name.Search(static_cast<char16_t>(config.hashchar)) == ZnUniString::kNotFound)
    return name;
  return Escapes(config).Unescape(name.View());
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
