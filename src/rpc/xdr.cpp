#include "rpc/xdr.h"

size_t ZnRPCString::HowBig(const ZnUniString& text) {
  ZnXdrWriter counter;
  counter.String(text);
  return counter.Offset();
}

const uint8_t* ZnXdrReader::Text(uint32_t& length) {
  if (!U32be(length) || length > Remaining()) {
    Fail();
    return nullptr;
  }
  const uint8_t* bytes = Where();
  return Reserved(length) && Reserved(ZnXdrPadding(length)) ? bytes : nullptr;
}

bool ZnXdrReader::String(ZnUniString& text) {
  uint32_t length = 0;
  const uint8_t* bytes = Text(length);
  if (bytes) text = ZnUniString::CreateFrom(bytes, length, ZnRPCString::rpcenc, ZnRPCString::rpcopt);
  return bytes != nullptr;
}

bool ZnXdrReader::Name(ZnRPCName& name) {
  uint32_t length = 0;
  const uint8_t* bytes = Text(length);
  if (!bytes) return false;
  name.wellformed = ZnDecodeRpcName(bytes, length, name);
  if (!name.wellformed) name = ZnUniString();
  return true;
}
