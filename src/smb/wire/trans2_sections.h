#pragma once
// What travels inside CmdTrans2: the parameter blocks of its sub-commands, directory entries, file and file-system
// information. (MS-CIFS 2.2.6, 2.2.8)

#include "smb/wire/encodings.h"
#include "smb/wire/times.h"

// Parameters of a request. `command` decides which members stand on the wire.
struct ZnSMBCTrans2_ReqParams : ZnSmbRecord<ZnSMBCTrans2_ReqParams> {
  ZnSMBClientValues::Trans2Command command;
  ZnEncoding encoding;
  ZnSMBCFileAttributes attribs;  // the kinds of file that may be found
  uint16_t search_id = 0;
  uint16_t search_count = 0;
  uint16_t level = 0;
  uint32_t storage_type = 0;
  uint32_t resume_key = 0;
  bool close_after_request = false;
  bool close_at_end = false;
  bool return_resume_keys = false;
  bool continue_from_last = false;
  bool backup_intent = false;
  uint16_t fid = 0;
  ZnUniString filename;  // never padded

  ZnSMBCTrans2_ReqParams(ZnSMBClientValues::Trans2Command subcommand, ZnEncoding strings)
      : command(subcommand), encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    switch (command) {
      case ZnSMBClientValues::Trans2FindFirst2:
        return io.Record(attribs) && io.U16le(search_count) && Flags(io) && io.U16le(level) && io.U32le(storage_type) &&
               io.StringAt(filename, encoding, 1);
      case ZnSMBClientValues::Trans2FindNext2:
        return io.U16le(search_id) && io.U16le(search_count) && io.U16le(level) && io.U32le(resume_key) && Flags(io) &&
               io.StringAt(filename, encoding, 1);
      case ZnSMBClientValues::Trans2SetPathInfo:
        return io.U16le(level) && io.Reserved(4) && io.StringAt(filename, encoding, 1);
      case ZnSMBClientValues::Trans2SetFileInfo:
        return io.U16le(fid) && io.U16le(level) && io.Reserved(2);
      case ZnSMBClientValues::Trans2QueryFSInfo:
        return io.U16le(level);
    }
    return io.Fail();
  }
  template <class Io>
  bool Flags(Io& io) {
    return io.LowBits(close_after_request, 1) && io.LowBits(close_at_end, 1) && io.LowBits(return_resume_keys, 1) &&
           io.LowBits(continue_from_last, 1) && io.LowBits(backup_intent, 1) && io.LowIgnored(11);
  }
  bool operator==(const ZnSMBCTrans2_ReqParams&) const = default;
};

// Parameters of a reply.
struct ZnSMBCTrans2_RespParams : ZnSmbRecord<ZnSMBCTrans2_RespParams> {
  ZnSMBClientValues::Trans2Command command;
  uint16_t search_id = 0;
  uint16_t search_count = 0;  // entries in the data
  uint16_t end_of_search = 0;
  uint16_t ea_error_offset = 0;
  uint16_t last_name_offset = 0;

  explicit ZnSMBCTrans2_RespParams(ZnSMBClientValues::Trans2Command subcommand) : command(subcommand) {}
  template <class Io>
  bool Fields(Io& io) {
    switch (command) {
      case ZnSMBClientValues::Trans2FindFirst2:
        return io.U16le(search_id) && Found(io);
      case ZnSMBClientValues::Trans2FindNext2:
        return Found(io);
      case ZnSMBClientValues::Trans2SetPathInfo:
      case ZnSMBClientValues::Trans2SetFileInfo:
      case ZnSMBClientValues::Trans2QueryFSInfo:
        return io.U16le(ea_error_offset);
    }
    return io.Fail();
  }
  template <class Io>
  bool Found(Io& io) {
    return io.U16le(search_count) && io.U16le(end_of_search) && io.U16le(ea_error_offset) && io.U16le(last_name_offset);
  }
  bool operator==(const ZnSMBCTrans2_RespParams&) const = default;
};

// One entry of a listing at level 260; no other level is known. `offset` is the entry's position in the data plus 1.
// The next entry is at `next_offset` from the start of this one; in the last entry that number means nothing.
// (MS-CIFS 2.2.8.1.7)
struct ZnSMBCTrans2_DIRENTRY : ZnSmbRecord<ZnSMBCTrans2_DIRENTRY> {
  static constexpr uint16_t kLevel = 260;
  static constexpr size_t kFixedSize = 94;  // everything before the file name
  static constexpr size_t kShortNameField = 24;
  static constexpr size_t kLongestShortName = 12;  // characters

  ZnEncoding filename_encoding;
  ZnEncoding shortname_encoding;
  uint16_t level;
  size_t offset;
  uint32_t next_offset = 0;
  uint32_t file_index = 0;  // the resume key
  ZnSMBCTimeDCE create_time;
  ZnSMBCTimeDCE last_access_time;
  ZnSMBCTimeDCE last_write_time;
  ZnSMBCTimeDCE last_change_time;
  uint64_t end_of_file = 0;
  uint64_t allocation_size = 0;
  ZnSMBCFileXAttributes xattribs;
  uint32_t ea_size = 0;
  ZnUniString shortname;
  ZnUniString filename;

