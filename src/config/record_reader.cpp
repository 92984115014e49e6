#include "config/record_reader.h"

ZnDList<ZnUniString> ZnRecordReader::List(const ZnUniString& key) const {
  ZnDList<ZnUniString> list;
  ZnSMBNFSConfig::GetValue(ZnSMBNFSConfig::UserKeys(), user_, machine_, share_, key, list, 0, 999);
  return list;
}

ZnUniString ZnRecordReader::Text(const ZnUniString& key, const ZnUniString& preset) const {
  ZnUniString text = preset;
  ZnSMBNFSConfig::GetValue(ZnSMBNFSConfig::UserKeys(), user_, machine_, share_, key, text);
  return text;
}

ZnUniString ZnRecordReader::UserName(const ZnUniString& key) const {
  ZnUniString name = Text(key, "*");
  return name == "*" ? user_ : name;
}

int32_t ZnRecordReader::Number(const ZnUniString& key, int32_t minimum, int32_t maximum, int32_t preset) const {
  int32_t number = preset;
  ZnSMBNFSConfig::GetValue(ZnSMBNFSConfig::UserKeys(), user_, machine_, share_, key, number, minimum, maximum);
  return number;
}

ZnUniString ZnRecordReader::Password(ZnUniString& password) const {
  ZnUniString stored = Text("/password");
  ZnUniString error = ZnSMBNFSConfig::DecryptString(stored, user_);
  if (error.IsEmpty()) password = stored;
  return error;
}

void ZnRecordReader::Owner(const ZnUserGroupDatabase::UserEntry& account, int32_t& uid, int32_t& gid) const {
  uid = Number("/uid", -1, 65536, -1);
  if (uid < 0) uid = static_cast<int32_t>(account.UserNumber());
  gid = Number("/gid", -1, 65536, -1);
  if (gid < 0) gid = static_cast<int32_t>(account.GroupNumber());
}
