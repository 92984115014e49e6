#include "runtime/uni_string.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "runtime/codeset_converter.h"

namespace {

constexpr size_t kUnit = sizeof(char16_t);

size_t Position(size_t found) { return found == std::u16string_view::npos ? ZnUniString::kNotFound : found; }

}  // namespace

ZnUniString::ZnUniString(const char* utf8) {
  if (utf8) *this = CreateFrom(utf8, strlen(utf8), ZnCodeset::Utf8);
}

ZnUniString::ZnUniString(const std::string& utf8)
    : ZnUniString(CreateFrom(utf8.data(), utf8.size(), ZnCodeset::Utf8)) {}

ZnUniString::ZnUniString(std::u16string_view units) : bytes_(units.data(), units.size() * kUnit) {}

ZnUniString& ZnUniString::operator=(const char* utf8) { return *this = ZnUniString(utf8); }

ZnUniString ZnUniString::FromUnits(ZnByteBuffer units) {
  ZnUniString text;
  text.bytes_ = std::move(units);
  return text;
}

ZnUniString ZnUniString::CreateFrom(const void* bytes, size_t length, ZnEncoding encoding, unsigned options) {
  return ZnCodesetConverter::GetConverter(encoding).From(static_cast<const uint8_t*>(bytes), length, options);
}

ZnUniString ZnUniString::CreateFrom(const ZnByteBuffer& bytes, ZnEncoding encoding, unsigned options) {
  return CreateFrom(bytes.Data(), bytes.Length(), encoding, options);
}

ZnUniString ZnUniString::CreateFromUnsigned(uint64_t number) { return ZnUniString(std::to_string(number)); }

ZnByteBuffer ZnUniString::AsEncoding(ZnEncoding encoding, unsigned options) const {
  ZnByteBuffer encoded = ZnCodesetConverter::GetConverter(encoding).To(*this, options);
  if (bytes_.IsSecret()) encoded.MarkSecret();
  size_t length = encoded.Length();
  encoded.SetLength(length + 2);
  encoded.SetLength(length);
  return encoded;
}

std::string ZnUniString::AsUtf8() const {
  ZnByteBuffer encoded = ZnCodesetConverter::GetConverter(ZnCodeset::Utf8).To(*this, 0);
  return {reinterpret_cast<const char*>(encoded.Data()), encoded.Length()};
}

bool ZnUniString::IsValid(const ZnByteBuffer& bytes, ZnEncoding encoding, unsigned options) {
  ZnCodesetConverter::ValidationInfo info;
  ZnCodesetConverter::ValidateFrom(bytes, info, encoding, options);
  return info.errors.IsEmpty();
}

ZnEncoding ZnUniString::GetEncoding(const char* name) { return ZnCodesetConverter::GetEncoding(name); }
unsigned ZnUniString::GetEncOption(const char* name) { return ZnCodesetConverter::GetEncOption(name); }
const char* ZnUniString::GetEncodingName(ZnEncoding encoding) { return ZnCodesetConverter::GetEncodingName(encoding); }

bool ZnUniString::GetEncodingLocale(ZnEncoding encoding, char* buffer) {
  const char* name = ZnCodesetConverter::GetEncodingLocale(encoding);
  if (!name) return false;
  for (size_t i = 0; i < 5; i++) {
    auto letter = static_cast<unsigned char>(name[i]);
    buffer[i] = static_cast<char>(i < 2 ? tolower(letter) : toupper(letter));
  }
  buffer[5] = 0;
  return true;
}

void ZnUniString::Truncate(size_t length) {
  if (length != Length()) bytes_.SetLength(length * kUnit);
}

void ZnUniString::Pad(size_t length, char16_t unit) {
  size_t old = Length();
  Truncate(length);
  if (length <= old) return;
  auto* units = reinterpret_cast<char16_t*>(bytes_.Writable());
  std::fill(units + old, units + length, unit);
}

void ZnUniString::Set(size_t position, char16_t unit) {
  reinterpret_cast<char16_t*>(bytes_.Writable())[position] = unit;
}

void ZnUniString::Remove(size_t position, size_t count) { bytes_.Remove(position * kUnit, count * kUnit); }

void ZnUniString::Insert(size_t position, const ZnUniString& text) {
  ZnByteBuffer held(text.bytes_);  // the text may be this one
  bytes_.Insert(position * kUnit, held.Length(), held.Data());
}

void ZnUniString::Append(char16_t unit) { bytes_.Append(&unit, kUnit); }

void ZnUniString::Append(const ZnUniString& text) { bytes_.Append(text.bytes_); }

ZnUniString ZnUniString::operator+(const ZnUniString& text) const {
  ZnUniString sum(*this);
  sum.Append(text);
  return sum;
}

ZnUniString& ZnUniString::operator+=(const ZnUniString& text) {
  Append(text);
  return *this;
}

ZnUniString ZnUniString::SubString(size_t start, size_t count) const {
  if (start >= Length()) return {};
  if (start == 0 && count >= Length()) return *this;
  return ZnUniString(View().substr(start, count == kToEnd ? std::u16string_view::npos : count));
}

size_t ZnUniString::SearchReverse(char16_t unit) const { return Position(View().rfind(unit)); }

size_t ZnUniString::SearchFrom(size_t start, char16_t unit) const { return Position(View().find(unit, start)); }

size_t ZnUniString::SearchFrom(size_t start, const ZnUniString& text) const {
  return Position(View().find(text.View(), start));
}

size_t ZnUniString::SearchReverseFrom(size_t start, char16_t unit) const { return Position(View().rfind(unit, start)); }

size_t ZnUniString::SearchReverseFrom(size_t start, const ZnUniString& text) const {
  return Position(View().rfind(text.View(), start));
}

size_t ZnUniString::SearchFirstNotIn(const ZnUniString& set) const {
  if (set.IsEmpty() && !IsEmpty()) return 0;
  return Position(View().find_first_not_of(set.View()));
}

bool ZnUniString::StartsWith(const ZnUniString& prefix) const { return View().starts_with(prefix.View()); }

bool ZnUniString::EndsWith(const ZnUniString& suffix) const { return View().ends_with(suffix.View()); }

size_t ZnUniString::Substitute(const ZnUniString& from, const ZnUniString& to) {
  if (from.IsEmpty()) return 0;
  size_t count = 0;
  std::u16string_view all = View();
  ZnUniString result;
  size_t copied = 0;
  for (size_t at = all.find(from.View()); at != std::u16string_view::npos; at = all.find(from.View(), copied)) {
    result.bytes_.Append(all.data() + copied, (at - copied) * kUnit);
    result.Append(to);
    copied = at + from.Length();
    count++;
  }
  if (count == 0) return 0;
  result.bytes_.Append(all.data() + copied, (all.size() - copied) * kUnit);
  *this = result;
  return count;
}

ZnDList<ZnUniString> ZnUniString::Split(char16_t separator) const {
  ZnDList<ZnUniString> pieces;
  size_t start = 0;
  for (size_t at = Search(separator); at != kNotFound; at = SearchFrom(start, separator)) {
    pieces.Append(SubString(start, at - start));
    start = at + 1;
  }
  pieces.Append(SubString(start));
  return pieces;
}
