#include "runtime/printable_text.h"

namespace {

constexpr char16_t kDelete = 0x7F, kLastC1 = 0x9F, kLineSeparator = 0x2028, kParagraphSeparator = 0x2029;

bool IsControl(char16_t unit) {
  return unit < u' ' || (unit >= kDelete && unit <= kLastC1) || unit == kLineSeparator || unit == kParagraphSeparator;
}

ZnUniString Printable(ZnUniString text, bool severallines) {
  for (size_t i = 0; i < text.Length(); i++) {
    if (IsControl(text[i]) && !(severallines && text[i] == u'\n')) text.Set(i, u'?');
  }
  return text;
}

}  // namespace

ZnUniString ZnPrintableLine(ZnUniString text) { return Printable(std::move(text), false); }
ZnUniString ZnPrintableLines(ZnUniString text) { return Printable(std::move(text), true); }
