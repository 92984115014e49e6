#pragma once
// Arguments, results and lists of MOUNT version 1 (RFC 1094, appendix A).

#include "rpc/nfs_enum.h"
#include "rpc/nfs_file_handle.h"
#include "rpc/nfs_list.h"

struct ZnNFSMountargs : ZnXdrRecord<ZnNFSMountargs> {
  ZnUniString dir;

  template <class Io>
  bool Fields(Io& io) {
    return io.String(dir);
  }
  bool operator==(const ZnNFSMountargs&) const = default;
};

struct ZnNFSMountres : ZnXdrRecord<ZnNFSMountres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnNFSFileHandle handle;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || io.Record(handle));
  }
  bool operator==(const ZnNFSMountres&) const = default;
};

struct ZnNFSMountEntry : ZnXdrRecord<ZnNFSMountEntry> {
  ZnUniString hostname;
  ZnUniString dirpath;

  template <class Io>
  bool Fields(Io& io) {
    return io.String(hostname) && io.String(dirpath);
  }
  bool operator==(const ZnNFSMountEntry&) const = default;
};

struct ZnNFSMountGroup : ZnXdrRecord<ZnNFSMountGroup> {
  ZnUniString name;

  template <class Io>
  bool Fields(Io& io) {
    return io.String(name);
  }
  bool operator==(const ZnNFSMountGroup&) const = default;
};

struct ZnNFSMountExport : ZnXdrRecord<ZnNFSMountExport> {
  ZnUniString dirpath;
  ZnNFSList<ZnNFSMountGroup> groups;

  template <class Io>
  bool Fields(Io& io) {
    return io.String(dirpath) && io.Record(groups);
  }
  bool operator==(const ZnNFSMountExport&) const = default;
};

struct ZnNFSMountExports : ZnXdrRecord<ZnNFSMountExports> {
  ZnNFSList<ZnNFSMountExport> exports;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(exports);
  }
  bool operator==(const ZnNFSMountExports&) const = default;
};
