#include "crypto/encrypt.h"

#include <nettle/arcfour.h>
#include <nettle/des.h>

#include <algorithm>

#include "crypto/digest.h"
#include "crypto/wipe.h"

namespace {

constexpr size_t kBlock = DES_BLOCK_SIZE;
constexpr size_t kKeyBytes = 7;

// What the definition of the LAN manager hash encrypts.
constexpr char kLanManagerText[] = "KGS!@#$%";

// `Size` bytes of a buffer from `start` on; those that it hasn't got are zero.
template <size_t Size>
struct Part {
  Part(const ZnByteBuffer& buffer, size_t start) {
    if (start >= buffer.Length()) return;
    std::copy_n(buffer.Data() + start, std::min(Size, buffer.Length() - start), bytes);
  }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
  ~Part() { ZnWipe(bytes); }
  uint8_t bytes[Size] = {};
};

// Each of the key's bytes has 7 of its 56 bits, above a bit of parity, which nobody looks at.
void SetKey(des_ctx& context, const Part<kKeyBytes>& key) {
  uint8_t spread[DES_KEY_SIZE];
  for (size_t i = 0; i < DES_KEY_SIZE; i++) {
    const unsigned before = i > 0 ? key.bytes[i - 1] : 0U, here = i < kKeyBytes ? key.bytes[i] : 0U;
    spread[i] = static_cast<uint8_t>((before << 8 | here) >> i & 0xFE);
  }
  des_set_key(&context, spread);  // says whether the key is a weak one; passwords may make such
  ZnWipe(spread);
}

// `direction` encrypts or decrypts.
void AppendDes(decltype(des_encrypt)* direction, const Part<kBlock>& block, const Part<kKeyBytes>& key,
               ZnByteBuffer& secret) {
  uint8_t result[kBlock];
  ZnWiped<des_ctx> context;
  SetKey(context, key);
  direction(&context, kBlock, result, block.bytes);
  secret.MarkSecret();
  secret.Append(result, kBlock);
  ZnWipe(result);
}

}  // namespace

ZnByteBuffer ZnEncrypt::MSHash(const ZnByteBuffer& text) {
  const ZnByteBuffer fixed(kLanManagerText, kBlock);
  ZnByteBuffer hash;
  for (size_t half = 0; half < 2; half++) AppendDes(des_encrypt, {fixed, 0}, {text, half * kKeyBytes}, hash);
  return hash;
}

ZnByteBuffer ZnEncrypt::UNIHash(const ZnByteBuffer& text) { return ZnSecretOf(ZnMd4({ZnBytesOf(text)})); }

ZnByteBuffer ZnEncrypt::Encrypt_hash(const ZnByteBuffer& hash, const ZnByteBuffer& challenge) {
  ZnByteBuffer response;
  for (size_t third = 0; third < 3; third++) {
    AppendDes(des_encrypt, {challenge, 0}, {hash, third * kKeyBytes}, response);
  }
  return response;
}

ZnByteBuffer ZnEncrypt::DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  ZnByteBuffer result;
  AppendDes(des_encrypt, {block, 0}, {key, 0}, result);
  return result;
}

ZnByteBuffer ZnEncrypt::DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  ZnByteBuffer result;
  AppendDes(des_decrypt, {block, 0}, {key, 0}, result);
  return result;
}

ZnByteBuffer ZnEncrypt::Arcfour(const ZnByteBuffer& bytes, const ZnByteBuffer& key) {
  ZnWiped<arcfour_ctx> context;
  arcfour_set_key(&context, key.Length(), key.Data());
  ZnByteBuffer result;
  result.SetLength(bytes.Length());
  result.MarkSecret();
  arcfour_crypt(&context, result.Length(), result.Writable(), bytes.Data());
  return result;
}
