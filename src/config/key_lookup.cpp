// Which of the keys that fit a user, a machine and a share holds.

#include <optional>

#include "config/smbnfs_config.h"

namespace {

enum Starred : unsigned {
  kNone = 0,
  kUser = 1,
  kMachine = 2,
  kShare = 4,
};

// The names that give way to "*", in the order in which keys are tried. It isn't a counting of stars: any user on the
// named machine comes before the named user on any machine. A look-up without a share, or without a machine too, tries
// the same without the lines that don't apply.
constexpr unsigned kOrder[] = {
    kNone,                     // user/machine/share
    kUser,                     // */machine/share
    kMachine,                  // user/*/share
    kShare,                    // user/machine/*
    kUser | kMachine,          // */*/share
    kUser | kShare,            // */machine/*
    kMachine | kShare,         // user/*/*
    kUser | kMachine | kShare  // */*/*
};

size_t DepthOf(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share) {
  if (user.IsEmpty()) return 0;
  if (machine.IsEmpty()) return 1;
  return share.IsEmpty() ? 2 : 3;
}

ZnUniString KeyOf(const ZnUniString& prefix, const ZnUniString* const (&names)[3], size_t depth, unsigned starred,
                  const ZnUniString& key) {
  ZnUniString result = prefix;
  for (size_t i = 0; i < depth; i++) {
    if (i > 0) result.Append(u'/');
    if (starred >> i & 1U) {
      result.Append(u'*');
    } else {
      result.Append(*names[i]);
    }
  }
  result.Append(key);
  return result;
}

std::optional<ZnUniString> FindKey(const ZnDatabase& database, const ZnUniString& prefix, const ZnUniString& user,
                                   const ZnUniString& machine, const ZnUniString& share, const ZnUniString& key) {
  size_t depth = DepthOf(user, machine, share);
  if (depth == 0) return database.KeyExists(prefix) ? std::optional(prefix) : std::nullopt;
  const ZnUniString* const names[3] = {&user, &machine, &share};
  for (unsigned starred : kOrder) {
    if (starred >> depth != 0) continue;
    ZnUniString candidate = KeyOf(prefix, names, depth, starred, key);
    if (database.KeyExists(candidate)) return candidate;
  }
  return std::nullopt;
}

// Zeros and ones with colons between them.
bool ParseFlags(const ZnUniString& text, std::vector<bool>& flags) {
  for (const ZnUniString& piece : text.Split(u':')) {
    int32_t number = piece.AsInt32();
    if (number != 0 && number != 1) return false;
    flags.push_back(number == 1);
  }
  return true;
}

}  // namespace

bool ZnSMBNFSConfig::GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                              const ZnUniString& share, const ZnUniString& key, ZnDList<ZnUniString>& result,
                              uint32_t minimum, uint32_t maximum) {
  if (!nfsdb_) return false;
  auto found = FindKey(*nfsdb_, prefix, user, machine, share, key);
  if (!found) return false;
  nfsdb_->ListValues(*found, result);
  return result.Count() >= minimum && result.Count() <= maximum;
}

bool ZnSMBNFSConfig::GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                              const ZnUniString& share, const ZnUniString& key, ZnUniString& result) {
  ZnDList<ZnUniString> values;
  if (!GetValue(prefix, user, machine, share, key, values, 1, 1)) return false;
  result = values[0];
  return true;
}

bool ZnSMBNFSConfig::GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                              const ZnUniString& share, const ZnUniString& key, int32_t& result, int32_t minimum,
                              int32_t maximum) {
  ZnUniString text;
  if (!GetValue(prefix, user, machine, share, key, text)) return false;
  result = text.AsInt32();
  return result >= minimum && result <= maximum;
}

bool ZnSMBNFSConfig::GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                              const ZnUniString& share, const ZnUniString& key, uint32_t& result, uint32_t minimum,
                              uint32_t maximum) {
  ZnUniString text;
  result = 0;
  if (!GetValue(prefix, user, machine, share, key, text)) return false;
  result = static_cast<uint32_t>(text.AsInt32());
  return result >= minimum && result <= maximum;
}

bool ZnSMBNFSConfig::GetValue(const ZnUniString& prefix, const ZnUniString& user, const ZnUniString& machine,
                              const ZnUniString& share, const ZnUniString& key, std::vector<bool>& result,
                              uint32_t minimum, uint32_t maximum) {
  ZnUniString text;
  std::vector<bool> flags;
  if (!GetValue(prefix, user, machine, share, key, text) || !ParseFlags(text, flags)) return false;
  if (flags.size() < minimum || flags.size() > maximum) return false;
  result = std::move(flags);
  return true;
}

bool ZnSMBNFSConfig::GetGlobalValue(const ZnUniString& key, ZnUniString& value) {
  return GetValue(key, {}, {}, {}, {}, value);
}

bool ZnSMBNFSConfig::CheckValueExistsInConfig(const ZnUniString& user, const ZnUniString& machine,
                                              const ZnUniString& share) {
  return nfsdb_ && nfsdb_->KeyExists(UserKeys() + user + "/" + machine + "/" + share + "/password");
}
