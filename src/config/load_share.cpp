// The record of a share.

#include "config/record_reader.h"

namespace {

ZnUniString ReadShare(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share,
                      ZnSMBNFSShareConfig& config) {
  ZnRecordReader in(user, machine, share);
  ZnUniString where = user + "/" + machine + "/" + share;
  config = {};
  config.user = user;
  config.machine = machine;
  config.share = share;
  in.Fill(config);
  if (config.winname == "*") config.winname = user;
  ZnUniString error = in.Decode(config.password);
  if (!error.IsEmpty()) return error;
  ZnUserDatabaseIterator account;
  if (!account.Find(in.UserName("unixname"))) return "Failed to find UNIX user whilst loading config for " + where;
  in.Owner(account.Current(), config.uid, config.gid);
  if (config.unixperms == 0) return "The share " + where + " has been configured to be inaccessable";
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadShareConfig(const ZnUniString& user, const ZnUniString& machine,
                                            const ZnUniString& share, ZnSMBNFSShareConfig& config) {
  return LoadRecord(sharecache_, user + "/" + machine + "/" + share, config,
                    [&] { return ReadShare(user, machine, share, config); });
}
