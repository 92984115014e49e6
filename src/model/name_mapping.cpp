#include "model/name_mapping.h"

#include "config/share_config.h"

namespace {

constexpr char16_t kDigits[] = u"0123456789ABCDEF";

size_t EscapeDigits(const ZnSMBNFSShareConfig& config) { return config.hashmethod == 0 ? 2 : 4; }

// The digit's value, or -1. Only the low byte counts, so a character whose low byte is a digit passes as that digit.
int HexValue(char16_t unit) {
  auto low = static_cast<char16_t>(unit & 0xFF);
  if (low >= u'0' && low <= u'9') return low - u'0';
  if (low >= u'A' && low <= u'F') return low - u'A' + 10;
  return -1;
}

// The value of the digits behind position `escape`, or -1 where no escape of ours stands.
int EscapedValue(const ZnUniString& name, size_t escape, const ZnSMBNFSShareConfig& config) {
  size_t digits = EscapeDigits(config);
  if (escape + digits >= name.Length()) return -1;
  if (digits == 4 && escape + digits + 1 >= name.Length()) return -1;
  int value = 0;
  for (size_t i = 1; i <= digits; i++) {
    int digit = HexValue(name[escape + i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return config.hashchars.Search(static_cast<char16_t>(value)) == ZnUniString::kNotFound ? -1 : value;
}

}  // namespace

ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (config.hashchars.IsEmpty()) return name;
  auto escape = static_cast<char16_t>(config.hashchar);
  ZnUniString result;
  for (char16_t unit : name.View()) {
    if (config.hashchars.Search(unit) != ZnUniString::kNotFound) {
      result.Append(escape);
      for (size_t left = EscapeDigits(config); left-- > 0;) result.Append(kDigits[unit >> 4 * left & 15]);
    } else {
      if (unit == escape) result.Append(escape);
      result.Append(unit);
    }
  }
  return result;
}

ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config) {
  if (config.hashchars.IsEmpty()) return name;
  auto escape = static_cast<char16_t>(config.hashchar);
  if (name.Search(escape) == ZnUniString::kNotFound) return name;
  ZnUniString result;
  for (size_t i = 0; i < name.Length(); i++) {
    char16_t unit = name[i];
    if (unit == escape && i + 1 < name.Length()) {
      if (name[i + 1] == escape) {
        i++;
      } else if (int value = EscapedValue(name, i, config); value >= 0) {
        unit = static_cast<char16_t>(value);
        i += EscapeDigits(config);
      }
    }
    result.Append(unit);
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
