#pragma once
// DES and triple DES, one block of 8 bytes at a time (FIPS 46, ECB), and what LAN manager makes of them. Keys are 7
// bytes except where it says 8. Bytes that a short buffer lacks count as zero; those it has too many are ignored.

#include <array>

#include "crypto/wipe.h"
#include "runtime/byte_buffer.h"

// The expanded key: 48 bits for each of the 16 rounds.
struct kf_struct {
  std::array<uint64_t, 16> rounds{};

  kf_struct() = default;
  kf_struct(const kf_struct&) = delete;
  kf_struct& operator=(const kf_struct&) = delete;
  ~kf_struct() { ZnWipe(rounds); }
};

class ZnDES {
 public:
  static bool encryptdata;                           // the direction of des_encrypt, ecb_encrypt and Crypto_Word
  static const std::array<uint8_t, 256> odd_parity;  // each byte with its lowest bit set so that the bits' sum is odd

  // Replaces each byte through odd_parity.
  static void set_odd_parity(ZnByteBuffer& block);
  // The 8-byte key: 7 key bits at the top of each byte, and odd parity below.
  static ZnByteBuffer str_to_key(const ZnByteBuffer& key7);
  // Expands an 8-byte key; parity bits aren't looked at.
  static void set_key(const ZnByteBuffer& key8, kf_struct& schedule);
  // Blocks as numbers, first byte highest.
  static void des_encrypt(uint64_t in, uint64_t& out, const kf_struct& schedule);
  static ZnByteBuffer ecb_encrypt(const ZnByteBuffer& block, const kf_struct& schedule);

  static ZnByteBuffer Crypto_Word(const ZnByteBuffer& block, const ZnByteBuffer& key);
  static ZnByteBuffer Encrypt_Word(const ZnByteBuffer& block, const ZnByteBuffer& key);
  static ZnByteBuffer Decrypt_Word(const ZnByteBuffer& block, const ZnByteBuffer& key);
  // Encrypts with k1, decrypts with k2, encrypts with k3; and the inverse.
  static ZnByteBuffer Triple_DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                         const ZnByteBuffer& k3);
  static ZnByteBuffer Triple_DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                         const ZnByteBuffer& k3);

  // The LAN manager hash of a password of 14 bytes: 16 bytes.
  static ZnByteBuffer hashfn(const ZnByteBuffer& text14);
  // The response to an 8-byte challenge: the challenge encrypted with each third of the padded hash, 24 bytes.
  static void enc_password(const ZnByteBuffer& hash21, const ZnByteBuffer& challenge, ZnByteBuffer& response);
};
