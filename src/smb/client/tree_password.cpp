#include "smb/client/tree_password.h"

#include "crypto/encrypt.h"

using Values = ZnSMBClientValues;

namespace {

// Only the newest dialect knows the NT response.
bool GivesLm(const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules) {
  return server.dialect != Values::DialectNT || rules.minauth == ZnMinAuth::Lm;
}

// A handle of a text that leaves nothing behind.
ZnUniString Secret(const ZnUniString& password) {
  ZnUniString secret(password);
  secret.MarkSecret();
  return secret;
}

ZnByteBuffer ClearText(const ZnUniString& secret) {
  ZnByteBuffer text = secret.AsEncoding(ZnCodeset::Ascii);
  text.MarkSecret();
  text.Append(uint8_t{0});
  return text;
}

ZnByteBuffer NtResponse(const ZnUniString& secret, const ZnSMBServerInfo& server) {
  return ZnEncrypt::Encrypt_hash(ZnEncrypt::UNIHash(secret.AsEncoding(ZnCodeset::Utf16Lsb)), server.challenge);
}

ZnByteBuffer LmResponse(const ZnUniString& secret, const ZnSMBServerInfo& server) {
  return ZnEncrypt::Encrypt_hash(ZnEncrypt::MSHash(secret.AsEncoding(ZnCodeset::Ascii)), server.challenge);
}

}  // namespace

Values::Reason ZnSMBRefusalToSend(const ZnUniString& password, const ZnSMBServerInfo& server,
                                  const ZnSMBLogonRules& rules) {
  if (password.IsEmpty()) return Values::ErrNone;
  if (!server.encryptedpasswords) return rules.cleartext ? Values::ErrNone : Values::ErrClearPassword;
  const ZnMinAuth strongest = server.dialect == Values::DialectNT ? ZnMinAuth::Ntlm : ZnMinAuth::Lm;
  return strongest < rules.minauth ? Values::ErrWeakLogon : Values::ErrNone;
}

ZnPacket ZnSMBTreePassword(const ZnUniString& password, const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules) {
  if (server.securitylevel == Values::SecLevelUser) return ZnPacket("", 1);  // the user is known already
  const ZnUniString secret = Secret(password);
  if (!server.encryptedpasswords) return ClearText(secret);
  return GivesLm(server, rules) ? LmResponse(secret, server) : NtResponse(secret, server);
}
