// The record of a user.

#include "config/log_file.h"
#include "config/record_reader.h"

namespace {

ZnUniString ReadUser(const ZnUniString& user, ZnSMBNFSUserConfig& config) {
  ZnRecordReader in(user);
  config = {};
  config.username = user;
  in.Fill(config);
  if (config.machinenames.IsEmpty()) return "No machines were specified for " + user;
  config.logfile = ZnExpandLogFile(config.logfile, user);

  ZnUniString unixname = in.UserName("unixname");
  config.unixuser.emplace(unixname, true);
  ZnUserDatabaseIterator account;
  if (!config.unixuser->found() || !account.Find(unixname)) {
    return "Failed to find UNIX user \"" + unixname + "\" whilst loading config for " + user;
  }
  in.Owner(account.Current(), config.uid, config.gid);
  if (config.unixperms == 0) return "The user " + user + " has been configured to be inaccessable";
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadUserConfig(const ZnUniString& user, ZnSMBNFSUserConfig& config) {
  return LoadRecord(usercache_, user, config, [&] { return ReadUser(user, config); });
}
