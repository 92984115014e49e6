#pragma once
// How the sections of SMB messages are read and written: the wire visitors plus the field types that only SMB has.
// Numbers are little-endian. An `offset` is a distance from the start of the data section: as that section starts at an
// odd position of its message, UTF-16 text at an even offset has a pad byte in front of it. (MS-CIFS 2.2.3.3)

#include "runtime/list.h"
#include "runtime/time_val.h"
#include "runtime/uni_string.h"
#include "runtime/wire.h"

// Bytes of `text` in `encoding`, without terminator.
inline size_t ZnSmbTextSize(const ZnUniString& text, ZnEncoding encoding) {
  return text.IsEmpty() ? 0 : text.AsEncoding(encoding).Length();
}

class ZnSmbReader : public ZnWireReader {
 public:
  using ZnWireReader::ZnWireReader;

  // Text up to its terminator, or to the end of the section. Nothing left is an empty text.
  bool String(ZnUniString& text, ZnEncoding encoding) { return StringAt(text, encoding, Offset()); }
  bool StringAt(ZnUniString& text, ZnEncoding encoding, size_t offset) {
    return Scan(text, encoding, offset, Remaining());
  }
  // Whether every text so far was read whole: its encoding has nothing else for its bytes.
  bool TextsAreWhole() const { return whole_; }
  // Always 8-bit: service and dialect names, remote-API descriptors.
  bool Ansi(ZnUniString& text) { return StringAt(text, ZnCodeset::Latin1, 0); }
  // Text of a stated size in bytes. It ends early at a terminator or at the end of the section.
  bool TextAt(ZnUniString& text, ZnEncoding encoding, size_t offset, size_t size) {
    return Scan(text, encoding, offset, size);
  }
  // The buffer format of the older commands: a format byte of 4 before the text.
  bool Path(ZnUniString& text, ZnEncoding encoding) { return Constant(4) && String(text, encoding); }
  // 32-bit seconds since 1970.
  bool Seconds(ZnTimeVal& time) {
    time.microseconds = 0;
    return U32le(time.seconds);
  }
  // Pad bytes up to an odd, or to the given, distance from the start of the section. False when already past it.
  bool PadToOdd() { return Offset() % 2 == 1 || Reserved(1); }
  bool PadTo(size_t offset) { return offset < Offset() ? Fail() : Reserved(offset - Offset()); }
  // Reserved bytes at the end of a section, which may be missing.
  bool ReservedIfAny(size_t count) { return Ok() && (Remaining() < count || Reserved(count)); }
  // Nothing is left; a writer is never at the end.
  bool AtEnd() const { return Ok() && Remaining() == 0; }
  // A field of fixed size: exactly that many bytes.
  bool Fixed(ZnByteBuffer& bytes, size_t size) { return Bytes(bytes, size); }

  template <class R>
  bool Record(R& record) {
    return record.Read(*this) || Fail();
  }
  // Records up to the end of the section.
  template <class R>
  bool RecordsToEnd(ZnDList<R>& records) {
    records.Flush();
    while (Remaining() > 0) {
      R record;
      if (!Record(record)) return false;
      records.Append(std::move(record));
    }
    return Ok();
  }

 private:
  bool Scan(ZnUniString& text, ZnEncoding encoding, size_t offset, size_t limit);
  bool whole_ = true;
};

class ZnSmbWriter : public ZnWireWriter {
 public:
  using ZnWireWriter::ZnWireWriter;

  bool String(const ZnUniString& text, ZnEncoding encoding) { return StringAt(text, encoding, Offset()); }
  bool StringAt(const ZnUniString& text, ZnEncoding encoding, size_t offset) {
    return TextAt(text, encoding, offset, 0) && Reserved(encoding == ZnCodeset::Utf16Lsb ? 2 : 1);
  }
  bool Ansi(const ZnUniString& text) { return StringAt(text, ZnCodeset::Latin1, 0); }
  // The text alone, without terminator. Its size is the text's own.
  bool TextAt(const ZnUniString& text, ZnEncoding encoding, size_t offset, size_t) {
    if (encoding == ZnCodeset::Utf16Lsb && offset % 2 == 0) Reserved(1);
    return Rest(text.AsEncoding(encoding));
  }
  bool Path(const ZnUniString& text, ZnEncoding encoding) { return Constant(4) && String(text, encoding); }
  bool Seconds(const ZnTimeVal& time) { return U32le(time.seconds); }
  bool PadToOdd() { return Offset() % 2 == 1 || Reserved(1); }
  bool PadTo(size_t offset) { return offset <= Offset() || Reserved(offset - Offset()); }
  bool ReservedIfAny(size_t count) { return Reserved(count); }
  bool AtEnd() const { return false; }
  // The bytes, cut or filled with zeros to `size`.
  bool Fixed(const ZnByteBuffer& bytes, size_t size) {
    size_t have = bytes.Length() < size ? bytes.Length() : size;
    return Raw(bytes.Data(), have) && Reserved(size - have);
  }

  template <class R>
  bool Record(const R& record) {
    return record.Write(*this);
  }
  template <class R>
  bool RecordsToEnd(const ZnDList<R>& records) {
    for (const R& record : records) Record(record);
    return true;
  }
};

// Base of every section and of every encoding shared by sections.
template <class Derived>
struct ZnSmbRecord : ZnRecord<Derived, ZnSmbReader, ZnSmbWriter> {};
