#pragma once
// Contract. The daemon's only text type: 16-bit code units, reference-counted, copied on write. Surrogates are units
// like the others. The null string is an empty string in every operation.

#include <functional>
#include <string>
#include <string_view>

#include "runtime/byte_buffer.h"
#include "runtime/codeset.h"
#include "runtime/keyed_hash.h"
#include "runtime/list.h"

class ZnUniString {
 public:
  static constexpr size_t kNotFound = 0xFFFFFFFF;
  static constexpr size_t kToEnd = 0xFFFFFFFF;

  ZnUniString() = default;
  ZnUniString(const char* utf8);         // NOLINT(google-explicit-constructor): literals are text; null is empty
  ZnUniString(const std::string& utf8);  // NOLINT(google-explicit-constructor)
  explicit ZnUniString(std::u16string_view units);
  ZnUniString& operator=(const char* utf8);

  // Text of `length` bytes in an encoding; see ZnCodesetConverter for what doesn't convert. Never fails.
  static ZnUniString CreateFrom(const void* bytes, size_t length, ZnEncoding encoding, unsigned options = 0);
  static ZnUniString CreateFrom(const ZnByteBuffer& bytes, ZnEncoding encoding, unsigned options = 0);
  // Code units in host order, as they stand.
  static ZnUniString FromUnits(ZnByteBuffer units);
  static ZnUniString CreateFromUnsigned(uint64_t number);
  // The encoded text; two zero bytes stand behind its length, so Data() serves as a C string.
  ZnByteBuffer AsEncoding(ZnEncoding encoding, unsigned options = 0) const;
  std::string AsUtf8() const;
  static bool IsValid(const ZnByteBuffer& bytes, ZnEncoding encoding, unsigned options = 0);

  static ZnEncoding GetEncoding(const char* name);  // ZnCodeset::Invalid for an unknown name
  static unsigned GetEncOption(const char* name);
  static const char* GetEncodingName(ZnEncoding encoding);
  // Writes the locale form ("en_US") of an encoding into `buffer` of at least 6 bytes; false when it has none.
  static bool GetEncodingLocale(ZnEncoding encoding, char* buffer);

  size_t Length() const { return bytes_.Length() / 2; }
  bool IsEmpty() const { return Length() == 0; }
  char16_t operator[](size_t i) const { return View()[i]; }
  std::u16string_view View() const { return {reinterpret_cast<const char16_t*>(bytes_.Data()), Length()}; }
  const ZnByteBuffer& Bytes() const { return bytes_; }  // the code units in host order

  void Truncate(size_t length);            // growing leaves the new units unspecified (they are zero)
  void Pad(size_t length, char16_t unit);  // cuts, or fills up to `length`
  void Set(size_t position, char16_t unit);
  void Remove(size_t position, size_t count);
  void Insert(size_t position, const ZnUniString& text);
  void Append(char16_t unit);
  void Append(const ZnUniString& text);
  ZnUniString operator+(const ZnUniString& text) const;
  ZnUniString& operator+=(const ZnUniString& text);
  // From now on the units are overwritten before their memory is given back, and so are copies and encoded forms.
  void MarkSecret() { bytes_.MarkSecret(); }
  // Overwrites the units in place, then forgets them. For secrets.
  void Wipe() { bytes_.Wipe(); }

  bool operator==(const ZnUniString& other) const { return View() == other.View(); }
  bool operator==(const char* utf8) const { return *this == ZnUniString(utf8); }
  auto operator<=>(const ZnUniString& other) const { return View() <=> other.View(); }
  bool _equal(const ZnUniString& other) const { return bytes_._equal(other.bytes_); }

  ZnUniString SubString(size_t start, size_t count = kToEnd) const;
  // Positions, or kNotFound.
  size_t Search(char16_t unit) const { return SearchFrom(0, unit); }
  size_t SearchReverse(char16_t unit) const;
  size_t SearchFrom(size_t start, char16_t unit) const;
  size_t SearchFrom(size_t start, const ZnUniString& text) const;
  size_t SearchReverseFrom(size_t start, char16_t unit) const;
  size_t SearchReverseFrom(size_t start, const ZnUniString& text) const;
  size_t SearchFirstNotIn(const ZnUniString& set) const;
  bool StartsWith(const ZnUniString& prefix) const;
  bool EndsWith(const ZnUniString& suffix) const;
  // Replaces every occurrence of `from`, left to right; gives their number.
  size_t Substitute(const ZnUniString& from, const ZnUniString& to);
  // The pieces between separators; an empty text is one empty piece.
  ZnDList<ZnUniString> Split(char16_t separator) const;

  static char16_t Lower(char16_t unit);
  static char16_t Upper(char16_t unit);
  void LowerCase();
  void UpperCase();
  bool MatchCaseless(const ZnUniString& other) const;

  // Leading decimal digits of any script, wrapping like unsigned arithmetic; no blanks are skipped.
  int32_t AsInt32() const;
  uint32_t AsUint32() const;
  uint16_t AsUint16() const;
  uint64_t AsUint64() const;

 private:
  ZnByteBuffer bytes_;
};

inline ZnUniString operator+(const char* left, const ZnUniString& right) { return ZnUniString(left) + right; }

template <>
struct std::hash<ZnUniString> {
  // Not noexcept: so the library's tables keep each key's hash, instead of working it out again when they pass the key.
  size_t operator()(const ZnUniString& text) const { return ZnKeyedHash(text.Bytes().Data(), 2 * text.Length()); }
};
