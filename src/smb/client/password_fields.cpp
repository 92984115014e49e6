#include "smb/client/password_fields.h"

#include "crypto/encrypt.h"

namespace {

ZnByteBuffer ClearText(const ZnUniString& password) {
  ZnByteBuffer text = password.AsEncoding(ZnCodeset::Ascii);
  text.Append(uint8_t{0});
  return text;
}

// Answers the challenge with one of the two hashes of `text`. The text and the hashes are overwritten.
ZnByteBuffer Response(ZnByteBuffer text, const ZnPacket& challenge, bool nt) {
  ZnByteBuffer lmhash, nthash, response;
  ZnEncrypt::Password_Hash(text, lmhash, nthash);
  ZnEncrypt::Encrypt_hash(nt ? nthash : lmhash, challenge, response);
  text.Wipe();
  lmhash.Wipe();
  nthash.Wipe();
  return response;
}

// A copy of its own, to be overwritten.
ZnUniString UpperCased(const ZnUniString& password) {
  ZnUniString upper(password.View());
  upper.UpperCase();
  return upper;
}

}  // namespace

ZnSMBPasswordFields::ZnSMBPasswordFields(const ZnUniString& user, const ZnUniString& password,
                                         const ZnSMBServerInfo& server) {
  ZnUniString upper = UpperCased(password);
  if (!server.encryptedpasswords) {
    first = ClearText(upper);
  } else if (!user.IsEmpty() || !password.IsEmpty()) {  // else anonymous: no passwords at all
    first = Response(upper.AsEncoding(ZnCodeset::Ascii), server.challenge, false);
    second = Response(password.AsEncoding(ZnCodeset::Utf16Lsb), server.challenge, true);
  }
  upper.Wipe();
}

ZnSMBPasswordFields::~ZnSMBPasswordFields() {
  first.Wipe();
  second.Wipe();
}

ZnPacket ZnSMBTreePassword(const ZnUniString& password, const ZnSMBServerInfo& server) {
  if (server.securitylevel == ZnSMBClientValues::SecLevelUser) return ZnPacket("", 1);  // the user is known already
  if (!server.encryptedpasswords) return ClearText(password);
  return Response(password.AsEncoding(ZnCodeset::Ascii), server.challenge, false);
}
