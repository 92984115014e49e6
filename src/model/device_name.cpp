#include "model/device_name.h"

#include <algorithm>

#include "runtime/uni_string.h"

namespace {

constexpr std::u16string_view kDevices[] = {u"AUX", u"CLOCK$", u"CON", u"CONIN$", u"CONOUT$", u"LOCK$", u"NUL", u"PRN"};
constexpr std::u16string_view kNumbered[] = {u"COM", u"LPT"};
constexpr std::u16string_view kNumbers = u"123456789\u00B9\u00B2\u00B3";  // the superscript digits count too

template <class Names>
bool IsOneOf(const Names& names, std::u16string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

bool ZnIsDeviceName(std::u16string_view name) {
  name = name.substr(0, name.find(u'.'));
  name = name.substr(0, name.find_last_not_of(u' ') + 1);
  if (name.size() < 3 || name.size() > 7) return false;
  ZnUniString upper(name);
  upper.UpperCase();
  const std::u16string_view base = upper.View();
  if (IsOneOf(kDevices, base)) return true;
  return base.size() == 4 && IsOneOf(kNumbered, base.substr(0, 3)) && kNumbers.find(base[3]) != kNumbers.npos;
}
