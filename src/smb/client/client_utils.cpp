#include "smb/client/client_utils.h"

void ZnSMBClientUtils::NormaliseSlashes(ZnUniString& path) { path.Substitute("/", "\\"); }

bool ZnSMBClientUtils::EncodeUNC(const ZnUniString& server, const ZnUniString& share, const ZnUniString& path,
                                 ZnUniString& result) {
  if (server.IsEmpty() || share.IsEmpty()) return false;
  ZnUniString rest = path;
  NormaliseSlashes(rest);
  result = "\\\\" + server + "\\" + share + rest;
  return true;
}
