#include "runtime/codeset_converter.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <string>

#include "runtime/codeset_families.h"
#include "runtime/codeset_names.h"
#include "runtime/cstring_registry.h"

uint8_t ZnCodesetConverter::recoverchar = '#';

namespace {

class InvalidConverter final : public ZnConverter {
 public:
  ZnByteBuffer To(const ZnUniString&, unsigned) const override { return {}; }
  ZnUniString From(const uint8_t*, size_t, unsigned) const override { return {}; }
  void ValidateTo(const ZnUniString&, ValidationInfo&, unsigned) const override {}
  void ValidateFrom(const uint8_t*, size_t, ValidationInfo&, unsigned) const override {}
};

const ZnConverter& InvalidEncodingConverter() {
  static const InvalidConverter converter;
  return converter;
}

using ConverterTable = std::array<const ZnConverter*, ZnCodeset::Invalid + 1>;

ConverterTable MakeConverterTable() {
  ConverterTable table;
  for (ZnEncoding encoding = 0; encoding < table.size(); encoding++) table[encoding] = ZnSingleByteConverter(encoding);
  table[ZnCodeset::Big5] = &ZnBig5Converter();
  table[ZnCodeset::Ascii] = &ZnAsciiConverter();
  table[ZnCodeset::Gb18030] = &ZnGb18030Converter();
  table[ZnCodeset::Gb2312] = &ZnGb18030Converter();
  table[ZnCodeset::Latin1] = &ZnLatin1Converter();
  table[ZnCodeset::ShiftJis] = &ZnShiftJisConverter();
  table[ZnCodeset::EucJp] = &ZnEucJpConverter();
  table[ZnCodeset::Iso2022Jp] = &ZnIso2022JpConverter();
  table[ZnCodeset::Utf16Msb] = &ZnUtf16MsbConverter();
  table[ZnCodeset::Utf16Lsb] = &ZnUtf16LsbConverter();
  table[ZnCodeset::Utf16Local] = &ZnUtf16LocalConverter();
  table[ZnCodeset::Utf8] = &ZnUtf8Converter();
  table[ZnCodeset::Invalid] = &InvalidEncodingConverter();
  return table;
}

// The registry of a table of names.
ZnCStringRegistry Registry(std::span<const ZnCodesetName> names, unsigned invalid) {
  ZnCStringRegistry registry(invalid);
  for (const ZnCodesetName& row : names) registry.Set(row.name, row.number);
  return registry;
}

ZnCStringRegistry& EncodingRegistry() {
  static ZnCStringRegistry registry = Registry(kZnCodesetNames, ZnCodeset::Invalid);
  return registry;
}

ZnCStringRegistry& OptionRegistry() {
  static ZnCStringRegistry registry = Registry(kZnCodesetOptions, ZnCodeset::UnknownOption);
  return registry;
}

// The locale decides about letters, as everywhere in names that people type.
std::string UpperCased(const char* name) {
  std::string upper(name);
  for (char& c : upper) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return upper;
}

bool IsLocaleName(const char* name) { return strlen(name) == 5 && name[2] == '_'; }

}  // namespace

ZnEncoding ZnCodesetConverter::GetEncoding(const char* name) {
  return name ? EncodingRegistry().Get(UpperCased(name).c_str(), false) : ZnCodeset::Invalid;
}

unsigned ZnCodesetConverter::GetEncOption(const char* name) {
  return name ? OptionRegistry().Get(UpperCased(name).c_str(), false) : ZnCodeset::UnknownOption;
}

const char* ZnCodesetConverter::GetEncodingName(ZnEncoding encoding) {
  auto row = std::ranges::find(kZnCodesetNames, encoding, &ZnCodesetName::number);
  return row == kZnCodesetNames.end() ? nullptr : row->name;
}

const char* ZnCodesetConverter::GetEncodingLocale(ZnEncoding encoding) {
  auto row = std::ranges::find_if(kZnCodesetNames, [&](const ZnCodesetName& candidate) {
    return candidate.number == encoding && IsLocaleName(candidate.name);
  });
  return row == kZnCodesetNames.end() ? nullptr : row->name;
}

ZnEncoding ZnCodesetConverter::GetEncodingFromLocale(const char* codeset) {
  if (!codeset) return ZnCodeset::Latin1;
  auto row = std::ranges::find_if(kZnCodesetNames, [&](const ZnCodesetName& candidate) {
    return strncasecmp(codeset, candidate.name, strlen(candidate.name)) == 0;
  });
  return row == kZnCodesetNames.end() ? ZnCodeset::Latin1 : row->number;
}

const ZnConverter& ZnCodesetConverter::GetConverter(ZnEncoding encoding) {
  static const ConverterTable table = MakeConverterTable();
  return *table[std::min(encoding, ZnCodeset::Invalid)];
}

void ZnCodesetConverter::PreRegister() {
  EncodingRegistry();
  OptionRegistry();
  GetConverter(ZnCodeset::Invalid);
}

void ZnCodesetConverter::ValidateFrom(const void* bytes, size_t length, ValidationInfo& info, ZnEncoding encoding,
                                      unsigned options) {
  GetConverter(encoding).ValidateFrom(static_cast<const uint8_t*>(bytes), length, info, options);
}

void ZnCodesetConverter::ValidateFrom(const ZnByteBuffer& bytes, ValidationInfo& info, ZnEncoding encoding,
                                      unsigned options) {
  ValidateFrom(bytes.Data(), bytes.Length(), info, encoding, options);
}

void ZnCodesetConverter::ValidateTo(const ZnUniString& text, ValidationInfo& info, ZnEncoding encoding,
                                    unsigned options) {
  GetConverter(encoding).ValidateTo(text, info, options);
}

void ZnCodesetConverter::ListSupportedEncodings(ZnDList<ZnUniString>& list) {
  for (ZnEncoding encoding = 0; encoding < ZnCodeset::Invalid; encoding++) {
    if (&GetConverter(encoding) != &InvalidEncodingConverter()) list.Append(GetEncodingName(encoding));
  }
}

void ZnCodesetConverter::ListSupportedEncOptions(ZnDList<ZnUniString>& list) {
  for (const ZnCodesetName& row : kZnCodesetOptions) list.Append(row.name);
}

bool ZnCodesetConverter::Recover(const uint8_t* bytes, size_t length, size_t& position, char16_t& unit) {
  if (length < position || length - position < 4) return false;
  unsigned value = 0;
  for (size_t i = position; i < position + 4; i++) {
    unsigned digit = bytes[i] - '0';
    if (digit > 9) digit = bytes[i] >= 'A' && bytes[i] <= 'F' ? bytes[i] - 'A' + 10U : 16U;
    if (digit > 15) return false;
    value = value << 4 | digit;
  }
  unit = static_cast<char16_t>(value);
  position += 4;
  return true;
}

void ZnCodesetConverter::MakeRecover(char16_t unit, uint8_t* bytes, size_t& count) {
  for (unsigned i = 0; i < 4; i++) bytes[i] = static_cast<uint8_t>("0123456789ABCDEF"[unit >> (12 - 4 * i) & 0xF]);
  count = 4;
}
