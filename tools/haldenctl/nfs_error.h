#pragma once
// The statuses of NFS version 2 in words that say what to do.

#include "error.h"

// No error for NFS_OK. `path` is what the call was about.
Error NfsError(ZnNFSEnum::Status status, const std::string& path);