  ZnSMBCTrans2_DIRENTRY(ZnEncoding filenameEncoding, ZnEncoding shortnameEncoding, uint16_t entryLevel, size_t start)
      : filename_encoding(filenameEncoding), shortname_encoding(shortnameEncoding), level(entryLevel), offset(start) {}
  template <class Io>
  bool Fields(Io& io) {
    if (level != kLevel) return io.Fail();
    size_t start = io.Offset();
    auto filenameLength = static_cast<uint32_t>(ZnSmbTextSize(filename, filename_encoding));
    return io.U32le(next_offset) && io.U32le(file_index) && io.Record(create_time) && io.Record(last_access_time) &&
           io.Record(last_write_time) && io.Record(last_change_time) && io.U64le(end_of_file) &&
           io.U64le(allocation_size) && io.Record(xattribs) && io.U32le(filenameLength) && io.U32le(ea_size) &&
           ShortName(io) && io.TextAt(filename, filename_encoding, offset + io.Offset() - start, filenameLength);
  }
  template <class Io>
  bool ShortName(Io& io) {
    auto length = static_cast<uint8_t>(ZnSmbTextSize(shortname, shortname_encoding));
    if (!io.U8(length) || !io.Reserved(1)) return false;
    size_t characters = shortname_encoding == ZnCodeset::Utf16Lsb ? length / 2 : length;
    if (characters > kLongestShortName) return io.Fail();
    size_t end = io.Offset() + kShortNameField;
    return io.TextAt(shortname, shortname_encoding, 1, length) && io.PadTo(end);
  }
  bool operator==(const ZnSMBCTrans2_DIRENTRY&) const = default;
};

// What is to be set about one file; `level` (a ZnSMBClientValues::FileInfoLevel) decides which members stand on the
// wire. (MS-CIFS 2.2.8.4.1, 2.2.8.4.3)
struct ZnSMBCTrans2_FILEINFO : ZnSmbRecord<ZnSMBCTrans2_FILEINFO> {
  uint16_t level;
  // FileInfoOldAttribs
  ZnSMBCFileAttributes attribs;
  ZnSMBCDate old_create_date;
  ZnSMBCTime old_create_time;
  ZnSMBCDate old_access_date;
  ZnSMBCTime old_access_time;
  ZnSMBCDate old_change_date;
  ZnSMBCTime old_change_time;
  uint32_t old_size = 0;
  uint32_t old_allocation_size = 0;
  // FileInfoAttribs
  ZnSMBCFileXAttributes xattribs;
  ZnSMBCTimeDCE create_time;
  ZnSMBCTimeDCE last_access_time;
  ZnSMBCTimeDCE last_write_time;
  ZnSMBCTimeDCE last_change_time;

  explicit ZnSMBCTrans2_FILEINFO(uint16_t infoLevel) : level(infoLevel) {}
  template <class Io>
  bool Fields(Io& io) {
    switch (level) {
      case ZnSMBClientValues::FileInfoOldAttribs:
        return io.Record(old_create_date) && io.Record(old_create_time) && io.Record(old_access_date) &&
               io.Record(old_access_time) && io.Record(old_change_date) && io.Record(old_change_time) &&
               io.U32le(old_size) && io.U32le(old_allocation_size) && io.Record(attribs);
      case ZnSMBClientValues::FileInfoAttribs:
        return io.Record(create_time) && io.Record(last_access_time) && io.Record(last_write_time) &&
               io.Record(last_change_time) && io.Record(xattribs);
    }
    return io.Fail();
  }
  bool operator==(const ZnSMBCTrans2_FILEINFO&) const = default;
};

// A new name for a file, within its directory. (MS-FSCC 2.4.42.1, by way of MS-SMB 2.2.2.3.5)
struct ZnSMBCTrans2_RENAMEINFO : ZnSmbRecord<ZnSMBCTrans2_RENAMEINFO> {
  static constexpr uint16_t kLevel = 1010;

  ZnEncoding encoding;
  bool replace = false;  // what has the name already
  ZnUniString name;      // no path

  explicit ZnSMBCTrans2_RENAMEINFO(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    auto length = static_cast<uint32_t>(ZnSmbTextSize(name, encoding));
    return io.U8(replace) && io.Reserved(3) && io.Reserved(4) && io.U32le(length) &&
           io.TextAt(name, encoding, 1, length);
  }
  bool operator==(const ZnSMBCTrans2_RENAMEINFO&) const = default;
};

// A new size for a file. (MS-CIFS 2.2.8.4.6)
struct ZnSMBCTrans2_ENDOFFILE : ZnSmbRecord<ZnSMBCTrans2_ENDOFFILE> {
  static constexpr uint16_t kLevel = 260;

  uint64_t end_of_file = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U64le(end_of_file);
  }
  bool operator==(const ZnSMBCTrans2_ENDOFFILE&) const = default;
};

// The size of a file system. (MS-CIFS 2.2.8.2.4)
struct ZnSMBCTrans2_FSSIZE : ZnSmbRecord<ZnSMBCTrans2_FSSIZE> {
  static constexpr uint16_t kLevel = 259;

  uint64_t units = 0;
  uint64_t available_units = 0;
  uint32_t sectors_per_unit = 0;
  uint32_t bytes_per_sector = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U64le(units) && io.U64le(available_units) && io.U32le(sectors_per_unit) && io.U32le(bytes_per_sector);
  }
  bool operator==(const ZnSMBCTrans2_FSSIZE&) const = default;
};
