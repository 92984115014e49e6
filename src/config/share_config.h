#pragma once
// What the configuration says of one share of a machine of a user.

#include <tuple>

#include "runtime/uni_string.h"

struct ZnSMBNFSShareConfig {
  ZnUniString user;
  ZnUniString machine;
  ZnUniString share;
  ZnUniString winname = "*";  // resolved in a loaded record; empty takes the machine's
  ZnUniString password;       // in clear
  bool showhidden = false;
  bool lowercase = false;
  bool matchlong = false;
  bool matchshort = false;
  bool matchcase = false;
  int32_t allowednames = 0;
  int32_t manglechar = 0;  // code units
  ZnUniString bannedchars;
  ZnUniString hashchars;
  int32_t hashchar = 0;
  int32_t hashmethod = 0;
  ZnUniString linkstring;
  int32_t attribttl = 0;  // seconds
  int32_t contentsttl = 0;
  int32_t openfilettl = 0;
  bool syncwrites = false;
  int32_t uid = -1;  // owner and group shown
  int32_t gid = -1;
  int32_t unixperms = 0;  // permission bits shown
  int32_t hidden = 0;     // permission bits that stand for an attribute
  int32_t system = 0;
  int32_t archive = 0;
  bool rootaccess = false;
  bool nosetreadonly = false;

  bool operator==(const ZnSMBNFSShareConfig&) const = default;
  // Whether what is known of the share's entries is true under the other record too: what their names stand for, and
  // who looked.
  bool SameNames(const ZnSMBNFSShareConfig& other) const {
    const auto facts = [](const ZnSMBNFSShareConfig& of) {
      return std::tie(of.password, of.lowercase, of.hashchars, of.hashchar, of.hashmethod, of.linkstring);
    };
    return facts(*this) == facts(other);
  }
};
