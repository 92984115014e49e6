#include "nfs_error.h"

namespace {

struct Words {
  ZnNFSEnum::Status status;
  const char* text;
};

using namespace ZnNFSEnum;

constexpr Words kWords[] = {
    {NFSERR_PERM, "not allowed"},
    {NFSERR_NOENT, "there is no such file or directory"},
    {NFSERR_IO, "input or output failed on the machine behind it"},
    {NFSERR_NXIO, "there is no such device"},
    {NFSERR_ACCES,
     "permission denied. Files can only be changed inside a share; if the machine refused, the user's error file "
     "(the key logfile, else ~/.ostrelerrors) says why"},
    {NFSERR_EXIST, "it exists already"},
    {NFSERR_XDEV, "it would go to another share or machine: copy it instead"},
    {NFSERR_NODEV, "there is no such device"},
    {NFSERR_NOTDIR, "isn't a directory"},
    {NFSERR_ISDIR, "is a directory"},
    {NFSERR_FBIG, "the file gets too large"},
    {NFSERR_NOSPC, "no space is left on the machine behind it"},
    {NFSERR_ROFS, "the share can only be read"},
    {NFSERR_NAMETOOLONG, "the name is too long"},
    {NFSERR_NOTEMPTY, "the directory isn't empty"},
    {NFSERR_DQUOT, "the quota is used up"},
    {NFSERR_STALE, "the file has gone meanwhile (stale handle): try again"},
    {NFSERR_WFLUSH, "the server's write cache was flushed"},
};

}  // namespace

Error NfsError(ZnNFSEnum::Status status, const std::string& path) {
  if (status == NFS_OK) return {};
  for (const Words& words : kWords)
    if (words.status == status) return {.text = path + ": " + words.text, .status = status};
  return {.text = path + ": " + StatusString(status), .status = status};
}
