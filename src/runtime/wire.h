#pragma once
// Contract. How every wire record of the daemon is read, packed, sized and compared: a record states its fields once,
// in wire order, in a template `Fields(io)`, and the three visitors below do the rest.
//
//   struct ZnPoint : ZnRecord<ZnPoint> {
//     uint32_t x = 0;
//     uint16_t y = 0;
//     template <class Io> bool Fields(Io& io) { return io.U32be(x) && io.U16be(y); }
//     bool operator==(const ZnPoint&) const = default;
//   };
//
// A conditional field is a condition in that expression; an irregular one is a named field type or a method of a
// protocol family's visitors, which derive from ZnWireReader and ZnWireWriter (XDR in rpc/, SMB sections in smb/wire/,
// NetBIOS names in netbios/). What decides a record's form (dialect, encoding, level) is a plain member of the record.

#include <bit>
#include <concepts>
#include <cstring>
#include <type_traits>

#include "runtime/packet.h"

template <class T>
concept ZnWireScalar = std::integral<T> || std::is_enum_v<T>;

// Reads fields from bytes it doesn't own. It can't move past its end. The first failure sticks: the rest reads as
// nothing.
class ZnWireReader {
 public:
  static constexpr bool kReading = true;

  ZnWireReader(const void* bytes, size_t length)
      : start_(static_cast<const uint8_t*>(bytes)), at_(start_), end_(start_ + length) {}
  explicit ZnWireReader(const ZnByteBuffer& bytes) : ZnWireReader(bytes.Data(), bytes.Length()) {}

  bool Ok() const { return ok_; }
  size_t Offset() const { return static_cast<size_t>(at_ - start_); }  // bytes consumed since the start
  size_t Remaining() const { return static_cast<size_t>(end_ - at_); }
  const uint8_t* Where() const { return at_; }
  bool Fail() {
    ok_ = false;
    at_ = end_;
    return false;
  }

