#include "text.h"

#include <unistd.h>

#include <algorithm>

#include "config/encoding_name.h"
#include "rpc/xdr.h"
#include "runtime/host_text.h"

namespace {

// Latin-1 on both sides turns every byte into itself.
ZnEncoding host_encoding = ZnCodeset::Latin1;

bool Steers(char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }

}  // namespace

bool Text::UseEncoding(const std::string& name) {
  const ZnEncoding encoding = ZnEncodingOfName(name);
  if (encoding == ZnCodeset::Invalid) return false;
  ZnRPCString::rpcenc = encoding;
  host_encoding = ZnCodeset::Utf8;
  return true;
}

bool Text::FromHost(const std::string& bytes, ZnUniString& name) {
  name = ZnUniString::CreateFrom(bytes.data(), bytes.size(), host_encoding);
  return ZnUniString::IsValid(ZnByteBuffer(bytes.data(), bytes.size()), host_encoding) &&
         ZnHostText(name, ZnRPCString::rpcenc, ZnRPCString::rpcopt).has_value();
}

std::string Text::ToHost(const ZnUniString& name) {
  const ZnByteBuffer bytes = name.AsEncoding(host_encoding);
  return {reinterpret_cast<const char*>(bytes.Data()), bytes.Length()};
}

std::string Text::Printable(std::string text) {
  static const bool terminal = isatty(STDOUT_FILENO) == 1;
  if (terminal) std::replace_if(text.begin(), text.end(), Steers, '?');
  return text;
}
