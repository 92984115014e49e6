#include "smb/wire/message.h"

bool ZnSMBCDecode::Read(const ZnByteBuffer& message) {
  message_ = message;
  return Read(std::span(message_.Data(), message_.Length()));
}

bool ZnSMBCDecode::Read(std::span<const uint8_t> message) {
  bytes_ = message;
  wordcount = 0;
  bytecount = 0;
  ZnSmbReader in(bytes_.data(), bytes_.size());
  valid = in.Record(header) && in.U8(wordcount) && in.Reserved(WordsSize()) && in.U16le(bytecount) &&
          in.Reserved(bytecount);
  // Counts that don't hold must not reach whoever asks for the sections.
  if (!valid) wordcount = 0, bytecount = 0;
  return valid;
}

ZnSmbReader ZnSMBCDecode::Section(size_t start, size_t size) const {
  if (size == 0) return {nullptr, 0};
  return {bytes_.data() + start, size};
}

ZnPacket ZnSMBCDecode::Pack() const {
  ZnPacket message = header.Pack();
  message.Append(wordcount);
  message.Append(Words().Where(), WordsSize());
  ZnSmbWriter out(message);
  out.U16le(bytecount);
  message.Append(Data().Where(), bytecount);
  return message;
}

bool ZnSMBCDecode::operator==(const ZnSMBCDecode& other) const {
  return header == other.header && Pack() == other.Pack();
}

void ZnSMBClientEncode::SetCounts(size_t wordsSize, size_t dataSize) {
  uint8_t* bytes = Writable();
  bytes[ZnSMBCHeader::kSize] = static_cast<uint8_t>(wordsSize / 2);
  uint8_t* bytecount = bytes + ZnSMBCHeader::kSize + 1 + wordsSize;
  bytecount[0] = static_cast<uint8_t>(dataSize);
  bytecount[1] = static_cast<uint8_t>(dataSize >> 8);
}
