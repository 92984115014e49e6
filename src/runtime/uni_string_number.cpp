// Leading decimal digits of a text as a number. Digits of any script count.

#include <algorithm>
#include <iterator>

#include "runtime/uni_string.h"

namespace {

// The zeros of scripts with ten digits in a row.
constexpr char16_t kZeros[] = {0x30,  0x660, 0x6F0, 0x966, 0x9E6, 0xA66, 0xAE6,  0xB66,
                               0xC66, 0xCE6, 0xD66, 0xE50, 0xED0, 0xF20, 0x2080, 0xFF10};

// Digits that stand outside such rows.
struct LoneDigits {
  char16_t first;
  char16_t last;
  unsigned firstDigit;
};
constexpr LoneDigits kLoneDigits[] = {
    {0xB2, 0xB3, 2}, {0xB9, 0xB9, 1}, {0xBE7, 0xBEF, 1}, {0x2070, 0x2070, 0}, {0x2074, 0x2079, 4}};

// The digit's value, or 10 for what is no digit.
unsigned Digit(char16_t unit) {
  if (unit < 0x80) return std::min(static_cast<unsigned>(unit) - '0', 10U);
  const char16_t* above = std::upper_bound(std::begin(kZeros), std::end(kZeros), unit);
  if (unsigned digit = unit - above[-1]; digit <= 9) return digit;
  for (const LoneDigits& row : kLoneDigits) {
    if (unit >= row.first && unit <= row.last) return row.firstDigit + (unit - row.first);
  }
  return 10;
}

uint64_t LeadingDigits(std::u16string_view text) {
  uint64_t number = 0;
  for (char16_t unit : text) {
    unsigned digit = Digit(unit);
    if (digit > 9) break;
    number = number * 10 + digit;
  }
  return number;
}

}  // namespace

int32_t ZnUniString::AsInt32() const {
  std::u16string_view text = View();
  if (!text.starts_with(u'-')) return static_cast<int32_t>(LeadingDigits(text));
  return static_cast<int32_t>(0 - LeadingDigits(text.substr(1)));
}

uint32_t ZnUniString::AsUint32() const { return static_cast<uint32_t>(LeadingDigits(View())); }
uint16_t ZnUniString::AsUint16() const { return static_cast<uint16_t>(LeadingDigits(View())); }
uint64_t ZnUniString::AsUint64() const { return LeadingDigits(View()); }
