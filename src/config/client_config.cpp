// A user's own part of the configuration, as the user's client fetches and changes it.

#include "config/key_check.h"
#include "config/log_file.h"
#include "config/smbnfs_config.h"

namespace {

// Empty if the user may set all keys of the text.
ZnUniString CheckKeys(const ZnDList<ZnUniString>& keys, const ZnUniString& below) {
  for (const ZnUniString& key : keys) {
    if (!key.StartsWith(below)) return "Not allowed to set keys outside your share: " + key;
    if (key.EndsWith("/unixname") || key.EndsWith("/uid") || key.EndsWith("/gid")) {
      return "Not allowed to alter the ownership of files in your shares: " + key;
    }
  }
  return {};
}

bool IsSetting(const ZnDList<ZnUniString>& values) { return values.Count() == 1 && !values[0].IsEmpty(); }

}  // namespace

// One value replaces what the key had, an empty one removes the key and all below it. Anything else isn't for clients
// to say.
void ZnSMBNFSConfig::Merge(ZnDatabase& database, const ZnUniString& key, const ZnDList<ZnUniString>& values) {
  if (values.Count() != 1) return;
  if (!IsSetting(values)) {
    database.RemoveKeys(key);
    return;
  }
  database.ClearKey(key);
  database.AppendValue(key, values[0]);
}

ZnUniString ZnSMBNFSConfig::GetClientConfig(const ZnUniString& user, ZnUniString& text) {
  ZnDatabase database;
  database.FromString(usercontents_, 0);  // up to an error, if there is one
  ZnUniString below = UserKeys() + user + "/";
  ZnDList<ZnUniString> keys;
  database.ListKeys({}, keys);
  for (const ZnUniString& key : keys) {
    if (key.StartsWith(below)) database.Tag(key, 1);
  }
  text = database.ToString(1);
  return {};
}

ZnUniString ZnSMBNFSConfig::SetClientConfig(const ZnUniString& user, const ZnUniString& text) {
  ZnDatabase changes;
  if (!changes.FromString(text, 0)) return changes.ErrorString();
  ZnDList<ZnUniString> keys;
  changes.ListKeys({}, keys);
  ZnUniString below = UserKeys() + user + "/";
  ZnUniString refusal = user == "root" ? ZnUniString() : CheckKeys(keys, below);
  if (!refusal.IsEmpty()) return refusal;

  for (const ZnUniString& key : keys) {
    const ZnDBEntry& entry = *changes.Find(key);
    ZnUniString mistake = IsSetting(entry.values) ? ZnMistakeOf(key, entry) : ZnUniString();
    if (!mistake.IsEmpty()) return mistake;
  }

  for (const ZnUniString& key : keys) {
    const ZnDList<ZnUniString>& values = changes.Find(key)->values;
    Merge(*nfsdb_, key, values);
    std::erase_if(clientsettings_, [&](const auto& each) { return each.first == key; });
    clientsettings_.emplace_back(key, values);
  }
  clientchanged_ = true;
  FlushRecords();

  ZnUniString logfile;
  ZnDList<ZnUniString> own;
  nfsdb_->ListValues(below + "logfile", own);
  if (own.Count() == 1) {
    logfile = own[0];
  } else {
    GetValue(UserKeys(), user, {}, {}, "/logfile", logfile);
  }
  logfile = ZnExpandLogFile(logfile, user);
  // A home of "/" makes it two slashes.
  if (logfile.Length() > 2 && logfile.StartsWith("//")) logfile.Remove(0, 1);
  ZnUniString mountpoint;
  GetGlobalValue("nfsserver/mount/mountpoint", mountpoint);
  return "S:" + user + ":" + mountpoint + "/" + user + "/:" + logfile;
}
