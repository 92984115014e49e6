#pragma once
// The values of one record, read at its level of the hierarchy: of a user, of one of the user's machines, or of a
// share.

#include "config/smbnfs_config.h"
#include "runtime/user_database.h"

class ZnRecordReader {
 public:
  // Maximum of numbers without one.
  static constexpr int32_t kNoMaximum = INT32_MAX;

  explicit ZnRecordReader(const ZnUniString& user, const ZnUniString& machine = {}, const ZnUniString& share = {})
      : user_(user), machine_(machine), share_(share) {}

  // Each takes the last part of the key, with its slash. Without a single value, `preset` holds.

  ZnDList<ZnUniString> List(const ZnUniString& key) const;
  ZnUniString Text(const ZnUniString& key, const ZnUniString& preset = {}) const;
  // A text with "*" for the name of the user.
  ZnUniString UserName(const ZnUniString& key) const;
  // The number as it stands: the bounds tell the reader of the code what makes sense, but refuse nothing.
  int32_t Number(const ZnUniString& key, int32_t minimum, int32_t maximum, int32_t preset = 0) const;
  // Whether the number is 1.
  bool Flag(const ZnUniString& key) const { return Number(key, 0, 1) == 1; }

  // The stored password, decoded into `password`; a failure gives the reason and changes nothing.
  ZnUniString Password(ZnUniString& password) const;
  // Owner and group: those of the account in place of negative numbers.
  void Owner(const ZnUserGroupDatabase::UserEntry& account, int32_t& uid, int32_t& gid) const;
  // Permission bits; 0 locks out.
  int32_t Permissions() const { return Number("/unixperms", 1, 65536); }

 private:
  ZnUniString user_;
  ZnUniString machine_;
  ZnUniString share_;
};
