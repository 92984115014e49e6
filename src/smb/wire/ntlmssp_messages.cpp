#include "smb/wire/ntlmssp_messages.h"

bool ZnNtlmsspPlace::Find(const ZnByteBuffer& token, ZnPacket& bytes) const {
  bytes = ZnPacket();
  ZnSmbReader in(token);
  return length == 0 || (in.Reserved(offset) && in.Bytes(bytes, length));
}

ZnPacket ZnNtlmsspAuthenticate::Token(const ZnNtlmsspFlags& flags, const std::array<ZnByteBuffer, kParts>& parts) {
  ZnNtlmsspAuthenticate fixed;
  fixed.flags = flags;
  size_t offset = fixed.HowBig();
  for (size_t i = 0; i < kParts; i++) {
    const size_t length = parts[i].Length();
    fixed.places[i].length = fixed.places[i].room = static_cast<uint16_t>(length);
    fixed.places[i].offset = static_cast<uint32_t>(offset);
    offset += length;
  }
  ZnPacket token = fixed.Pack();
  for (const ZnByteBuffer& part : parts) token.Append(part);
  return token;
}
