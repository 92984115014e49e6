#pragma once
// Digests of 16 bytes over pieces that count as one run of bytes. None of them keeps a copy of what it was given.

#include <array>
#include <initializer_list>
#include <span>

#include "crypto/wipe.h"
#include "runtime/byte_buffer.h"

// Wiped when it goes: some are keys, or prove one.
struct ZnDigest : std::array<uint8_t, 16> {
  ZnDigest() = default;
  ZnDigest(const ZnDigest&) = default;
  ZnDigest& operator=(const ZnDigest&) = default;
  ~ZnDigest() { ZnWipe(static_cast<std::array<uint8_t, 16>&>(*this)); }
};
using ZnPieces = std::initializer_list<std::span<const uint8_t>>;

inline std::span<const uint8_t> ZnBytesOf(const ZnByteBuffer& buffer) { return {buffer.Data(), buffer.Length()}; }
// A digest that is a key, or makes one.
ZnByteBuffer ZnSecretOf(const ZnDigest& digest);

ZnDigest ZnMd4(ZnPieces pieces);                               // RFC 1320
ZnDigest ZnMd5(ZnPieces pieces);                               // RFC 1321
ZnDigest ZnHmacMd5(const ZnByteBuffer& key, ZnPieces pieces);  // RFC 2104
