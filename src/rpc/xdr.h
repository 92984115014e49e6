#pragma once
// External data representation (RFC 1014): every field is a multiple of four bytes, big-endian. The visitors of all
// records of this folder, over those of runtime/wire.h.

#include <string_view>

#include "rpc/name_encoding.h"
#include "runtime/struct_list.h"
#include "runtime/uni_string.h"
#include "runtime/wire.h"

// Opaque bytes behind a length word; the form is io.Opaque's.
using ZnRPCByteBuffer = ZnPacket;

// The encoding of every string that travels by RPC. Records hold plain ZnUniStrings; io.String is their form.
struct ZnRPCString {
  static inline ZnEncoding rpcenc = ZnCodeset::Latin1;
  static inline unsigned rpcopt = 0;

  // Bytes that a text takes on the wire: length word, encoded text, padding.
  static size_t HowBig(const ZnUniString& text);
};

// A name or a link's target; the form is io.Name's.
struct ZnRPCName : ZnUniString {
  using ZnUniString::ZnUniString;
  using ZnUniString::operator=;

  bool wellformed = true;  // false for one that came as bytes that are no text, and stands empty here
  bool operator==(const ZnRPCName&) const = default;
};

// Bytes of zero padding behind `length` opaque bytes.
constexpr size_t ZnXdrPadding(size_t length) { return (4 - length % 4) % 4; }

class ZnXdrReader : public ZnWireReader {
 public:
  using ZnWireReader::ZnWireReader;

  template <ZnWireScalar T>
  bool U32(T& value) {
    return U32be(value);
  }
  // Any number but 0 is true.
  bool Bool(bool& value) {
    uint32_t number = 0;
    if (!U32be(number)) return false;
    value = number != 0;
    return true;
  }
  // A text in ZnRPCString::rpcenc, in which what can't be read is dropped. Fails unless all bytes that the length word
  // promises are there, padding included.
  bool String(ZnUniString& text);
  // Bytes that stay where they are. Fails like String.
  bool View(std::string_view& bytes) {
    uint32_t length = 0;
    const uint8_t* const start = Text(length);
    if (start) bytes = {reinterpret_cast<const char*>(start), length};
    return start != nullptr;
  }
  // A name in its form of ZnEncodeRpcName. Fails like String, but not for bytes that are no text.
  bool Name(ZnRPCName& name);
  // Fails like String.
  bool Opaque(ZnByteBuffer& bytes) {
    uint32_t length = 0;
    return U32be(length) && Bytes(bytes, length) && Reserved(ZnXdrPadding(length));
  }
  // A count word and that many records.
  template <class T>
  bool CountedList(ZnStructList<T>& list) {
    uint32_t count = 0;
    return U32be(count) && list.Read(*this, count);
  }
  // Hides the base's, so that nested records see this visitor.
  template <class R>
  bool Record(R& record) {
    return record.Read(*this) || Fail();
  }

 private:
  // The bytes behind a length word, with their padding; null when they aren't all there.
  const uint8_t* Text(uint32_t& length);
};

class ZnXdrWriter : public ZnWireWriter {
 public:
  using ZnWireWriter::ZnWireWriter;

  template <ZnWireScalar T>
  bool U32(T value) {
    return U32be(value);
  }
  bool Bool(bool value) { return U32be(value); }
  bool String(const ZnUniString& text) { return Opaque(text.AsEncoding(ZnRPCString::rpcenc, ZnRPCString::rpcopt)); }
  bool View(std::string_view bytes) {
    return U32be(static_cast<uint32_t>(bytes.size())) && Raw(bytes.data(), bytes.size()) &&
           Reserved(ZnXdrPadding(bytes.size()));
  }
  bool Name(const ZnUniString& name) { return Opaque(ZnEncodeRpcName(name)); }
  bool Opaque(const ZnByteBuffer& bytes) {
    return U32be(static_cast<uint32_t>(bytes.Length())) && Rest(bytes) && Reserved(ZnXdrPadding(bytes.Length()));
  }
  template <class T>
  bool CountedList(const ZnStructList<T>& list) {
    return U32be(static_cast<uint32_t>(list.Count())) && list.Write(*this);
  }
  template <class R>
  bool Record(const R& record) {
    return record.Write(*this);
  }
};

template <class Derived>
using ZnXdrRecord = ZnRecord<Derived, ZnXdrReader, ZnXdrWriter>;
