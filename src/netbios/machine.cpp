#include "netbios/machine.h"

namespace {

constexpr char16_t kBlank = u' ';

// Half bytes as letters: "A" for 0 to "P" for 15.
void AppendPair(ZnUniString& text, char16_t unit) {
  unsigned byte = unit <= 0xFF ? unit : '?';
  text.Append(static_cast<char16_t>('A' + (byte >> 4)));
  text.Append(static_cast<char16_t>('A' + (byte & 15)));
}

}  // namespace

void ZnMachine::Name(const ZnUniString& text, uint8_t type) {
  ZnUniString name = text;
  name.Pad(kNameLength, kBlank);
  for (size_t i = 0; i < kNameLength; i++) name.Set(i, ZnUniString::Upper(name[i]));

  size_t length = kNameLength;
  while (length > 0 && name[length - 1] == kBlank) length--;
  name_ = name;
  shortName_ = name.SubString(0, length);
  type_ = type;
  flags_ |= kNameSet;
}

ZnUniString ZnMachine::EncodeRFC883() const {
  ZnUniString encoded;
  encoded.Append(static_cast<char16_t>(2 * (kNameLength + 1)));
  for (char16_t unit : name_.View()) AppendPair(encoded, unit);
  AppendPair(encoded, type_);
  encoded.Append(char16_t{0});
  return encoded;
}
