#pragma once
// A script for ScriptedSmbPeer that behaves: it logs on, connects trees and serves one file and one directory, in any
// of the three dialects. Tests replace the answer to single commands.

#include <map>

#include "support/scripted_smb_peer.h"

class StandardSmbServer {
 public:
  std::vector<std::string> operator()(const smb_script::Request& request);

  unsigned dialect = 2;       // index of the dialect it picks
  unsigned securityMode = 3;  // bit 0 user level, bit 1 encrypted passwords
  unsigned maxBuffer = 4356;  // bytes
  unsigned maxMpx = 50;
  uint32_t capabilities = 0;  // bit 2 Unicode
  std::string content = "the content of the file";
  unsigned entriesARound = 20;
  unsigned entries = 3;                             // in the directory: "file0", "file1", ...
  std::map<int, ScriptedSmbPeer::Script> replaced;  // by command

 private:
  std::string Negotiate(const smb_script::Request& request) const;
  std::string Read(const smb_script::Request& request) const;
  std::string ReadX(const smb_script::Request& request) const;
  std::string Trans2(const smb_script::Request& request) const;
  std::string List(const smb_script::Request& request, unsigned first, bool findFirst) const;
};
