// The record of a machine.

#include "config/encoding_name.h"
#include "config/record_reader.h"

namespace {

constexpr int32_t kUsualTimeout = 10;

template <class T>
struct Word {
  const char* text;
  T value;
};
constexpr Word<ZnMinAuth> kMinAuths[] = {
    {"lm", ZnMinAuth::Lm}, {"ntlm", ZnMinAuth::Ntlm}, {"ntlmv2", ZnMinAuth::Ntlmv2}};
constexpr Word<ZnSigning> kSignings[] = {
    {"never", ZnSigning::Never}, {"auto", ZnSigning::Auto}, {"always", ZnSigning::Always}};

// One of the words of a key, in any case; false for any other.
template <class T, size_t N>
bool ReadWord(const Word<T> (&words)[N], const ZnUniString& text, T& value) {
  for (const auto& word : words) {
    if (!text.MatchCaseless(word.text)) continue;
    value = word.value;
    return true;
  }
  return false;
}

// The name as configured, or the machine's up to its first ".", if that leaves anything.
ZnUniString NetBiosName(const ZnUniString& configured, const ZnUniString& machine) {
  if (!configured.IsEmpty() && configured != "*") return configured;
  size_t dot = machine.Search(u'.');
  return dot == 0 || dot == ZnUniString::kNotFound ? machine : machine.SubString(0, dot);
}

ZnUniString ReadMachine(const ZnUniString& user, const ZnUniString& machine, ZnSMBNFSMachineConfig& config) {
  ZnRecordReader in(user, machine);
  config = {};
  config.user = user;
  config.machine = machine;
  in.Fill(config);
  config.nbtname = NetBiosName(config.nbtname, machine);
  if (config.winname == "*") config.winname = user;
  if (config.smbtimeout == 0) config.smbtimeout = kUsualTimeout;
  ZnUniString error = in.Decode(config.password);
  if (!error.IsEmpty()) return error;
  if (config.sharenames.IsEmpty()) return "No shares were specified for " + user + " on " + machine;

  ZnUniString minauth = in.Text("minauth", "ntlm");
  if (!ReadWord(kMinAuths, minauth, config.minauth)) {
    return "Invalid minauth \"" + minauth + "\" for " + user + " on " + machine + ": it is ntlmv2, ntlm or lm";
  }

  ZnUniString signing = in.Text("signing", "auto");
  if (!ReadWord(kSignings, signing, config.signing)) {
    return "Invalid signing \"" + signing + "\" for " + user + " on " + machine + ": it is auto, always or never";
  }

  ZnUniString encoding = in.Text("encoding", "CP850");
  config.encoding = ZnEncodingOfName(encoding);
  if (config.encoding == ZnCodeset::Invalid) {
    return "Invalid 8bit encoding \"" + encoding + "\" for " + user + " on " + machine;
  }

  ZnUniString unixname = in.UserName("unixname");
  ZnUserDatabaseIterator account;
  if (!account.Find(unixname)) {
    return "Failed to find UNIX user \"" + unixname + "\" whilst loading config for " + user + "/" + machine;
  }
  in.Owner(account.Current(), config.uid, config.gid);
  if (config.unixperms == 0) {
    return "The machine " + user + "/" + machine + " has been configured to be inaccessable";
  }
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadMachineConfig(const ZnUniString& user, const ZnUniString& machine,
                                              ZnSMBNFSMachineConfig& config) {
  return LoadRecord(machcache_, user + "/" + machine, config, [&] { return ReadMachine(user, machine, config); });
}
