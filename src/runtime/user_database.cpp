#include "runtime/user_database.h"

#include <grp.h>
#include <pwd.h>

#include <cstring>

#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"

namespace {

ZnUniString FromHost(const char* text) {
  if (!text) return {};
  return ZnUniString::CreateFrom(text, strlen(text), ZnSysEncoding::userdb, ZnSysEncoding::userdbopt);
}

const passwd* HostUser(const ZnUniString& name) {
  auto hostname = ZnHostText(name, ZnSysEncoding::userdb, ZnSysEncoding::userdbopt);
  return hostname ? getpwnam(ZnCStringOf(*hostname)) : nullptr;
}

}  // namespace

ZnUserGroupDatabase::UserEntry::UserEntry(const passwd& record, bool keeppassword)
    : name_(FromHost(record.pw_name)),
      uid_(record.pw_uid),
      gid_(record.pw_gid),
      home_(FromHost(record.pw_dir)),
      shell_(FromHost(record.pw_shell)),
      comment_(FromHost(record.pw_gecos)),
      password_(keeppassword ? FromHost(record.pw_passwd) : ZnUniString()),
      haspassword_(keeppassword) {}

ZnUniString ZnUserGroupDatabase::UserEntry::EncryptedPassword() const {
  return haspassword_ ? password_ : GetEncryptedPassword(name_);
}

ZnUserGroupDatabase::GroupEntry::GroupEntry(const group& record)
    : name_(FromHost(record.gr_name)), gid_(record.gr_gid) {
  for (char** member = record.gr_mem; member && *member; member++) members_.Append(FromHost(*member));
}

ZnUniString ZnUserGroupDatabase::GetEncryptedPassword(const ZnUniString& name) {
  const passwd* record = HostUser(name);
  return record ? FromHost(record->pw_passwd) : ZnUniString("x");
}

ZnUserCache::CacheMode ZnUserCache::cachemode_ = ZnUserCache::NoCache;

void ZnUserCache::InitialiseCache(int mode) {
  bool known = mode == WithoutPasswords || mode == WithPasswords;
  cachemode_ = known ? static_cast<CacheMode>(mode) : NoCache;
}

ZnUserCache::EntryRef ZnUserCache::Find(const ZnUniString& name) const {
  if (cachemode_ == NoCache) return nullptr;
  auto found = usernameentry_.find(name);
  return found == usernameentry_.end() ? nullptr : found->second;
}

ZnUserCache::EntryRef ZnUserCache::Find(uid_t number) const {
  if (cachemode_ == NoCache) return nullptr;
  auto found = usernumentry_.find(number);
  return found == usernumentry_.end() ? nullptr : found->second;
}

void ZnUserCache::Insert(const EntryRef& entry) {
  if (cachemode_ == NoCache) return;
  usernameentry_.emplace(entry->Name(), entry);
  usernumentry_.emplace(entry->UserNumber(), entry);
}

void ZnUserCache::Flush() {
  usernameentry_.clear();
  usernumentry_.clear();
}

ZnUserCache ZnUserDatabaseIterator::usercache;

ZnUserDatabaseIterator::~ZnUserDatabaseIterator() {
  if (walking_) endpwent();
}

bool ZnUserDatabaseIterator::SetCurrent(const passwd* record) {
  if (!record) {
    current_ = nullptr;
    return false;
  }
  bool keepPassword = ZnUserCache::cachemode() != ZnUserCache::WithoutPasswords;
  current_ = std::make_shared<const ZnUserCache::UserCacheEntry>(*record, keepPassword);
  return true;
}

bool ZnUserDatabaseIterator::Find(const ZnUniString& name) {
  current_ = usercache.Find(name);
  if (current_) return true;
  if (!SetCurrent(HostUser(name))) return false;
  usercache.Insert(current_);
  return true;
}

bool ZnUserDatabaseIterator::Find(uid_t number) {
  current_ = usercache.Find(number);
  if (current_) return true;
  if (!SetCurrent(getpwuid(number))) return false;
  usercache.Insert(current_);
  return true;
}

bool ZnUserDatabaseIterator::FindNameOrNumber(const ZnUniString& text) {
  bool isNumber = !text.IsEmpty() && text.SearchFirstNotIn("0123456789") == ZnUniString::kNotFound;
  return isNumber ? Find(text.AsUint32()) : Find(text);
}

void ZnUserDatabaseIterator::Reset() {
  setpwent();
  walking_ = true;
  SetCurrent(getpwent());
}

ZnUserDatabaseIterator& ZnUserDatabaseIterator::operator++() {
  SetCurrent(getpwent());
  return *this;
}

ZnGroupDatabaseIterator::~ZnGroupDatabaseIterator() {
  if (walking_) endgrent();
}

bool ZnGroupDatabaseIterator::SetCurrent(const group* record) {
  current_.reset();
  if (record) current_.emplace(*record);
  return record != nullptr;
}

bool ZnGroupDatabaseIterator::Find(const ZnUniString& name) {
  auto hostname = ZnHostText(name, ZnSysEncoding::userdb, ZnSysEncoding::userdbopt);
  return SetCurrent(hostname ? getgrnam(ZnCStringOf(*hostname)) : nullptr);
}

bool ZnGroupDatabaseIterator::Find(gid_t number) { return SetCurrent(getgrgid(number)); }

void ZnGroupDatabaseIterator::Reset() {
  setgrent();
  walking_ = true;
  SetCurrent(getgrent());
}

ZnGroupDatabaseIterator& ZnGroupDatabaseIterator::operator++() {
  SetCurrent(getgrent());
  return *this;
}
