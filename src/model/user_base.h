#pragma once
// What the tree knows of a user node's user. The user's error file is the session layer's business.

#include "config/user_config.h"

class ZnSMBNFSUserBase {
 public:
  ZnSMBNFSUserBase() = default;
  ZnSMBNFSUserBase(const ZnSMBNFSUserBase&) = delete;
  ZnSMBNFSUserBase& operator=(const ZnSMBNFSUserBase&) = delete;
  virtual ~ZnSMBNFSUserBase() = default;

  // Appends a line to the user's error file, under the user's identity. Never fails the caller.
  virtual void WriteLog(const ZnUniString& text) = 0;

  ZnSMBNFSUserConfig config;
};
