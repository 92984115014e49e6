#pragma once
// Sections of the file commands. Sections that aren't here are empty: ZnSMBCNoWords and ZnSMBCNoData.

#include "smb/wire/common_sections.h"
#include "smb/wire/encodings.h"
#include "smb/wire/times.h"

// One path, after a format byte: the data of most commands of the core protocol.
struct ZnSMBCPath_ReqData : ZnSmbRecord<ZnSMBCPath_ReqData> {
  ZnEncoding encoding;
  ZnUniString path;
  explicit ZnSMBCPath_ReqData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Path(path, encoding);
  }
  bool operator==(const ZnSMBCPath_ReqData&) const = default;
};

// Open, command 2 (MS-CIFS 2.2.4.3)

struct ZnSMBCOpen_ReqWords : ZnSmbRecord<ZnSMBCOpen_ReqWords> {
  ZnSMBCAccessMode access;
  ZnSMBCFileAttributes attribs;  // the kinds of file that may be found
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(access) && io.Record(attribs);
  }
  bool operator==(const ZnSMBCOpen_ReqWords&) const = default;
};
using ZnSMBCOpen_ReqData = ZnSMBCPath_ReqData;

struct ZnSMBCOpen_RespWords : ZnSmbRecord<ZnSMBCOpen_RespWords> {
  uint16_t fid = 0;
  ZnSMBCFileAttributes attribs;
  ZnTimeVal last_write_time;
  uint32_t file_size = 0;
  uint16_t access = 0;  // as granted; the low bits are a ZnSMBClientValues::Access
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(fid) && io.Record(attribs) && io.Seconds(last_write_time) && io.U32le(file_size) &&
           io.U16le(access);
  }
  bool operator==(const ZnSMBCOpen_RespWords&) const = default;
};

// Close, command 4 (MS-CIFS 2.2.4.5)

struct ZnSMBCClose_ReqWords : ZnSmbRecord<ZnSMBCClose_ReqWords> {
  uint16_t fid = 0;
  ZnTimeVal last_write_time;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(fid) && io.Seconds(last_write_time);
  }
  bool operator==(const ZnSMBCClose_ReqWords&) const = default;
};

// Flush, command 5 (MS-CIFS 2.2.4.6)

struct ZnSMBCFlush_ReqWords : ZnSmbRecord<ZnSMBCFlush_ReqWords> {
  uint16_t fid = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(fid);
  }
  bool operator==(const ZnSMBCFlush_ReqWords&) const = default;
};

// Delete, command 6 (MS-CIFS 2.2.4.7)

struct ZnSMBCDelete_ReqWords : ZnSmbRecord<ZnSMBCDelete_ReqWords> {
  ZnSMBCFileAttributes attribs;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(attribs);
  }
  bool operator==(const ZnSMBCDelete_ReqWords&) const = default;
};

// Rename, command 7 (MS-CIFS 2.2.4.8)

using ZnSMBCRename_ReqWords = ZnSMBCDelete_ReqWords;

struct ZnSMBCRename_ReqData : ZnSmbRecord<ZnSMBCRename_ReqData> {
  ZnEncoding encoding;
  ZnUniString oldpath;
  ZnUniString newpath;
  explicit ZnSMBCRename_ReqData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Path(oldpath, encoding) && io.Path(newpath, encoding);
  }
  bool operator==(const ZnSMBCRename_ReqData&) const = default;
};

// Set attributes, command 9 (MS-CIFS 2.2.4.10)

struct ZnSMBCSetAttributes_ReqWords : ZnSmbRecord<ZnSMBCSetAttributes_ReqWords> {
  ZnSMBCFileAttributes attribs;
  ZnTimeVal last_write_time;  // zero leaves it
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(attribs) && io.Seconds(last_write_time) && io.Reserved(10);
  }
  bool operator==(const ZnSMBCSetAttributes_ReqWords&) const = default;
};

// Read, command 10 (MS-CIFS 2.2.4.11)