  template <ZnWireScalar T>
  bool U8(T& value) {
    return Number<1, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U16be(T& value) {
    return Number<2, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U32be(T& value) {
    return Number<4, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U64be(T& value) {
    return Number<8, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U16le(T& value) {
    return Number<2, std::endian::little>(value);
  }
  template <ZnWireScalar T>
  bool U32le(T& value) {
    return Number<4, std::endian::little>(value);
  }
  template <ZnWireScalar T>
  bool U64le(T& value) {
    return Number<8, std::endian::little>(value);
  }

  // Exactly `count` bytes into a plain array.
  bool Raw(void* bytes, size_t count) {
    if (!Have(count)) return Fail();
    memcpy(bytes, at_, count);
    at_ += count;
    return true;
  }
  // Exactly `count` bytes, or all that is left. The count is tested before anything is allocated.
  bool Bytes(ZnByteBuffer& bytes, size_t count) {
    if (!Have(count)) return Fail();
    bytes = ZnByteBuffer(at_, count);
    at_ += count;
    return true;
  }
  bool Rest(ZnByteBuffer& bytes) { return Bytes(bytes, Remaining()); }
  // Reserved bytes: skipped here, zeros when written.
  bool Reserved(size_t count) {
    if (!Have(count)) return Fail();
    at_ += count;
    return true;
  }
  // A byte that must have this value.
  bool Constant(uint8_t expected) {
    uint8_t value = 0;
    return U8(value) && (value == expected || Fail());
  }
  template <class R>
  bool Record(R& record) {
    return record.Read(*this) || Fail();
  }

  // Bit fields of up to 16 bits. Low: least significant bit of a byte first; High: most significant first. Fields
  // follow each other across byte borders; a run of them must fill whole bytes before a byte-wise field follows.
  template <ZnWireScalar T>
  bool LowBits(T& value, unsigned count) {
    return GetBits(value, count, false);
  }
  template <ZnWireScalar T>
  bool HighBits(T& value, unsigned count) {
    return GetBits(value, count, true);
  }
  // Bits that must be zero, and bits that are ignored; both are written as zero.
  bool LowZero(unsigned count) {
    uint16_t value = 0;
    return LowBits(value, count) && (value == 0 || Fail());
  }
  bool LowIgnored(unsigned count) {
    uint16_t value = 0;
    return LowBits(value, count);
  }
  bool HighIgnored(unsigned count) {
    uint16_t value = 0;
    return HighBits(value, count);
  }

 private:
  bool Have(size_t count) const { return ok_ && count <= Remaining(); }

  template <unsigned Size, std::endian Order, class T>
  bool Number(T& value) {
    if (!Have(Size)) return Fail();
    uint64_t number = 0;
    for (unsigned i = 0; i < Size; i++) number = number << 8 | at_[Order == std::endian::big ? i : Size - 1 - i];
    at_ += Size;
    value = static_cast<T>(number);
    return true;
  }

  template <class T>
  bool GetBits(T& value, unsigned count, bool highFirst) {
    unsigned number = 0;
    for (unsigned i = 0; i < count; i++) {
      if (!Have(1)) return Fail();
      unsigned shift = highFirst ? 7 - bit_ : bit_;
      unsigned bit = *at_ >> shift & 1U;
      number = highFirst ? number << 1 | bit : number | bit << i;
      if (++bit_ == 8) {
        bit_ = 0;
        at_++;
      }
    }
    value = static_cast<T>(number);
    return true;
  }

  const uint8_t* start_;
  const uint8_t* at_;
  const uint8_t* end_;
  unsigned bit_ = 0;
  bool ok_ = true;
};

// Appends fields to a buffer, or only counts them. Never fails.
class ZnWireWriter {
 public:
  static constexpr bool kReading = false;

  ZnWireWriter() = default;                                 // counts only
  explicit ZnWireWriter(ZnByteBuffer& out) : out_(&out) {}  // appends; `out` outlives the writer

  bool Ok() const { return true; }
  size_t Offset() const { return offset_; }  // bytes written since the start
  bool Fail() { return false; }

  template <ZnWireScalar T>
  bool U8(T value) {
    return Number<1, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U16be(T value) {
    return Number<2, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U32be(T value) {
    return Number<4, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U64be(T value) {
    return Number<8, std::endian::big>(value);
  }
  template <ZnWireScalar T>
  bool U16le(T value) {
    return Number<2, std::endian::little>(value);
  }
  template <ZnWireScalar T>
  bool U32le(T value) {
    return Number<4, std::endian::little>(value);
  }
  template <ZnWireScalar T>
  bool U64le(T value) {
    return Number<8, std::endian::little>(value);
  }

  bool Raw(const void* bytes, size_t count) {
    if (out_) out_->Append(bytes, count);
    offset_ += count;
    return true;
  }
  // Writes what the buffer holds, whatever `count` says: the count is for readers.
  bool Bytes(const ZnByteBuffer& bytes, size_t) { return Rest(bytes); }
  bool Rest(const ZnByteBuffer& bytes) {
    if (out_) out_->Append(bytes);
    offset_ += bytes.Length();
    return true;
  }
  bool Reserved(size_t count) {
    if (out_) out_->SetLength(out_->Length() + count);
    offset_ += count;
    return true;
  }
  bool Constant(uint8_t value) { return U8(value); }
  template <class R>
  bool Record(const R& record) {
    return record.Write(*this);
  }

  template <ZnWireScalar T>
  bool LowBits(T value, unsigned count) {
    return PutBits(value, count, false);
  }
  template <ZnWireScalar T>
  bool HighBits(T value, unsigned count) {
    return PutBits(value, count, true);
  }
  bool LowZero(unsigned count) { return LowBits(0, count); }
  bool LowIgnored(unsigned count) { return LowBits(0, count); }
  bool HighIgnored(unsigned count) { return HighBits(0, count); }

 private:
  template <unsigned Size, std::endian Order, class T>
  bool Number(T value) {
    auto number = static_cast<uint64_t>(value);
    uint8_t bytes[Size];
    for (unsigned i = 0; i < Size; i++) {
      bytes[Order == std::endian::little ? i : Size - 1 - i] = static_cast<uint8_t>(number);
      number >>= 8;
    }
    return Raw(bytes, Size);
  }

  template <class T>
  bool PutBits(T value, unsigned count, bool highFirst) {
    auto number = static_cast<unsigned>(value);
    for (unsigned i = 0; i < count; i++) {
      unsigned bit = highFirst ? number >> (count - 1 - i) & 1U : number >> i & 1U;
      pending_ |= bit << (highFirst ? 7 - bit_ : bit_);
      if (++bit_ == 8) {
        U8(pending_);
        bit_ = 0;
        pending_ = 0;
      }
    }
    return true;
  }

  ZnByteBuffer* out_ = nullptr;
  size_t offset_ = 0;
  unsigned bit_ = 0;
  unsigned pending_ = 0;
};

// Base of all records. `Derived` has `template <class Io> bool Fields(Io&)`, which must not change the record when `Io`
// is a writer, and a defaulted operator==. A protocol family passes its own visitors.
template <class Derived, class Reader = ZnWireReader, class Writer = ZnWireWriter>
struct ZnRecord {
  bool valid = true;  // the last Read succeeded, or nothing was read yet

  // Reads the fields in wire order, as far as they go; false (and valid false) at the first that fails.
  bool Read(Reader& in) {
    valid = static_cast<Derived*>(this)->Fields(in);
    return valid;
  }
  // Reads from the whole of `bytes`; bytes behind the last field are ignored.
  bool Read(const ZnByteBuffer& bytes) {
    Reader in(bytes);
    return Read(in);
  }
  bool Write(Writer& out) const { return const_cast<Derived*>(static_cast<const Derived*>(this))->Fields(out); }
  // The encoded record in a buffer of its own.
  ZnPacket Pack() const {
    ZnPacket bytes;
    Writer out(bytes);
    Write(out);
    return bytes;
  }
  // Size of the encoded record in bytes.
  size_t HowBig() const {
    Writer out;
    Write(out);
    return out.Offset();
  }
  // How a record was come by isn't part of its value.
  bool operator==(const ZnRecord&) const { return true; }
};
