#pragma once
// Contract. Opaque bytes of a wire format, and what the records of all protocols pack into.

#include <string>

#include "runtime/byte_buffer.h"

class ZnPacket : public ZnByteBuffer {
 public:
  using ZnByteBuffer::ZnByteBuffer;
  ZnPacket() = default;
  ZnPacket(const ZnByteBuffer& bytes) : ZnByteBuffer(bytes) {}  // NOLINT(google-explicit-constructor): the same bytes

  // False after a read that was cut short.
  bool ok = true;

  // Makes the buffer `size` zero bytes long, its own, and gives the bytes.
  uint8_t* Alloc(size_t size);
  // Takes exactly `size` bytes at `cursor`, moving it on and lowering `remaining`. With fewer left: clears ok, moves
  // nothing.
  bool Read(const uint8_t*& cursor, size_t& remaining, size_t size);
  // Hexadecimal dump, 16 bytes a line, indented by twice `indent` blanks.
  std::string DebugString(unsigned indent) const;
};
