#include "runtime/os_stream.h"

#include <ctime>

ZnOStream& ZnOStream::Unsigned(uint64_t number) { return *this << ZnUniString::CreateFromUnsigned(number); }

ZnOStream& ZnOStream::Signed(int64_t number) {
  if (number >= 0) return Unsigned(static_cast<uint64_t>(number));
  return *this << "-" << (uint64_t{0} - static_cast<uint64_t>(number));
}

ZnOStream& ZnOStream::operator<<(const ZnTimeVal& time) {
  char text[sizeof("2147485547/12/31 23:59:59.999")];
  const time_t seconds = time.seconds;
  tm local = {};
  localtime_r(&seconds, &local);
  size_t length = strftime(text, sizeof(text), "%Y/%m/%d %H:%M:%S", &local);
  snprintf(text + length, sizeof(text) - length, ".%03u", time.microseconds / 1000 % 1000);
  return *this << text;
}

void ZnOFStream::Put(const ZnUniString& text) {
  const ZnByteBuffer bytes = text.AsEncoding(encoding_, options_);
  fwrite(bytes.Data(), 1, bytes.Length(), file_);
}
