#pragma once
// Where text enters and leaves the daemon: 43 encodings, by number and by name. A conversion never fails: what has no
// code is dropped or, with the option `Recoverable`, written as an escape that the way back understands. Only
// validation reports anything.

#include <cstddef>
#include <cstdint>

#include "runtime/byte_buffer.h"
#include "runtime/codeset.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

class ZnConverter;

class ZnCodesetConverter {
 public:
  enum class ErrorKind : uint8_t {
    NoMapping = 0,
    CutOff = 1,  // the input ends inside a sequence, or (UTF-16) with an odd byte
    InvalidLead = 2,
    InvalidTrail = 3,  // also every bad UTF-8 sequence, reported on its first byte
  };
  struct ValidationError {
    size_t position;  // in bytes for ValidateFrom, in characters for ValidateTo
    uint32_t value;   // the bytes of the sequence as a big-endian number, or the character
    ErrorKind kind;
    bool operator==(const ValidationError&) const = default;
  };
  struct ValidationInfo {
    size_t characters = 0;  // what the conversion reads or yields
    size_t bytes = 0;
    ZnDList<ValidationError> errors;
  };

  // The escape byte R of recoverable conversions: R and four hexadecimal digits stand for a character, two R for R
  // itself.
  static uint8_t recoverchar;

  // By name in any letter case: the number, or ZnCodeset::Invalid. A null name is unknown.
  static ZnEncoding GetEncoding(const char* name);
  // The option's bit, or ZnCodeset::UnknownOption, which no conversion looks at.
  static unsigned GetEncOption(const char* name);
  // Canonical name; null for a number of no encoding.
  static const char* GetEncodingName(ZnEncoding encoding);
  // The name of the encoding that is a locale's name ("EN_US"); null when it has none.
  static const char* GetEncodingLocale(ZnEncoding encoding);
  // For what nl_langinfo(CODESET) says: the first name in the table that it begins with. Latin-1 for anything unknown.
  static ZnEncoding GetEncodingFromLocale(const char* codeset);
  // Numbers of no encoding give the invalid converter, whose results are empty.
  static const ZnConverter& GetConverter(ZnEncoding encoding);
  // Fills the registries of names; every look-up by name does it by itself.
  static void PreRegister();

  static void ValidateFrom(const void* bytes, size_t length, ValidationInfo& info, ZnEncoding encoding,
                           unsigned options);
  static void ValidateFrom(const ZnByteBuffer& bytes, ValidationInfo& info, ZnEncoding encoding, unsigned options);
  static void ValidateTo(const ZnUniString& text, ValidationInfo& info, ZnEncoding encoding, unsigned options);

  // Append canonical names, by number.
  static void ListSupportedEncodings(ZnDList<ZnUniString>& list);
  static void ListSupportedEncOptions(ZnDList<ZnUniString>& list);

  // Reads four upper-case hexadecimal digits at `position` of `length` bytes and moves behind them. False, moving
  // nothing, when there are fewer bytes or other ones.
  static bool Recover(const uint8_t* bytes, size_t length, size_t& position, char16_t& unit);
  // Writes the four digits of a character; `count` is set to 4.
  static void MakeRecover(char16_t unit, uint8_t* bytes, size_t& count);
};

// One encoding's conversions. Stateless; lives as long as the process.
class ZnConverter {
 public:
  using ValidationInfo = ZnCodesetConverter::ValidationInfo;

  virtual ~ZnConverter() = default;
  virtual ZnByteBuffer To(const ZnUniString& text, unsigned options) const = 0;
  virtual ZnUniString From(const uint8_t* bytes, size_t length, unsigned options) const = 0;
  virtual void ValidateTo(const ZnUniString& text, ValidationInfo& info, unsigned options) const = 0;
  virtual void ValidateFrom(const uint8_t* bytes, size_t length, ValidationInfo& info, unsigned options) const = 0;
};
