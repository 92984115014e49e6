#include "crypto/digest.h"

#include <nettle/hmac.h>
#include <nettle/md4.h>
#include <nettle/md5.h>

namespace {

// `update` and `digest` are those of the context's kind.
template <class Context, class Update, class Finish>
ZnDigest Digest(Context& context, Update update, Finish finish, ZnPieces pieces) {
  ZnDigest digest;
  for (const auto& piece : pieces) update(&context, piece.size(), piece.data());
  finish(&context, digest.size(), digest.data());
  return digest;
}

}  // namespace

ZnByteBuffer ZnSecretOf(const ZnDigest& digest) {
  ZnByteBuffer secret(digest.data(), digest.size());
  secret.MarkSecret();
  return secret;
}

ZnDigest ZnMd4(ZnPieces pieces) {
  ZnWiped<md4_ctx> context;
  md4_init(&context);
  return Digest<md4_ctx>(context, md4_update, md4_digest, pieces);
}

ZnDigest ZnMd5(ZnPieces pieces) {
  ZnWiped<md5_ctx> context;
  md5_init(&context);
  return Digest<md5_ctx>(context, md5_update, md5_digest, pieces);
}

ZnDigest ZnHmacMd5(const ZnByteBuffer& key, ZnPieces pieces) {
  ZnWiped<hmac_md5_ctx> context;
  hmac_md5_set_key(&context, key.Length(), key.Data());
  return Digest<hmac_md5_ctx>(context, hmac_md5_update, hmac_md5_digest, pieces);
}
