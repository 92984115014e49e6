#pragma once
// Every key that a profile may have, as one table: at which level it stands, what its values are, what holds where
// nobody gives it, and which field of a record it fills. The defaults, the loading of records and the checks of a
// profile all follow from it. A new key is a row here, a field in its record, and a line of docs/configuration.md.

#include <span>
#include <variant>

#include "config/machine_config.h"
#include "config/server_config.h"
#include "config/share_config.h"
#include "config/user_config.h"

// The record that a key belongs to, and so the form of its place: "nfsserver/", or "nfsserver/shares/smb/" with as many
// names behind it as the number says.
enum class ZnKeyLevel { Daemon = 0, User = 1, Machine = 2, Share = 3 };

// What the values of a key are: any number of texts, one text, or one number of a range.
struct ZnKeyValues {
  enum Kind { Texts, Text, Number } kind;
  int32_t minimum = 0;
  int32_t maximum = 0;
};

// The field of a record that a key fills; none for a key that is read in a way of its own, or isn't used.
template <class... Record>
using ZnFieldOf = std::variant<std::monostate, int32_t Record::*..., bool Record::*..., ZnUniString Record::*...,
                               ZnDList<ZnUniString> Record::*...>;
using ZnKeyField = ZnFieldOf<ZnSMBNFSServerConfig, ZnSMBNFSUserConfig, ZnSMBNFSMachineConfig, ZnSMBNFSShareConfig>;

struct ZnKnownKey {
  ZnKeyLevel level;
  const char* name;    // behind the prefix of its level
  const char* preset;  // the default as it stands between the braces of a profile; null: none
  ZnKeyValues values;
  ZnKeyField field = {};
  bool atstart = false;  // of the daemon's own keys: read once, a change counts from the next start on

  // The whole key with each name of user, machine and share in `names`, which is as long as the level says.
  ZnUniString Full(std::span<const ZnUniString> names) const;
  // The same with "*" for every name.
  ZnUniString Full() const;
};

// In the order of the documentation.
std::span<const ZnKnownKey> ZnKnownKeys();

// The text of the first layer of the configuration: an entry, on a line of its own, for each key that has a default.
const ZnUniString& ZnDefaultsText();
