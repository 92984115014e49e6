#include "crypto/encrypt.h"

#include "crypto/des.h"
#include "crypto/message_digest.h"
#include "runtime/random.h"

namespace {

constexpr size_t kPasswordSize = 14;  // of LAN manager
constexpr size_t kHashSize = 16;

// `length` bytes: cut, or filled up with zeros.
ZnByteBuffer Fit(const ZnByteBuffer& bytes, size_t length) {
  ZnByteBuffer fitted(bytes.Data(), bytes.Length() < length ? bytes.Length() : length);
  fitted.SetLength(length);
  return fitted;
}

// Takes as long for a near miss as for a far one.
bool Equal(const ZnByteBuffer& a, const ZnByteBuffer& b) {
  if (a.Length() != b.Length()) return false;
  unsigned difference = 0;
  for (size_t i = 0; i < a.Length(); i++) difference |= a[i] ^ b[i];
  return difference == 0;
}

}  // namespace

ZnByteBuffer ZnEncrypt::Set_C8key() { return ZnRandom::RndBuffer(8); }

ZnByteBuffer ZnEncrypt::MSHash(const ZnByteBuffer& text, bool) {
  ZnByteBuffer password = Fit(text, kPasswordSize);
  ZnByteBuffer hash = ZnDES::hashfn(password);
  password.Wipe();
  return hash;
}

ZnByteBuffer ZnEncrypt::UNIHash(const ZnByteBuffer& text) { return MD4_Encode(text); }

void ZnEncrypt::Password_Hash(const ZnByteBuffer& text, ZnByteBuffer& lmhash, ZnByteBuffer& nthash) {
  lmhash = MSHash(text, true);
  nthash = UNIHash(text);
}

void ZnEncrypt::Encrypt_hash(const ZnByteBuffer& hash, const ZnByteBuffer& challenge, ZnByteBuffer& response) {
  ZnByteBuffer keys = Fit(hash, 21);  // three DES keys
  ZnDES::enc_password(keys, challenge, response);
  keys.Wipe();
}

bool ZnEncrypt::CheckNTLMPassword(const ZnByteBuffer& hash, const ZnByteBuffer& response,
                                  const ZnByteBuffer& challenge) {
  ZnByteBuffer expected;
  Encrypt_hash(hash, challenge, expected);
  return Equal(expected, response);
}

bool ZnEncrypt::compare_pwd(const ZnByteBuffer& lmhash, const ZnByteBuffer& nthash, const ZnByteBuffer& response,
                            const ZnByteBuffer& challenge) {
  return CheckNTLMPassword(lmhash, response, challenge) || CheckNTLMPassword(nthash, response, challenge);
}

bool ZnEncrypt::compare_pwd_low(const ZnByteBuffer& stored, const ZnByteBuffer&, const ZnByteBuffer& password) {
  if (password.Length() >= kHashSize && Equal(password, stored)) return true;
  ZnByteBuffer hash = MSHash(password, true);
  bool same = Equal(hash, stored);
  hash.Wipe();
  return same;
}

ZnByteBuffer ZnEncrypt::DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  return ZnDES::Encrypt_Word(block, key);
}

ZnByteBuffer ZnEncrypt::DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  return ZnDES::Decrypt_Word(block, key);
}

ZnByteBuffer ZnEncrypt::Triple_DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                           const ZnByteBuffer& k3) {
  return ZnDES::Triple_DES_Encrypt(block, k1, k2, k3);
}

ZnByteBuffer ZnEncrypt::Triple_DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                           const ZnByteBuffer& k3) {
  return ZnDES::Triple_DES_Decrypt(block, k1, k2, k3);
}

ZnByteBuffer ZnEncrypt::MD4_Encode(const ZnByteBuffer& buffer) { return ZnMessageDigest::MDEncode(buffer, 4); }

ZnByteBuffer ZnEncrypt::MD5_Encode(const ZnByteBuffer& buffer) { return ZnMessageDigest::MDEncode(buffer, 5); }
