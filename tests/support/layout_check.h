#pragma once
// What every record of a wire has to keep, checked from its bytes.

#include <gtest/gtest.h>

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

// `blank` is the record as a reader makes it and `digits` are the bytes of one; those behind a "|" may be missing, no
// others. `fill` gives the fields of a blank one the values that the bytes stand for. Gives the record that was read.
template <class R, class Fill>
R CheckLayout(const R& blank, const std::string& digits, Fill fill) {
  SCOPED_TRACE(digits);
  const ZnPacket bytes = Hex(digits);
  const size_t shortest = Hex(digits.substr(0, digits.find('|'))).Length();
  R decoded = blank;
  EXPECT_TRUE(ReadExactly(decoded, bytes));
  R value = blank;
  fill(value);
  EXPECT_TRUE(decoded == value);
  EXPECT_EQ(ToHex(value.Pack()), ToHex(bytes));
  EXPECT_EQ(value.HowBig(), bytes.Length());

  for (size_t length = 0; length < bytes.Length(); length++) {
    R cut = blank;
    EXPECT_EQ(ReadExactly(cut, bytes, length), length >= shortest) << "cut at " << length;
    EXPECT_EQ(cut.valid, length >= shortest);
  }

  // Whatever can be read can be packed, and read again as the same.
  for (size_t position = 0; position < bytes.Length(); position++) {
    for (int byte : {0x00, 0x01, 0x3F, 0x80, 0xFF}) {
      ZnPacket changed(bytes.Data(), bytes.Length());
      changed.Writable()[position] = static_cast<uint8_t>(byte);
      R first = blank, second = blank;
      if (!ReadExactly(first, changed)) continue;
      ZnPacket packed = first.Pack();
      EXPECT_TRUE(ReadExactly(second, packed) && first == second) << "byte " << position << " set to " << byte;
    }
  }
  return decoded;
}

// The same where it is shown elsewhere that each field stands for what it should.
template <class R>
R CheckLayout(const R& blank, const std::string& digits) {
  R value = blank;
  ReadExactly(value, Hex(digits));
  return CheckLayout(blank, digits, [&](R& same) { same = value; });
}

// The same for a record whose value can be given at once.
template <class R>
void CheckRecord(const R& value, const std::string& digits) {
  CheckLayout(R(), digits, [&](R& record) { record = value; });
}
