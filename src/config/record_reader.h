#pragma once
// The values of one record, read at its level of the hierarchy: of the daemon, of a user, of one of the user's
// machines, or of a share.

#include "config/known_keys.h"
#include "config/smbnfs_config.h"
#include "runtime/user_database.h"

class ZnRecordReader {
 public:
  explicit ZnRecordReader(const ZnUniString& user = {}, const ZnUniString& machine = {}, const ZnUniString& share = {})
      : user_(user), machine_(machine), share_(share) {}

  // Fills the fields of a record that known_keys.cpp names. A field whose key hasn't the values it should have stays,
  // and so does, `again`, one whose key is read at the start only.
  template <class Record>
  void Fill(Record& record, bool again = false) const {
    for (const ZnKnownKey& key : ZnKnownKeys()) {
      if (again && key.atstart) continue;
      auto fill = [&](auto field) {
        if constexpr (requires { record.*field; }) Read(key.name, record.*field);
      };
      std::visit(fill, key.field);
    }
  }

  // The single value of a key, given by the last part of its name; `preset` without one.
  ZnUniString Text(const char* key, const ZnUniString& preset = {}) const;
  // A text with "*" for the name of the user.
  ZnUniString UserName(const char* key) const;
  // All values.
  ZnDList<ZnUniString> Texts(const char* key) const;

  // Decodes a stored password in place; a failure gives the reason and changes nothing.
  ZnUniString Decode(ZnUniString& password) const { return ZnSMBNFSConfig::DecryptString(password, user_); }
  // Owner and group: those of the account in place of negative numbers.
  static void Owner(const ZnUserGroupDatabase::UserEntry& account, int32_t& uid, int32_t& gid);

 private:
  void Read(const char* key, int32_t& number) const;
  void Read(const char* key, bool& flag) const;
  void Read(const char* key, ZnUniString& text) const;
  void Read(const char* key, ZnDList<ZnUniString>& texts) const;
  template <class Value, class... Bounds>
  bool Get(const char* key, Value& value, Bounds... bounds) const;

  ZnUniString user_;
  ZnUniString machine_;
  ZnUniString share_;
};