struct ZnSMBCRead_ReqWords : ZnSmbRecord<ZnSMBCRead_ReqWords> {
  uint16_t fid = 0;
  uint16_t count = 0;
  uint32_t offset = 0;
  uint16_t remaining = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(fid) && io.U16le(count) && io.U32le(offset) && io.U16le(remaining);
  }
  bool operator==(const ZnSMBCRead_ReqWords&) const = default;
};

struct ZnSMBCRead_RespWords : ZnSmbRecord<ZnSMBCRead_RespWords> {
  uint16_t count = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(count) && io.LowZero(16) && io.LowZero(16) && io.LowZero(16) && io.LowZero(16);
  }
  bool operator==(const ZnSMBCRead_RespWords&) const = default;
};

// The front of the data of a reply, and of a write's request: the file's bytes follow it.
struct ZnSMBCFileBlock : ZnSmbRecord<ZnSMBCFileBlock> {
  uint16_t length = 0;  // of what follows
  template <class Io>
  bool Fields(Io& io) {
    return io.Constant(1) && io.U16le(length);
  }
  bool operator==(const ZnSMBCFileBlock&) const = default;
};

// Write, command 11 (MS-CIFS 2.2.4.12)

using ZnSMBCWrite_ReqWords = ZnSMBCRead_ReqWords;

struct ZnSMBCWrite_RespWords : ZnSmbRecord<ZnSMBCWrite_RespWords> {
  uint16_t count = 0;  // bytes written
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(count);
  }
  bool operator==(const ZnSMBCWrite_RespWords&) const = default;
};

// Set times, command 34 (MS-CIFS 2.2.4.27)

struct ZnSMBCSetTimes_ReqWords : ZnSmbRecord<ZnSMBCSetTimes_ReqWords> {
  uint16_t fid = 0;
  ZnSMBCDate createdate;
  ZnSMBCTime createtime;
  ZnSMBCDate accessdate;
  ZnSMBCTime accesstime;
  ZnSMBCDate moddate;
  ZnSMBCTime modtime;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(fid) && io.Record(createdate) && io.Record(createtime) && io.Record(accessdate) &&
           io.Record(accesstime) && io.Record(moddate) && io.Record(modtime);
  }
  bool operator==(const ZnSMBCSetTimes_ReqWords&) const = default;
};

// Move, command 42 (MS-CIFS 2.2.4.36). Its strings have no format bytes.

struct ZnSMBCMove_ReqWords : ZnSmbRecord<ZnSMBCMove_ReqWords> {
  uint16_t tid2 = 0;  // the tree that the file goes to
  ZnSMBCOpenFunction openfunction;
  uint16_t flags = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(tid2) && io.Record(openfunction) && io.U16le(flags);
  }
  bool operator==(const ZnSMBCMove_ReqWords&) const = default;
};

struct ZnSMBCMove_ReqData : ZnSmbRecord<ZnSMBCMove_ReqData> {
  ZnEncoding encoding;
  ZnUniString oldpath;
  ZnUniString newpath;
  explicit ZnSMBCMove_ReqData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.String(oldpath, encoding) && io.String(newpath, encoding);
  }
  bool operator==(const ZnSMBCMove_ReqData&) const = default;
};

struct ZnSMBCMove_RespWords : ZnSmbRecord<ZnSMBCMove_RespWords> {
  uint16_t count = 0;  // files moved
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(count);
  }
  bool operator==(const ZnSMBCMove_RespWords&) const = default;
};

// Open, command 45 (MS-CIFS 2.2.4.41)

