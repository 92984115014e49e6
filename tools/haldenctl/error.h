#pragma once
// How an operation of haldenctl ended.

#include <string>

#include "rpc/nfs_enum.h"

// The exit codes; --help lists them.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kNoAnswer = 3, kInterrupted = 130 };

// Why something didn't work, in words for people. True if there was an error, so that `if (Error error = ...)` reads as
// it should.
struct Error {
  std::string text;
  ExitCode code = kFailed;
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;  // what the daemon answered, where it was that

  explicit operator bool() const { return !text.empty(); }
};
