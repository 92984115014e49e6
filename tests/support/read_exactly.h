#pragma once
// Reading records of the wire.

#include <memory>
#include <string>

#include "runtime/wire.h"
#include "support/hex.h"

template <class Derived, class Reader, class Writer>
Reader ReaderOf(const ZnRecord<Derived, Reader, Writer>&);

// Reads from a block of exactly this size, so that a sanitizer sees a read behind its end.
template <class R>
bool ReadExactly(R& record, const ZnByteBuffer& bytes, size_t length) {
  auto block = std::make_unique<uint8_t[]>(length);
  std::copy_n(bytes.Data(), length, block.get());
  decltype(ReaderOf(record)) in(block.get(), length);
  return record.Read(in);
}
template <class R>
bool ReadExactly(R& record, const ZnByteBuffer& bytes) {
  return ReadExactly(record, bytes, bytes.Length());
}
