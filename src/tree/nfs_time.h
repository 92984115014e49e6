#pragma once
// Times between the daemon and NFS.

#include "rpc/nfs_records.h"
#include "runtime/time_val.h"

inline ZnNFSTimeVal ZnNfsTime(const ZnTimeVal& time) {
  ZnNFSTimeVal result;
  result.seconds = time.seconds;
  result.useconds = time.microseconds;
  return result;
}
