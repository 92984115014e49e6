#include "runtime/unix_error.h"

#include <cstring>

ZnUniString ZnUnixError::Reason() const { return code_ == 0 ? ZnUniString() : ZnUniString(strerror(code_)); }

ZnUniString ZnUnixError::Text() const {
  if (IsEmpty()) return {};
  return call_ + ("(" + arguments_ + "): ") + Reason();
}
