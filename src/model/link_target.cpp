#include "model/link_target.h"

#include "runtime/codeset.h"

std::optional<ZnByteBuffer> ZnLinkContents(const ZnUniString& target) {
  for (ZnEncoding encoding : {ZnCodeset::Latin1, ZnCodeset::Utf8}) {
    ZnByteBuffer contents = target.AsEncoding(encoding);
    if (ZnLinkTarget(contents) == target) return contents;
  }
  return std::nullopt;
}

std::optional<ZnUniString> ZnLinkTarget(const ZnByteBuffer& contents) {
  const bool utf8 = ZnUniString::IsValid(contents, ZnCodeset::Utf8);
  ZnUniString target = ZnUniString::CreateFrom(contents, utf8 ? ZnCodeset::Utf8 : ZnCodeset::Latin1);
  if (target.Search(u'\0') != ZnUniString::kNotFound) return std::nullopt;
  return target;
}
