#pragma once
// Names of encodings as the configuration gives them.

#include "runtime/uni_string.h"

// The encoding of a name in any letter case; ZnCodeset::Invalid for an unknown one.
inline ZnEncoding ZnEncodingOfName(const ZnUniString& name) {
  ZnByteBuffer ascii = name.AsEncoding(ZnCodeset::Ascii);
  return ZnUniString::GetEncoding(reinterpret_cast<const char*>(ascii.Data()));
}
