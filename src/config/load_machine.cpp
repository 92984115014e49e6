// The record of a machine.

#include "config/encoding_name.h"
#include "config/record_reader.h"

namespace {

// The name as configured, or the machine's up to its first ".", if that leaves anything.
ZnUniString NetBiosName(const ZnUniString& configured, const ZnUniString& machine) {
  if (!configured.IsEmpty() && configured != "*") return configured;
  size_t dot = machine.Search(u'.');
  return dot == 0 || dot == ZnUniString::kNotFound ? machine : machine.SubString(0, dot);
}

ZnUniString ReadMachine(const ZnUniString& user, const ZnUniString& machine, ZnSMBNFSMachineConfig& config) {
  ZnRecordReader in(user, machine);
  config.user = user;
  config.machine = machine;
  config.nbtname = NetBiosName(in.Text("/nbtname"), machine);
  config.ipaddress = in.Text("/ipaddress", "*");
  config.dnslookup = in.Number("/dnslookup", 0, 2);
  config.port = in.Number("/port", 0, 999);
  config.sharesttl = in.Number("/sharesttl", 0, 3600);
  config.oldsetattr = in.Flag("/oldsetattr");
  ZnUniString unixname = in.UserName("/unixname");
  config.winname = in.UserName("/winname");
  config.domain = in.Text("/domain");
  ZnUniString error = in.Password(config.password);
  if (!error.IsEmpty()) return error;
  config.hidedollar = in.Flag("/hidedollar");
  config.sharenames = in.List("/sharenames");
  if (config.sharenames.IsEmpty()) return "No shares were specified for " + user + " on " + machine;

  ZnUniString encoding = in.Text("/encoding", "CP850");
  config.encoding = ZnEncodingOfName(encoding);
  if (config.encoding == ZnCodeset::Invalid) {
    return "Invalid 8bit encoding \"" + encoding + "\" for " + user + " on " + machine;
  }
  config.smbtimeout = in.Number("/smbtimeout", 1, ZnRecordReader::kNoMaximum);
  config.sessiontimeout = in.Number("/sessiontimeout", 1, ZnRecordReader::kNoMaximum);
  config.maxopenfiles = in.Number("/maxopenfiles", 1, ZnRecordReader::kNoMaximum);
  config.timeoffset = in.Number("/timeoffset", -INT32_MAX, INT32_MAX, -1);

  ZnUserDatabaseIterator account;
  if (!account.Find(unixname)) {
    return "Failed to find UNIX user \"" + unixname + "\" whilst loading config for " + user + "/" + machine;
  }
  in.Owner(account.Current(), config.uid, config.gid);
  config.unixperms = in.Permissions();
  if (config.unixperms == 0) {
    return "The machine " + user + "/" + machine + " has been configured to be inaccessable";
  }
  config.rootaccess = in.Flag("/rootaccess");
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadMachineConfig(const ZnUniString& user, const ZnUniString& machine,
                                              ZnSMBNFSMachineConfig& config) {
  return LoadRecord(machcache_, user + "/" + machine, config, [&] { return ReadMachine(user, machine, config); });
}
