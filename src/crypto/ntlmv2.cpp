#include "crypto/ntlmv2.h"

#include "crypto/digest.h"
#include "crypto/encrypt.h"

namespace {

void AppendZeros(ZnByteBuffer& bytes, size_t count) { bytes.SetLength(bytes.Length() + count); }

// The part of the NTLMv2 response behind its digest. (MS-NLMP 2.2.2.7)
ZnByteBuffer ClientBlob(const ZnNtlmv2Question& question) {
  ZnByteBuffer blob("\1\1", 2);  // version of the response, and the highest that the client knows
  AppendZeros(blob, 6);
  for (unsigned i = 0; i < 8; i++) blob.Append(static_cast<uint8_t>(question.time >> 8 * i));
  blob.Append(question.clientchallenge);
  AppendZeros(blob, 4);
  blob.Append(question.targetinfo);
  if (question.targetinfo.IsEmpty()) AppendZeros(blob, 4);  // the end of a list without any fact
  AppendZeros(blob, 4);
  return blob;
}

ZnByteBuffer Utf16(const ZnUniString& text) { return text.AsEncoding(ZnCodeset::Utf16Lsb); }

}  // namespace

ZnByteBuffer ZnNtlmv2Hash(const ZnUniString& user, const ZnUniString& domain, const ZnUniString& password) {
  ZnUniString secret(password), account(user);
  secret.MarkSecret();
  account.UpperCase();
  const ZnByteBuffer nthash = ZnEncrypt::UNIHash(Utf16(secret));
  return ZnSecretOf(ZnHmacMd5(nthash, {ZnBytesOf(Utf16(account)), ZnBytesOf(Utf16(domain))}));
}

ZnNtlmv2Answer ZnAnswerNtlmv2(const ZnByteBuffer& hash, const ZnNtlmv2Question& question) {
  const auto challenge = ZnBytesOf(question.challenge);
  const ZnByteBuffer blob = ClientBlob(question);
  ZnNtlmv2Answer answer;
  answer.lm = ZnSecretOf(ZnHmacMd5(hash, {challenge, ZnBytesOf(question.clientchallenge)}));
  answer.lm.Append(question.clientchallenge);
  answer.nt = ZnSecretOf(ZnHmacMd5(hash, {challenge, ZnBytesOf(blob)}));
  answer.sessionkey = ZnSecretOf(ZnHmacMd5(hash, {ZnBytesOf(answer.nt)}));
  answer.nt.Append(blob);
  return answer;
}
