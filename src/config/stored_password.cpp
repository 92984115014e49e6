// Stored passwords: hexadecimal digits of blocks encrypted with a key made from the user's name. That keeps them from
// being read over a shoulder, not from anyone who has this program.

#include <cstdio>

#include "config/smbnfs_config.h"
#include "crypto/encrypt.h"
#include "runtime/checksum.h"

namespace {

constexpr uint32_t kKeyMask = 0x5C3A96E1;
constexpr size_t kBlock = 8;
constexpr size_t kKeyBytes = 7;
// The first byte of the plain text is this plus the length of the password, whose bytes follow, filled up to blocks.
constexpr uint8_t kLengthBase = 'A';
constexpr size_t kLongestPassword = 0xFF - kLengthBase;
constexpr char kRefusal[] = "The password was not a correctly encoded string";
constexpr char kDigits[] = "0123456789ABCDEF";

ZnByteBuffer KeyOf(const ZnUniString& user) {
  char text[16];
  snprintf(text, sizeof text, "%07X", ZnCheckSum::Sum(user) ^ kKeyMask);
  return ZnByteBuffer(text, kKeyBytes);
}

// Runs `cipher` over each block by itself.
template <class Cipher>
ZnByteBuffer EachBlock(const ZnByteBuffer& text, const ZnUniString& user, Cipher cipher) {
  ZnByteBuffer key = KeyOf(user);
  ZnByteBuffer result;
  for (size_t i = 0; i < text.Length(); i += kBlock) result.Append(cipher(ZnByteBuffer(text.Data() + i, kBlock), key));
  return result;
}

// What isn't a digit counts as 0.
uint8_t DigitValue(uint8_t character) {
  if (character >= '0' && character <= '9') return static_cast<uint8_t>(character - '0');
  if (character >= 'A' && character <= 'F') return static_cast<uint8_t>(character - 'A' + 10);
  return 0;
}

// Two digits a byte, the high one first; a last odd one is the high digit of a byte of its own.
ZnByteBuffer FromHex(const ZnByteBuffer& digits) {
  ZnByteBuffer bytes;
  for (size_t i = 0; i < digits.Length(); i += 2) {
    uint8_t low = i + 1 < digits.Length() ? DigitValue(digits[i + 1]) : 0;
    bytes.Append(static_cast<uint8_t>(DigitValue(digits[i]) << 4 | low));
  }
  return bytes;
}

ZnUniString ToHex(const ZnByteBuffer& bytes) {
  ZnUniString digits;
  for (size_t i = 0; i < bytes.Length(); i++) {
    digits.Append(static_cast<char16_t>(kDigits[bytes[i] >> 4]));
    digits.Append(static_cast<char16_t>(kDigits[bytes[i] & 15]));
  }
  return digits;
}

}  // namespace

ZnUniString ZnSMBNFSConfig::DecryptString(ZnUniString& value, const ZnUniString& user) {
  if (value.IsEmpty()) return {};
  ZnByteBuffer stored = FromHex(value.AsEncoding(ZnCodeset::Latin1));
  if (stored.Length() % kBlock != 0) return kRefusal;
  ZnByteBuffer plain = EachBlock(stored, user, ZnEncrypt::DES_Decrypt);
  if (plain.IsEmpty()) {
    value = ZnUniString();
    return {};
  }
  bool fits = plain[0] >= kLengthBase && size_t{plain[0]} - kLengthBase < plain.Length();
  if (fits) value = ZnUniString::CreateFrom(plain.Data() + 1, size_t{plain[0]} - kLengthBase, ZnCodeset::Latin1);
  if (fits) value.MarkSecret();
  return fits ? ZnUniString() : ZnUniString(kRefusal);
}

ZnUniString ZnSMBNFSConfig::EncryptString(ZnUniString& value, const ZnUniString& user) {
  ZnByteBuffer password = value.AsEncoding(ZnCodeset::Latin1);
  if (password.Length() != value.Length()) return "The password has characters outside ISO 8859-1";
  if (password.Length() > kLongestPassword) return "The password is longer than 190 characters";
  ZnByteBuffer plain;
  plain.Append(static_cast<uint8_t>(kLengthBase + password.Length()));
  plain.Append(password);
  plain.SetLength((plain.Length() + kBlock - 1) / kBlock * kBlock);
  value = ToHex(EachBlock(plain, user, ZnEncrypt::DES_Encrypt));
  plain.Wipe();
  password.Wipe();
  return {};
}
