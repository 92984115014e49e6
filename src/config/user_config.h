#pragma once
// What the configuration says of one user.

#include <optional>

#include "runtime/list.h"
#include "runtime/uni_string.h"
#include "runtime/unix_user.h"

struct ZnSMBNFSUserConfig {
  ZnUniString username;
  ZnDList<ZnUniString> machinenames;   // whole names, compared without regard to case; "*" is any machine
  ZnDList<ZnUniString> notmachines;    // whole names that are never offered
  ZnUniString logfile;                 // path of the file for errors shown to the user, expanded
  std::optional<ZnUnixUser> unixuser;  // the account behind the user, with its groups; set in every loaded record
  int32_t uid = -1;                    // owner and group shown
  int32_t gid = -1;
  int32_t unixperms = 0;  // permission bits shown
  bool rootaccess = false;
};
