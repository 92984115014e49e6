#include "rpc/xdr.h"

size_t ZnRPCString::HowBig(const ZnUniString& text) {
  ZnXdrWriter counter;
  counter.String(text);
  return counter.Offset();
}

bool ZnXdrReader::String(ZnUniString& text) {
  uint32_t length = 0;
  if (!U32be(length) || length > Remaining()) return Fail();
  const uint8_t* bytes = Where();
  if (!Reserved(length) || !Reserved(ZnXdrPadding(length))) return false;
  text = ZnUniString::CreateFrom(bytes, length, ZnRPCString::rpcenc, ZnRPCString::rpcopt);
  return true;
}
