#pragma once
// The configuration of the daemon: four layers of text in one database, and the records that everybody else works with.
//
// The layers, each replacing whole keys of those before: the built-in defaults, the user file, the profile, the command
// line. Functions that give a text give the reason of a failure, and an empty text
// for success; the reasons are shown to people.

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "config/database.h"
#include "config/machine_config.h"
#include "config/server_config.h"
#include "config/share_config.h"
#include "config/user_config.h"

class ZnSMBNFSConfig {
 public:
  // The lines at the head of a profile.
  static const char* const headertext;

  // Reads the profile and the user file, a path each (the user file needn't exist), and parses the layers. `useCaches`:
  // finished records are kept and given out again until the configuration changes. A text with a mistake in its form or
  // in a number is refused as a whole, with the place of the mistake.
  static ZnUniString Initialise(const ZnUniString& proffile, const ZnUniString& userfile, const ZnUniString& cmdline,
                                bool useCaches);
  // What whoever wrote the texts should know, a line each: keys that nobody reads, and, once the texts were read again,
  // changes that count from the next start on.
  static const ZnDList<ZnUniString>& Warnings() { return warnings_; }
  // Reads the texts again if the profile's file isn't what it was at the last look, or `anyway`. `changed` tells
  // whether the configuration is another one now, by what was read or by SetClientConfig since the last call. A file
  // that can't be read or has a mistake changes nothing, and its failure is given once. What clients have set stays
  // set.
  static ZnUniString Refresh(bool& changed, bool anyway = false);
  // Back to the state before Initialise.
  static void CleanUp();

