#include "smb/client/logon_fields.h"

#include "crypto/digest.h"
#include "crypto/encrypt.h"
#include "crypto/entropy.h"
#include "crypto/ntlmv2.h"

namespace {

ZnUniString UpperCase(const ZnUniString& secret) {
  ZnUniString upper(secret);
  upper.UpperCase();
  return upper;
}

void ClearText(ZnSmbLogonFields& fields, const ZnUniString& password) {
  fields.first = UpperCase(password).AsEncoding(ZnCodeset::Ascii);
  fields.first.MarkSecret();
  fields.first.Append(uint8_t{0});
}

void Lm(ZnSmbLogonFields& fields, const ZnUniString& password, const ZnByteBuffer& challenge) {
  fields.first =
      ZnEncrypt::Encrypt_hash(ZnEncrypt::MSHash(UpperCase(password).AsEncoding(ZnCodeset::Ascii)), challenge);
}

// The NT response stands in both fields: the other one would give the password to whoever listens.
void Ntlm(ZnSmbLogonFields& fields, const ZnUniString& password, const ZnByteBuffer& challenge) {
  const ZnByteBuffer hash = ZnEncrypt::UNIHash(password.AsEncoding(ZnCodeset::Utf16Lsb));
  fields.first = fields.second = ZnEncrypt::Encrypt_hash(hash, challenge);
  fields.signingkey = ZnSecretOf(ZnMd4({ZnBytesOf(hash)}));
}

void Ntlmv2(ZnSmbLogonFields& fields, const ZnSmbCredentials& who, const ZnSMBServerInfo& server, uint64_t now) {
  const uint64_t time = server.systemtime == 0 ? now : server.systemtime;
  const ZnNtlmv2Answer answer =
      ZnAnswerNtlmv2(ZnNtlmv2Hash(who.user, who.domain, who.password), {server.challenge, ZnDrawSecret(8), time, {}});
  fields.first = answer.lm;
  fields.second = answer.nt;
  fields.signingkey = answer.sessionkey;
}

}  // namespace

ZnSmbLogonFields::ZnSmbLogonFields(ZnSmbLogonForm form, const ZnSmbCredentials& who, const ZnSMBServerInfo& server,
                                   uint64_t now) {
  ZnUniString password(who.password);
  password.MarkSecret();
  if (form == ZnSmbLogonForm::ClearText) ClearText(*this, password);
  if (form == ZnSmbLogonForm::Lm) Lm(*this, password, server.challenge);
  if (form == ZnSmbLogonForm::Ntlm) Ntlm(*this, password, server.challenge);
  if (form == ZnSmbLogonForm::Ntlmv2) Ntlmv2(*this, who, server, now);
  if (!signingkey.IsEmpty()) signingkey.Append(second);
}
