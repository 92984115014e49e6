// What the keys themselves tell: which users there are, and which shares of a machine.

#include "config/smbnfs_config.h"

ZnUniString ZnSMBNFSConfig::ListUsers(ZnDList<ZnUniString>& list) {
  if (!nfsdb_) return {};
  ZnDList<ZnUniString> names;
  nfsdb_->ListKeys("nfsserver/shares/smb", names);
  for (const ZnUniString& name : names) {
    if (name != "*") list.Append(name);
  }
  return {};
}

ZnUniString ZnSMBNFSConfig::GetShareList(const ZnUniString& user, const ZnUniString& machine,
                                         ZnDList<ZnUniString>& list) {
  if (!nfsdb_) return {};
  ZnUniString below = UserKeys() + user + "/" + machine + "/";
  ZnDList<ZnUniString> keys;
  nfsdb_->ListKeys({}, keys);
  for (const ZnUniString& key : keys) {
    if (!key.StartsWith(below)) continue;
    ZnUniString candidate = key.SubString(below.Length());
    size_t slash = candidate.SearchReverse(u'/');
    if (slash != ZnUniString::kNotFound) candidate.Truncate(slash);
    if (candidate != "password" && candidate != "winname") list.Append(candidate);
  }
  return {};
}
