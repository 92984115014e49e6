#pragma once
// Numbers of NFS version 2 (RFC 1094, section 2.3) and of MOUNT beside it (appendix A).

#include <cstdint>
#include <string>

namespace ZnNFSEnum {

inline constexpr uint32_t kProgram = 100003, kVersion = 2;
inline constexpr uint32_t kMountProgram = 100005, kMountVersion = 1;

// Largest READ and WRITE, in bytes of file data.
inline constexpr uint32_t kMaxData = 8192;
// Longest path of a link, in bytes.
inline constexpr uint32_t kMaxPath = 1024;
// In ZnNFSSattr: leave this attribute as it is.
inline constexpr uint32_t kUnchanged = 0xFFFFFFFF;

enum Status : uint32_t {
  NFS_OK = 0,
  NFSERR_PERM = 1,
  NFSERR_NOENT = 2,
  NFSERR_IO = 5,
  NFSERR_NXIO = 6,
  NFSERR_ACCES = 13,
  NFSERR_EXIST = 17,
  NFSERR_XDEV = 18,
  NFSERR_NODEV = 19,
  NFSERR_NOTDIR = 20,
  NFSERR_ISDIR = 21,
  NFSERR_FBIG = 27,
  NFSERR_NOSPC = 28,
  NFSERR_ROFS = 30,
  NFSERR_NAMETOOLONG = 63,
  NFSERR_NOTEMPTY = 66,
  NFSERR_DQUOT = 69,
  NFSERR_STALE = 70,
  NFSERR_WFLUSH = 99,
};

enum FileType : uint32_t { NFNON = 0, NFREG = 1, NFDIR = 2, NFBLK = 3, NFCHR = 4, NFLNK = 5 };

// "NFSERR_STALE", or "Unknown Status (number)".
std::string StatusString(Status status);

}  // namespace ZnNFSEnum
