#include "smb/client/signing.h"

#include <algorithm>

#include "crypto/digest.h"
#include "smb/wire/header.h"

namespace {

using Values = ZnSMBClientValues;

constexpr size_t kAt = ZnSMBCHeader::kSignatureOffset;
constexpr size_t kSize = ZnSMBCHeader::kSignatureSize;

// The number stands where the signature will: four bytes, the lowest first, and zeros.
ZnDigest Code(const ZnByteBuffer& key, std::span<const uint8_t> message, uint32_t sequence,
              std::span<const uint8_t> rest = {}) {
  std::array<uint8_t, kSize> number{};
  for (unsigned i = 0; i < 4; i++) number[i] = static_cast<uint8_t>(sequence >> 8 * i);
  return ZnMd5({ZnBytesOf(key), message.first(kAt), number, message.subspan(kAt + kSize), rest});
}

}  // namespace

Values::Reason ZnSmbRefusalToSign(const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules) {
  if (rules.signing == ZnSigning::Never && server.mustsign) return Values::ErrMustSign;
  if (rules.signing == ZnSigning::Always && !server.cansign && !server.mustsign) return Values::ErrCantSign;
  return Values::ErrNone;
}

bool ZnSmbWantsToSign(const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules) {
  return server.mustsign || rules.signing == ZnSigning::Always;
}

void ZnSmbSigning::Start(const ZnByteBuffer& key) {
  key_ = key;
  key_.MarkSecret();
}

void ZnSmbSigning::Sign(ZnByteBuffer& message, uint32_t sequence, std::span<const uint8_t> rest) const {
  const ZnDigest code = Code(key_, ZnBytesOf(message), sequence, rest);
  std::copy_n(code.begin(), kSize, message.Writable() + kAt);
}

bool ZnSmbSigning::Verify(const uint8_t* message, size_t length, uint32_t sequence) const {
  if (length < ZnSMBCHeader::kSize) return false;
  const ZnDigest code = Code(key_, {message, length}, sequence);
  return std::equal(code.begin(), code.begin() + kSize, message + kAt);
}