struct ZnSMBCOpenX_ReqWords : ZnSmbRecord<ZnSMBCOpenX_ReqWords> {
  ZnSMBCNoChainedCommand cc;
  bool additional_information = false;
  bool exclusive_oplock = false;
  bool batch_oplock = false;
  ZnSMBCAccessMode access;
  ZnSMBCFileAttributes attribs;  // the kinds of file that may be found
  ZnSMBCFileAttributes create_attribs;
  ZnTimeVal creation_time;
  ZnSMBCOpenFunction openfunction;
  uint32_t allocation_size = 0;
  uint32_t timeout = 0;  // milliseconds
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.LowBits(additional_information, 1) && io.LowBits(exclusive_oplock, 1) &&
           io.LowBits(batch_oplock, 1) && io.LowIgnored(13) && io.Record(access) && io.Record(attribs) &&
           io.Record(create_attribs) && io.Seconds(creation_time) && io.Record(openfunction) &&
           io.U32le(allocation_size) && io.U32le(timeout) && io.Reserved(4);
  }
  bool operator==(const ZnSMBCOpenX_ReqWords&) const = default;
};

struct ZnSMBCOpenX_ReqData : ZnSmbRecord<ZnSMBCOpenX_ReqData> {
  ZnEncoding encoding;
  ZnUniString path;
  explicit ZnSMBCOpenX_ReqData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.String(path, encoding);
  }
  bool operator==(const ZnSMBCOpenX_ReqData&) const = default;
};

struct ZnSMBCOpenX_RespWords : ZnSmbRecord<ZnSMBCOpenX_RespWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t fid = 0;
  ZnSMBCFileAttributes attribs;
  ZnTimeVal last_write_time;
  uint32_t file_size = 0;
  uint16_t access = 0;  // as granted; the low bits are a ZnSMBClientValues::Access
  uint16_t file_type = 0;
  uint16_t device_state = 0;
  uint8_t action = 0;  // 1 opened, 2 created, 3 truncated
  bool oplock = false;
  uint32_t server_fid = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(fid) && io.Record(attribs) && io.Seconds(last_write_time) && io.U32le(file_size) &&
           io.U16le(access) && io.U16le(file_type) && io.U16le(device_state) && io.LowBits(action, 2) &&
           io.LowIgnored(13) && io.LowBits(oplock, 1) && io.U32le(server_fid) && io.ReservedIfAny(2);
  }
  bool operator==(const ZnSMBCOpenX_RespWords&) const = default;
};

// Read, command 46 (MS-CIFS 2.2.4.42, MS-SMB 2.2.4.2). The file's bytes stand in the data section, where the words of
// the reply say.

struct ZnSMBCReadX_ReqWords : ZnSmbRecord<ZnSMBCReadX_ReqWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t fid = 0;
  uint32_t offset = 0;
  uint16_t count = 0;
  uint16_t min_count = 0;
  uint16_t remaining = 0;
  uint32_t high_offset = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(fid) && io.U32le(offset) && io.U16le(count) && io.U16le(min_count) &&
           io.Reserved(4) && io.U16le(remaining) && io.U32le(high_offset);
  }
  bool operator==(const ZnSMBCReadX_ReqWords&) const = default;
};

struct ZnSMBCReadX_RespWords : ZnSmbRecord<ZnSMBCReadX_RespWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t length = 0;       // bytes read
  uint16_t data_offset = 0;  // from the start of the message
  uint16_t high_length = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.Reserved(6) && io.U16le(length) && io.U16le(data_offset) && io.U16le(high_length) &&
           io.Reserved(8);
  }
  bool operator==(const ZnSMBCReadX_RespWords&) const = default;
};

// Write, command 47 (MS-CIFS 2.2.4.43, MS-SMB 2.2.4.3)

struct ZnSMBCWriteX_ReqWords : ZnSmbRecord<ZnSMBCWriteX_ReqWords> {
  // Of the file's bytes: behind these words, the byte count and one pad byte.
  static constexpr uint16_t kDataOffset = 64;

  ZnSMBCNoChainedCommand cc;
  uint16_t fid = 0;
  uint32_t offset = 0;
  uint16_t remaining = 0;
  uint16_t length = 0;
  uint16_t data_offset = kDataOffset;
  uint32_t high_offset = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(fid) && io.U32le(offset) && io.Reserved(6) && io.U16le(remaining) &&
           io.Reserved(2) && io.U16le(length) && io.U16le(data_offset) && io.U32le(high_offset);
  }
  bool operator==(const ZnSMBCWriteX_ReqWords&) const = default;
};

