#pragma once
// Who logs on, from where.

#include "runtime/uni_string.h"

struct ZnSmbCredentials {
  ZnUniString user = {};
  ZnUniString password = {};
  ZnUniString domain = {};       // empty: the server knows where to look for the user
  ZnUniString workstation = {};  // of this host

  // Logs on as nobody.
  bool Anonymous() const { return user.IsEmpty() && password.IsEmpty(); }
};
