#include "netbios/nbt_name.h"

#include <algorithm>

#include "netbios/smb_encoding.h"

namespace {

constexpr uint8_t kPointerBits = 0xC0;
// The first question's name stands right behind the 12 bytes of header.
constexpr uint16_t kPointerToFirstQuestion = 0xC00C;

bool IsHalfByte(uint8_t letter) { return letter >= 'A' && letter <= 'P'; }

uint8_t FromPair(uint8_t high, uint8_t low) { return static_cast<uint8_t>((high - 'A') << 4 | (low - 'A')); }

ZnUniString AsText(const ZnByteBuffer& bytes) { return ZnUniString::CreateFrom(bytes, ZnSmbEncoding::netbiosname); }

}  // namespace

bool ZnNBTName::Read(ZnWireReader& in) {
  *this = ZnNBTName();
  pointer = in.Remaining() > 0 && (*in.Where() & kPointerBits) == kPointerBits;
  valid = pointer ? in.Reserved(sizeof(kPointerToFirstQuestion)) : DecodeRFC883(in);
  return valid;
}

bool ZnNBTName::Write(ZnWireWriter& out) const {
  if (pointer) return out.U16be(kPointerToFirstQuestion);
  return out.Rest(ZnMachine(name, type).EncodeRFC883().AsEncoding(ZnSmbEncoding::netbiosname));
}

bool ZnNBTName::DecodeRFC883(ZnWireReader& in) {
  uint8_t length = 0;
  ZnByteBuffer label;
  if (!in.U8(length) || length == 0 || length % 2 != 0 || !in.Bytes(label, length)) return in.Fail();
  if (!std::all_of(label.Data(), label.Data() + length, IsHalfByte)) return in.Fail();

  ZnByteBuffer characters;
  for (size_t i = 0; i + 2 < length; i += 2) characters.Append(FromPair(label[i], label[i + 1]));
  name = AsText(characters);
  type = FromPair(label[length - size_t{2}], label[length - size_t{1}]);

  while (in.U8(length) && length != 0) {
    ZnByteBuffer scope;
    if (length >= kPointerBits || !in.Bytes(scope, length)) return in.Fail();
    name += "." + AsText(scope);
  }
  return in.Ok();
}