  // The values of the first of these keys that exists, with every combination of the names given and "*" in their
  // place, from the most to the least special (the order stands in key_lookup.cpp). Without a user the key is
  // the prefix alone, without a machine the names end with the user, without a share with the machine. `prefix` ends
  // with "/", `key` begins with it.
  //
  // Appends all values to `result`; true if a key was found and the length of `result` lies from minimum to maximum.
  static bool GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                       const ZnUniString& share, const ZnUniString& key, ZnDList<ZnUniString>& result, uint32_t minimum,
                       uint32_t maximum);
  // True, setting `result`, if the key has exactly one value.
  static bool GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                       const ZnUniString& share, const ZnUniString& key, ZnUniString& result);
  // The number of a single value. It is stored whatever its size; true if it lies from minimum to maximum. Without a
  // single value `result` stays, or becomes 0 in the unsigned form.
  static bool GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                       const ZnUniString& share, const ZnUniString& key, int32_t& result, int32_t minimum,
                       int32_t maximum);
  static bool GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                       const ZnUniString& share, const ZnUniString& key, uint32_t& result, uint32_t minimum,
                       uint32_t maximum);
  // A single value of zeros and ones with colons between them, their count from minimum to maximum. `result` is set
  // only then.
  static bool GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                       const ZnUniString& share, const ZnUniString& key, std::vector<bool>& result, uint32_t minimum,
                       uint32_t maximum);
  // The single value of a key that isn't of a user.
  static bool GetGlobalValue(const ZnUniString& key, ZnUniString& value);
  // Whether the share has a password of its own, without wildcards: so it was set up by name.
  static bool CheckValueExistsInConfig(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share);

  // The records. Fields are stored as they are read, so that after a failure some of an old record may be left.
  static ZnUniString LoadServer(ZnSMBNFSServerConfig& config);
  // Brings those fields up to date that count while the daemon runs.
  static void LoadServerAgain(ZnSMBNFSServerConfig& config);
  static ZnUniString LoadUserConfig(const ZnUniString& user, ZnSMBNFSUserConfig& config);
  static ZnUniString LoadMachineConfig(const ZnUniString& user, const ZnUniString& machine,
                                       ZnSMBNFSMachineConfig& config);
  static ZnUniString LoadShareConfig(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share,
                                     ZnSMBNFSShareConfig& config);
  // Appends the names of the users with keys of their own. Always succeeds.
  static ZnUniString ListUsers(ZnDList<ZnUniString>& list);
  // Appends what has keys below a machine: a share once for each of its keys, and settings of the machine too, other
  // than password and winname. Always succeeds.
  static ZnUniString GetShareList(const ZnUniString& user, const ZnUniString& machine, ZnDList<ZnUniString>& list);

  // The user's own entries of the user file, as text. Gives an empty text.
  static ZnUniString GetClientConfig(const ZnUniString& user, ZnUniString& text);
  // Merges entries that a user's client sends into the running configuration, where they stay until the daemon ends;
  // files stay as they are. Either all of
  // them are taken, and the result is "S:", the user, ":", the user's directory below the mount point, ":", the path of
  // the error file; or none, and the result says why.
  static ZnUniString SetClientConfig(const ZnUniString& user, const ZnUniString& text);

  // Decodes a stored password in place. It decodes for the user it was encoded for; for another one it is refused or
  // gives nonsense. Refused, `value` stays.
  static ZnUniString DecryptString(ZnUniString& value, const ZnUniString& user);
  // Encodes a password into its stored form, in place: the inverse of DecryptString. Refuses one that doesn't fit the
  // form: more than 190 characters, or characters that ISO 8859-1 doesn't have.
  static ZnUniString EncryptString(ZnUniString& value, const ZnUniString& user);

 private:
  template <class Record>
  using Records = std::unordered_map<ZnUniString, Record>;

  // What tells one state of a file from another, as far as that can be told without reading it. All zero: no file.
  struct FileState {
    uint64_t device = 0, inode = 0;
    int64_t size = 0, modified = 0, changed = 0;  // times in nanoseconds
    bool operator==(const FileState&) const = default;
  };
  static ZnUniString LookAtProfile(FileState& state);

  // The prefix of all keys of users.
  static const ZnUniString& UserKeys();
  static ZnUniString LoadConfig();
  // What of a new configuration counts from the next start on only.
  static void ListLaterChanges(const ZnDatabase& next, ZnDList<ZnUniString>& warnings);
  // Adds the text of a layer; a failure gives the reason and adds nothing of it.
  static ZnUniString AddLayer(ZnDatabase& database, const ZnUniString& text, ZnDList<ZnUniString>& warnings);
  // Puts what a client has set into a database.
  static void Merge(ZnDatabase& database, const ZnUniString& key, const ZnDList<ZnUniString>& values);
  static void FlushRecords();
  // Fills `config` from the cache, or by `read`, which gives the reason of a failure.
  template <class Record, class Read>
  static ZnUniString LoadRecord(Records<Record>& cache, const ZnUniString& names, Record& config, Read read) {
    auto found = cache.find(names);
    if (found != cache.end()) {
      config = found->second;
      return {};
    }
    ZnUniString error = read();
    if (error.IsEmpty() && usecaches_) cache.emplace(names, config);
    return error;
  }

  static std::unique_ptr<ZnDatabase> nfsdb_;  // null before Initialise and after CleanUp
  static ZnUniString proffile_;
  static ZnUniString userfile_;
  static ZnUniString cmdline_;
  static ZnUniString usercontents_;  // the user file's text
  static ZnDList<ZnUniString> warnings_;
  static FileState profilestate_;  // at the last look
  static bool clientchanged_;      // SetClientConfig was called since the last Refresh
  // What clients have set, in order: it is set again on top of texts that were read again.
  static std::vector<std::pair<ZnUniString, ZnDList<ZnUniString>>> clientsettings_;

  // Finished records by the names they are of, joined with slashes; empty without useCaches.
  static bool usecaches_;
  static Records<ZnSMBNFSUserConfig> usercache_;
  static Records<ZnSMBNFSMachineConfig> machcache_;
  static Records<ZnSMBNFSShareConfig> sharecache_;

  friend class ZnRecordReader;
};
