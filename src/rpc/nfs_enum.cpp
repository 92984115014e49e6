#include "rpc/nfs_enum.h"

#include "runtime/enum_names.h"

namespace ZnNFSEnum {

namespace {

constexpr ZnEnumName kStatusNames[] = {
    {NFS_OK, "NFS_OK"},
    {NFSERR_PERM, "NFSERR_PERM"},
    {NFSERR_NOENT, "NFSERR_NOENT"},
    {NFSERR_IO, "NFSERR_IO"},
    {NFSERR_NXIO, "NFSERR_NXIO"},
    {NFSERR_ACCES, "NFSERR_ACCES"},
    {NFSERR_EXIST, "NFSERR_EXIST"},
    {NFSERR_XDEV, "NFSERR_XDEV"},
    {NFSERR_NODEV, "NFSERR_NODEV"},
    {NFSERR_NOTDIR, "NFSERR_NOTDIR"},
    {NFSERR_ISDIR, "NFSERR_ISDIR"},
    {NFSERR_FBIG, "NFSERR_FBIG"},
    {NFSERR_NOSPC, "NFSERR_NOSPC"},
    {NFSERR_ROFS, "NFSERR_ROFS"},
    {NFSERR_NAMETOOLONG, "NFSERR_NAMETOOLONG"},
    {NFSERR_NOTEMPTY, "NFSERR_NOTEMPTY"},
    {NFSERR_DQUOT, "NFSERR_DQUOT"},
    {NFSERR_STALE, "NFSERR_STALE"},
    {NFSERR_WFLUSH, "NFSERR_WFLUSH"},
};

}  // namespace

std::string StatusString(Status status) { return ZnNameOf(kStatusNames, "Status", static_cast<unsigned>(status)); }

}  // namespace ZnNFSEnum
