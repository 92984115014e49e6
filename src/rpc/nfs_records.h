#pragma once
// Arguments and results of NFS version 2 (RFC 1094, section 2). Results whose status isn't NFS_OK end behind it.

#include "rpc/nfs_enum.h"
#include "rpc/nfs_file_handle.h"
#include "rpc/nfs_list.h"

struct ZnNFSBool : ZnXdrRecord<ZnNFSBool> {
  bool value = false;

  template <class Io>
  bool Fields(Io& io) {
    return io.Bool(value);
  }
  bool operator==(const ZnNFSBool&) const = default;
};

struct ZnNFSStat : ZnXdrRecord<ZnNFSStat> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status);
  }
  bool operator==(const ZnNFSStat&) const = default;
};

struct ZnNFSTimeVal : ZnXdrRecord<ZnNFSTimeVal> {
  uint32_t seconds = 0;  // since 1970, UTC
  uint32_t useconds = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(seconds) && io.U32(useconds);
  }
  bool operator==(const ZnNFSTimeVal&) const = default;
};

// Attributes of a file, 68 bytes.
struct ZnNFSFattr : ZnXdrRecord<ZnNFSFattr> {
  ZnNFSEnum::FileType type = ZnNFSEnum::NFNON;
  uint32_t mode = 0;  // with the bits of the type
  uint32_t nlink = 0;
  uint32_t uid = 0;
  uint32_t gid = 0;
  uint32_t size = 0;       // bytes
  uint32_t blocksize = 0;  // bytes
  uint32_t rdev = 0;
  uint32_t blocks = 0;
  uint32_t fsid = 0;
  uint32_t fileid = 0;
  ZnNFSTimeVal atime;
  ZnNFSTimeVal mtime;
  ZnNFSTimeVal ctime;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(type) && io.U32(mode) && io.U32(nlink) && io.U32(uid) && io.U32(gid) && io.U32(size) &&
           io.U32(blocksize) && io.U32(rdev) && io.U32(blocks) && io.U32(fsid) && io.U32(fileid) && io.Record(atime) &&
           io.Record(mtime) && io.Record(ctime);
  }
  bool operator==(const ZnNFSFattr&) const = default;
};

// Attributes to set, 32 bytes. kUnchanged in a field leaves the attribute as it is.
struct ZnNFSSattr : ZnXdrRecord<ZnNFSSattr> {
  uint32_t mode = 0;
  uint32_t uid = 0;
  uint32_t gid = 0;
  uint32_t size = 0;
  ZnNFSTimeVal atime;
  ZnNFSTimeVal mtime;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(mode) && io.U32(uid) && io.U32(gid) && io.U32(size) && io.Record(atime) && io.Record(mtime);
  }
  bool operator==(const ZnNFSSattr&) const = default;
};

// Results.

struct ZnNFSAttrstat : ZnXdrRecord<ZnNFSAttrstat> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnNFSFattr attributes;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || io.Record(attributes));
  }
  bool operator==(const ZnNFSAttrstat&) const = default;
};

struct ZnNFSDiropres : ZnXdrRecord<ZnNFSDiropres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnNFSFileHandle file;
  ZnNFSFattr attributes;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || (io.Record(file) && io.Record(attributes)));
  }
  bool operator==(const ZnNFSDiropres&) const = default;
};

struct ZnNFSReadlinkres : ZnXdrRecord<ZnNFSReadlinkres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnRPCName data;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || io.Name(data));
  }
  bool operator==(const ZnNFSReadlinkres&) const = default;
};

struct ZnNFSReadres : ZnXdrRecord<ZnNFSReadres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnNFSFattr attributes;
  ZnRPCByteBuffer data;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || (io.Record(attributes) && io.Opaque(data)));
  }
  bool operator==(const ZnNFSReadres&) const = default;
};

struct ZnNFSDirEntry : ZnXdrRecord<ZnNFSDirEntry> {
  uint32_t fileid = 0;
  ZnRPCName name;
  uint32_t cookie = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(fileid) && io.Name(name) && io.U32(cookie);
  }
  bool operator==(const ZnNFSDirEntry&) const = default;
};

struct ZnNFSReaddirres : ZnXdrRecord<ZnNFSReaddirres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  ZnNFSList<ZnNFSDirEntry> entries;
  bool eof = false;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK || (io.Record(entries) && io.Bool(eof)));
  }
  bool operator==(const ZnNFSReaddirres&) const = default;
};

