#pragma once
// The encoding of each kind of text that the host hands to the daemon: all that of the locale, until someone sets one
// otherwise.

#include "runtime/codeset.h"

class ZnSysEncoding {
 public:
  // Takes the locale's character type from the environment (setlocale) and sets all encodings to its, without options.
  ZnSysEncoding();

  // Before anything is constructed: Latin-1.
  static ZnEncoding filesystem;
  static unsigned filesystemopt;
  static ZnEncoding userdb;
  static unsigned userdbopt;
  static ZnEncoding dnsname;
  static unsigned dnsnameopt;
  static ZnEncoding interfacename;
  static unsigned interfacenameopt;
  static ZnEncoding passwordcrypt;
  static unsigned passwordcryptopt;
  static ZnEncoding sysinfo;
  static unsigned sysinfoopt;
  static ZnEncoding inetaddr;
  static unsigned inetaddropt;
  static ZnEncoding shell;
  static unsigned shellopt;
};
