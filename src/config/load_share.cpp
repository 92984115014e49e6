// The record of a share.

#include "config/record_reader.h"

namespace {

ZnUniString ReadShare(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share,
                      ZnSMBNFSShareConfig& config) {
  ZnRecordReader in(user, machine, share);
  ZnUniString where = user + "/" + machine + "/" + share;
  config.user = user;
  config.machine = machine;
  config.share = share;
  ZnUserDatabaseIterator account;
  bool found = account.Find(in.UserName("/unixname"));
  config.winname = in.UserName("/winname");
  ZnUniString error = in.Password(config.password);
  if (!error.IsEmpty()) return error;
  if (!found) return "Failed to find UNIX user whilst loading config for " + where;
  in.Owner(account.Current(), config.uid, config.gid);
  config.unixperms = in.Permissions();
  if (config.unixperms == 0) return "The share " + where + " has been configured to be inaccessable";

  config.hidden = in.Number("/hidden", 0, ZnRecordReader::kNoMaximum);
  config.system = in.Number("/system", 0, ZnRecordReader::kNoMaximum);
  config.archive = in.Number("/archive", 0, ZnRecordReader::kNoMaximum);
  config.attribttl = in.Number("/attribttl", 0, ZnRecordReader::kNoMaximum);
  config.contentsttl = in.Number("/contentsttl", 0, ZnRecordReader::kNoMaximum);
  config.openfilettl = in.Number("/openfilettl", 0, ZnRecordReader::kNoMaximum);
  config.showhidden = in.Flag("/showhidden");
  config.lowercase = in.Flag("/lowercase");
  config.matchshort = in.Flag("/matchshort");
  config.matchlong = in.Flag("/matchlong");
  config.matchcase = in.Flag("/matchcase");
  config.allowednames = in.Number("/allowednames", 0, 10);
  config.bannedchars = in.Text("/bannedchars");
  config.manglechar = in.Number("/manglechar", 1, 256);
  config.linkstring = in.Text("/linkstring");
  config.hashchars = in.Text("/hashchars");
  config.hashchar = in.Number("/hashchar", 1, 256);
  config.hashmethod = in.Number("/hashmethod", 0, 1);
  config.syncwrites = in.Flag("/syncwrites");
  config.rootaccess = in.Flag("/rootaccess");
  config.nosetreadonly = in.Flag("/nosetreadonly");
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadShareConfig(const ZnUniString& user, const ZnUniString& machine,
                                            const ZnUniString& share, ZnSMBNFSShareConfig& config) {
  return LoadRecord(sharecache_, user + "/" + machine + "/" + share, config,
                    [&] { return ReadShare(user, machine, share, config); });
}