// The front of the data section.
struct ZnSMBCWriteX_ReqPad : ZnSmbRecord<ZnSMBCWriteX_ReqPad> {
  template <class Io>
  bool Fields(Io& io) {
    return io.Reserved(1);
  }
  bool operator==(const ZnSMBCWriteX_ReqPad&) const = default;
};

struct ZnSMBCWriteX_RespWords : ZnSmbRecord<ZnSMBCWriteX_RespWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t count = 0;  // bytes written
  uint16_t high_count = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(count) && io.Reserved(2) && io.U16le(high_count) && io.Reserved(2);
  }
  bool operator==(const ZnSMBCWriteX_RespWords&) const = default;
};

// Close a search, command 52 (MS-CIFS 2.2.4.48)

using ZnSMBCFindClose_ReqWords = ZnSMBCWord;

// Create, command 162 (MS-CIFS 2.2.4.64)

struct ZnSMBCNTCreateX_ReqWords : ZnSmbRecord<ZnSMBCNTCreateX_ReqWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t name_length = 0;  // bytes
  uint32_t flags = 0;
  uint32_t root_fid = 0;
  uint32_t desired_access = 0;
  uint64_t allocation_size = 0;
  ZnSMBCFileXAttributes xattribs;
  uint32_t share_access = 0;
  uint32_t disposition = 0;
  uint32_t options = 0;
  uint32_t impersonation = 0;
  uint8_t security_flags = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.Reserved(1) && io.U16le(name_length) && io.U32le(flags) && io.U32le(root_fid) &&
           io.U32le(desired_access) && io.U64le(allocation_size) && io.Record(xattribs) && io.U32le(share_access) &&
           io.U32le(disposition) && io.U32le(options) && io.U32le(impersonation) && io.U8(security_flags);
  }
  bool operator==(const ZnSMBCNTCreateX_ReqWords&) const = default;
};

using ZnSMBCNTCreateX_ReqData = ZnSMBCOpenX_ReqData;

struct ZnSMBCNTCreateX_RespWords : ZnSmbRecord<ZnSMBCNTCreateX_RespWords> {
  ZnSMBCNoChainedCommand cc;
  uint8_t oplock_level = 0;
  uint16_t fid = 0;
  uint32_t action = 0;
  ZnSMBCTimeDCE creation_time;
  ZnSMBCTimeDCE last_access_time;
  ZnSMBCTimeDCE last_write_time;
  ZnSMBCTimeDCE change_time;
  ZnSMBCFileXAttributes xattribs;
  uint64_t allocation_size = 0;
  uint64_t end_of_file = 0;
  uint16_t file_type = 0;
  uint16_t device_state = 0;
  bool directory = false;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U8(oplock_level) && io.U16le(fid) && io.U32le(action) && io.Record(creation_time) &&
           io.Record(last_access_time) && io.Record(last_write_time) && io.Record(change_time) && io.Record(xattribs) &&
           io.U64le(allocation_size) && io.U64le(end_of_file) && io.U16le(file_type) && io.U16le(device_state) &&
           io.LowBits(directory, 1) && io.LowIgnored(7);
  }
  bool operator==(const ZnSMBCNTCreateX_RespWords&) const = default;
};

// Query disk information, command 128 (MS-CIFS 2.2.4.57)

struct ZnSMBCQueryDisk_RespWords : ZnSmbRecord<ZnSMBCQueryDisk_RespWords> {
  uint16_t units = 0;
  uint16_t blocks_per_unit = 0;
  uint16_t block_size = 0;  // bytes
  uint16_t free_units = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(units) && io.U16le(blocks_per_unit) && io.U16le(block_size) && io.U16le(free_units) &&
           io.Reserved(2);
  }
  bool operator==(const ZnSMBCQueryDisk_RespWords&) const = default;
};
