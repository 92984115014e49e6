#include "rpc/name_encoding.h"

#include <algorithm>

#include "rpc/xdr.h"
#include "runtime/codeset_converter.h"

namespace {

constexpr unsigned kEscaped = ZnCodeset::Recoverable;

ZnByteBuffer Encode(const ZnUniString& name, unsigned options = 0) {
  return name.AsEncoding(ZnRPCString::rpcenc, options);
}

ZnUniString Decode(const ZnByteBuffer& bytes, unsigned options = 0) {
  return ZnUniString::CreateFrom(bytes, ZnRPCString::rpcenc, options);
}

bool HasEscape(const ZnByteBuffer& bytes) {
  return std::find(bytes.Data(), bytes.Data() + bytes.Length(), ZnCodesetConverter::recoverchar) !=
         bytes.Data() + bytes.Length();
}

// Whether a name has to be written with escapes: it isn't held whole, or its plain form is the escaped form of a name
// that has to be. Each round is about a shorter name.
bool NeedsEscapes(ZnUniString name) {
  while (true) {
    const ZnByteBuffer plain = Encode(name);
    if (Decode(plain) != name) return true;
    if (!HasEscape(plain)) return false;
    ZnUniString meant = Decode(plain, kEscaped);
    if (meant == name || Encode(meant, kEscaped) != plain) return false;
    name = std::move(meant);
  }
}

// Whether the bytes are the ASCII text that they look like in encodings of RPC that keep ASCII as it is, with no escape
// in it: most names, which need no look at what the encoding can't hold.
bool IsPlain(const uint8_t* bytes, size_t length) {
  const ZnEncoding encoding = ZnRPCString::rpcenc;
  if (encoding != ZnCodeset::Latin1 && encoding != ZnCodeset::Utf8) return false;
  return std::all_of(bytes, bytes + length, [](uint8_t byte) {
    return byte >= ' ' && byte < 0x7F && byte != ZnCodesetConverter::recoverchar;
  });
}

}  // namespace

ZnByteBuffer ZnEncodeRpcName(const ZnUniString& name) { return Encode(name, NeedsEscapes(name) ? kEscaped : 0); }

bool ZnDecodeRpcName(const uint8_t* bytes, size_t length, ZnUniString& name) {
  name = ZnUniString();
  if (length == 0) return true;
  if (IsPlain(bytes, length)) {
    name = ZnUniString::CreateFrom(bytes, length, ZnCodeset::Latin1);
    return true;
  }
  const ZnByteBuffer form(bytes, length);
  if (HasEscape(form)) {
    name = Decode(form, kEscaped);
    if (Encode(name, kEscaped) == form && NeedsEscapes(name)) return true;
  }
  name = Decode(form);
  return Encode(name) == form;
}
