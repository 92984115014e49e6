#include "config/record_reader.h"

// The keys of the daemon itself stand outside of those of users, and have no names to give way to "*".
template <class Value, class... Bounds>
bool ZnRecordReader::Get(const char* key, Value& value, Bounds... bounds) const {
  if (user_.IsEmpty())
    return ZnSMBNFSConfig::GetValue("nfsserver/" + ZnUniString(key), {}, {}, {}, {}, value, bounds...);
  return ZnSMBNFSConfig::GetValue(ZnSMBNFSConfig::UserKeys(), user_, machine_, share_, "/" + ZnUniString(key), value,
                                  bounds...);
}

// What the profile says was checked against its range before.
void ZnRecordReader::Read(const char* key, int32_t& number) const { Get(key, number, INT32_MIN, INT32_MAX); }

void ZnRecordReader::Read(const char* key, bool& flag) const {
  int32_t number = 0;
  Read(key, number);
  flag = number == 1;
}

void ZnRecordReader::Read(const char* key, ZnUniString& text) const { Get(key, text); }

void ZnRecordReader::Read(const char* key, ZnDList<ZnUniString>& texts) const {
  texts.Flush();
  Get(key, texts, uint32_t{0}, uint32_t{999});
}

ZnDList<ZnUniString> ZnRecordReader::Texts(const char* key) const {
  ZnDList<ZnUniString> texts;
  Read(key, texts);
  return texts;
}

ZnUniString ZnRecordReader::Text(const char* key, const ZnUniString& preset) const {
  ZnUniString text = preset;
  Read(key, text);
  return text;
}

ZnUniString ZnRecordReader::UserName(const char* key) const {
  ZnUniString name = Text(key, "*");
  return name == "*" ? user_ : name;
}

void ZnRecordReader::Owner(const ZnUserGroupDatabase::UserEntry& account, int32_t& uid, int32_t& gid) {
  if (uid < 0) uid = static_cast<int32_t>(account.UserNumber());
  if (gid < 0) gid = static_cast<int32_t>(account.GroupNumber());
}
