#pragma once
// Names of things on servers, as texts.

#include "runtime/uni_string.h"

struct ZnSMBClientUtils {
  // Every "/" becomes a backslash.
  static void NormaliseSlashes(ZnUniString& path);
  // "\\server\share" and then `path`, normalised. False, leaving `result` alone, without a server or a share.
  static bool EncodeUNC(const ZnUniString& server, const ZnUniString& share, const ZnUniString& path,
                        ZnUniString& result);
};
