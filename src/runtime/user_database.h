#pragma once
// The users and groups of the host, with a cache in front of the look-ups of users. Nothing expires the cache by
// itself: a change of the host's database shows after FlushUserCache.

#include <sys/types.h>

#include <memory>
#include <optional>
#include <unordered_map>

#include "runtime/list.h"
#include "runtime/uni_string.h"

struct group;
struct passwd;

class ZnUserGroupDatabase {
 public:
  class UserEntry {
   public:
    // From the host's record; the password is left out unless `keeppassword`.
    UserEntry(const passwd& record, bool keeppassword);

    const ZnUniString& Name() const { return name_; }
    uid_t UserNumber() const { return uid_; }
    gid_t GroupNumber() const { return gid_; }
    const ZnUniString& HomeDirectory() const { return home_; }
    const ZnUniString& Shell() const { return shell_; }
    const ZnUniString& Comment() const { return comment_; }
    // As the host shows it to this process, often just "x". Asks the host when the entry keeps none.
    ZnUniString EncryptedPassword() const;

   private:
    ZnUniString name_;
    uid_t uid_;
    gid_t gid_;
    ZnUniString home_;
    ZnUniString shell_;
    ZnUniString comment_;
    ZnUniString password_;
    bool haspassword_;
  };

  class GroupEntry {
   public:
    explicit GroupEntry(const group& record);

    const ZnUniString& Name() const { return name_; }
    gid_t GroupNumber() const { return gid_; }
    bool IsMember(const ZnUniString& user) const { return members_.Contains(user); }
    const ZnDList<ZnUniString>& Members() const { return members_; }

   private:
    ZnUniString name_;
    gid_t gid_;
    ZnDList<ZnUniString> members_;
  };

  // Succeeds: the host needs no preparation.
  static bool InitialiseSecurity() { return true; }
  // The encrypted password of a user; "x" for one that the host doesn't know.
  static ZnUniString GetEncryptedPassword(const ZnUniString& name);
};

// Entries by name and by number, shared between both.
class ZnUserCache {
 public:
  using UserCacheEntry = ZnUserGroupDatabase::UserEntry;
  using EntryRef = std::shared_ptr<const UserCacheEntry>;

  enum CacheMode {
    NoCache = 0,
    WithoutPasswords = 1,
    WithPasswords = 2,
  };

  // Sets how users are cached from now on; a value that is no CacheMode is taken as NoCache.
  static void InitialiseCache(int mode);
  static CacheMode cachemode() { return cachemode_; }

  // Null for an entry that isn't there, and always in the mode without cache.
  EntryRef Find(const ZnUniString& name) const;
  EntryRef Find(uid_t number) const;
  // Stores the entry under its name and its number, leaving those that are taken; does nothing without cache.
  void Insert(const EntryRef& entry);
  void Flush();

 private:
  static CacheMode cachemode_;

  std::unordered_map<ZnUniString, EntryRef> usernameentry_;
  std::unordered_map<uid_t, EntryRef> usernumentry_;
};

// Finds one user, or walks all of them. One walk at a time in the whole process: the host has a single position.
class ZnUserDatabaseIterator {
 public:
  ZnUserDatabaseIterator() = default;
  ZnUserDatabaseIterator(const ZnUserDatabaseIterator&) = delete;
  ZnUserDatabaseIterator& operator=(const ZnUserDatabaseIterator&) = delete;
  ~ZnUserDatabaseIterator();

  // True when the user exists; Current is then its entry.
  bool Find(const ZnUniString& name);
  bool Find(uid_t number);
  // A text of digits only is a number, any other a name.
  bool FindNameOrNumber(const ZnUniString& text);

  // Whether there is a current entry.
  explicit operator bool() const { return current_ != nullptr; }
  // The entry found. Only after a Find, Reset or ++ that found one; good until the next of them.
  const ZnUserGroupDatabase::UserEntry& Current() const { return *current_; }

  // To the first user, and from there to the next; no current entry behind the last.
  void Reset();
  ZnUserDatabaseIterator& operator++();

  // Forgets what is cached: the next look-ups ask the host.
  static void FlushUserCache() { usercache.Flush(); }

 private:
  static ZnUserCache usercache;

  bool SetCurrent(const passwd* record);

  ZnUserCache::EntryRef current_;
  bool walking_ = false;
};

// The same for groups, without a cache.
class ZnGroupDatabaseIterator {
 public:
  ZnGroupDatabaseIterator() = default;
  ZnGroupDatabaseIterator(const ZnGroupDatabaseIterator&) = delete;
  ZnGroupDatabaseIterator& operator=(const ZnGroupDatabaseIterator&) = delete;
  ~ZnGroupDatabaseIterator();

  bool Find(const ZnUniString& name);
  bool Find(gid_t number);
  explicit operator bool() const { return current_.has_value(); }
  const ZnUserGroupDatabase::GroupEntry& Current() const { return *current_; }
  void Reset();
  ZnGroupDatabaseIterator& operator++();

 private:
  bool SetCurrent(const group* record);

  std::optional<ZnUserGroupDatabase::GroupEntry> current_;
  bool walking_ = false;
};