struct ZnNFSStatfsres : ZnXdrRecord<ZnNFSStatfsres> {
  ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK;
  uint32_t tsize = 0;   // best transfer size, bytes
  uint32_t bsize = 0;   // bytes in a block
  uint32_t blocks = 0;  // in all
  uint32_t bfree = 0;   // blocks
  uint32_t bavail = 0;  // blocks free for ordinary users

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && (status != ZnNFSEnum::NFS_OK ||
                              (io.U32(tsize) && io.U32(bsize) && io.U32(blocks) && io.U32(bfree) && io.U32(bavail)));
  }
  bool operator==(const ZnNFSStatfsres&) const = default;
};

// Arguments. Those with names say whether all of them are well-formed.

struct ZnNFSDiropargs : ZnXdrRecord<ZnNFSDiropargs> {
  ZnNFSFileHandle dir;
  ZnRPCName name;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(dir) && io.Name(name);
  }
  bool WellFormed() const { return name.wellformed; }
  bool operator==(const ZnNFSDiropargs&) const = default;
};

struct ZnNFSSattrargs : ZnXdrRecord<ZnNFSSattrargs> {
  ZnNFSFileHandle file;
  ZnNFSSattr attributes;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(file) && io.Record(attributes);
  }
  bool operator==(const ZnNFSSattrargs&) const = default;
};

struct ZnNFSReadargs : ZnXdrRecord<ZnNFSReadargs> {
  ZnNFSFileHandle file;
  uint32_t offset = 0;      // bytes
  uint32_t count = 0;       // bytes
  uint32_t totalcount = 0;  // unused by the protocol

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(file) && io.U32(offset) && io.U32(count) && io.U32(totalcount);
  }
  bool operator==(const ZnNFSReadargs&) const = default;
};

struct ZnNFSWriteargs : ZnXdrRecord<ZnNFSWriteargs> {
  ZnNFSFileHandle file;
  uint32_t beginoffset = 0;  // unused by the protocol
  uint32_t offset = 0;       // bytes
  uint32_t totalcount = 0;   // unused by the protocol
  ZnRPCByteBuffer data;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(file) && io.U32(beginoffset) && io.U32(offset) && io.U32(totalcount) && io.Opaque(data);
  }
  bool operator==(const ZnNFSWriteargs&) const = default;
};

struct ZnNFSCreateargs : ZnXdrRecord<ZnNFSCreateargs> {
  ZnNFSDiropargs where;
  ZnNFSSattr attributes;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(where) && io.Record(attributes);
  }
  bool WellFormed() const { return where.WellFormed(); }
  bool operator==(const ZnNFSCreateargs&) const = default;
};

struct ZnNFSRenameargs : ZnXdrRecord<ZnNFSRenameargs> {
  ZnNFSDiropargs from;
  ZnNFSDiropargs to;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(from) && io.Record(to);
  }
  bool WellFormed() const { return from.WellFormed() && to.WellFormed(); }
  bool operator==(const ZnNFSRenameargs&) const = default;
};

struct ZnNFSLinkargs : ZnXdrRecord<ZnNFSLinkargs> {
  ZnNFSFileHandle from;
  ZnNFSDiropargs to;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(from) && io.Record(to);
  }
  bool WellFormed() const { return to.WellFormed(); }
  bool operator==(const ZnNFSLinkargs&) const = default;
};

struct ZnNFSSymlinkargs : ZnXdrRecord<ZnNFSSymlinkargs> {
  ZnNFSDiropargs from;
  ZnRPCName to;
  ZnNFSSattr attributes;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(from) && io.Name(to) && io.Record(attributes);
  }
  bool WellFormed() const { return from.WellFormed() && to.wellformed; }
  bool operator==(const ZnNFSSymlinkargs&) const = default;
};

struct ZnNFSReaddirargs : ZnXdrRecord<ZnNFSReaddirargs> {
  ZnNFSFileHandle dir;
  uint32_t cookie = 0;  // 0 to begin, else that of the last entry seen
  uint32_t count = 0;   // largest result, bytes

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(dir) && io.U32(cookie) && io.U32(count);
  }
  bool operator==(const ZnNFSReaddirargs&) const = default;
};
