#pragma once
// Small fields that many sections share: dialect names, capability bits, access modes, file attributes, open functions.

#include "smb/wire/client_values.h"
#include "smb/wire/smb_visitors.h"

// One entry of the dialect list of a negotiate request. (MS-CIFS 2.2.4.52.1)
struct ZnSMBCDialect : ZnSmbRecord<ZnSMBCDialect> {
  ZnUniString string;
  template <class Io>
  bool Fields(Io& io) {
    return io.Constant(2) && io.Ansi(string);
  }
  bool operator==(const ZnSMBCDialect&) const = default;
};

// What a server can do, and of that what the client makes use of. (MS-CIFS 2.2.4.52.2, MS-SMB 2.2.4.5.2.1)
struct ZnSMBCCapabilities : ZnSmbRecord<ZnSMBCCapabilities> {
  bool raw_mode = false;
  bool mpx_mode = false;
  bool unicode = false;
  bool large_files = false;
  bool nt_commands = false;
  bool rpc_remote_apis = false;
  bool nt_status = false;
  bool level_ii_oplocks = false;
  bool lock_and_read = false;
  bool nt_find = false;
  bool reserved_use = false;
  bool dfs = false;
  bool passthrough_levels = false;  // file information at the levels of the server's own system
  bool large_readx = false;
  bool large_writex = false;
  bool extended_security = false;  // logons carry tokens, and the reply to negotiate has its other form
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(raw_mode, 1) && io.LowBits(mpx_mode, 1) && io.LowBits(unicode, 1) && io.LowBits(large_files, 1) &&
           io.LowBits(nt_commands, 1) && io.LowBits(rpc_remote_apis, 1) && io.LowBits(nt_status, 1) &&
           io.LowBits(level_ii_oplocks, 1) && io.LowBits(lock_and_read, 1) && io.LowBits(nt_find, 1) &&
           io.LowBits(reserved_use, 1) && io.LowIgnored(1) && io.LowBits(dfs, 1) && io.LowBits(passthrough_levels, 1) &&
           io.LowBits(large_readx, 1) && io.LowBits(large_writex, 1) && io.LowIgnored(15) &&
           io.LowBits(extended_security, 1);
  }
  bool operator==(const ZnSMBCCapabilities&) const = default;
};

// How a file is opened. (MS-CIFS 2.2.4.3.1)
struct ZnSMBCAccessMode : ZnSmbRecord<ZnSMBCAccessMode> {
  ZnSMBClientValues::Access access = ZnSMBClientValues::AccessRead;
  ZnSMBClientValues::Sharing sharing = ZnSMBClientValues::DenyCompat;
  uint8_t locality = 0;
  bool cache_mode = false;
  bool write_through = false;
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(access, 3) && io.LowZero(1) && io.LowBits(sharing, 3) && io.LowZero(1) &&
           io.LowBits(locality, 3) && io.LowZero(1) && io.LowBits(cache_mode, 1) && io.LowZero(1) &&
           io.LowBits(write_through, 1) && io.LowZero(1);
  }
  bool operator==(const ZnSMBCAccessMode&) const = default;
};

// Attributes of a file, or of the files that a request may find. (MS-CIFS 2.2.1.2.4)
struct ZnSMBCFileAttributes : ZnSmbRecord<ZnSMBCFileAttributes> {
  bool read_only = false;
  bool hidden = false;
  bool system = false;
  bool volume = false;
  bool directory = false;
  bool archive = false;
  template <class Io>
  bool Fields(Io& io) {
    return LowByte(io) && io.LowIgnored(2) && io.LowIgnored(8);
  }
  // The six bits alone, with which the 32-bit form begins too.
  template <class Io>
  bool LowByte(Io& io) {
    return io.LowBits(read_only, 1) && io.LowBits(hidden, 1) && io.LowBits(system, 1) && io.LowBits(volume, 1) &&
           io.LowBits(directory, 1) && io.LowBits(archive, 1);
  }
  bool operator==(const ZnSMBCFileAttributes&) const = default;
};

// The 32-bit form. (MS-CIFS 2.2.1.2.3)
struct ZnSMBCFileXAttributes : ZnSmbRecord<ZnSMBCFileXAttributes> {
  ZnSMBCFileAttributes attribs;  // the low six bits
  bool normal = false;
  bool temporary = false;
  bool compressed = false;
  bool posix_semantics = false;
  bool backup_semantics = false;
  bool delete_on_close = false;
  bool sequential_scan = false;
  bool random_access = false;
  bool no_buffering = false;
  bool write_through = false;
  template <class Io>
  bool Fields(Io& io) {
    return attribs.LowByte(io) && io.LowIgnored(1) && io.LowBits(normal, 1) && io.LowBits(temporary, 1) &&
           io.LowIgnored(2) && io.LowBits(compressed, 1) && io.LowIgnored(12) && io.LowBits(posix_semantics, 1) &&
           io.LowBits(backup_semantics, 1) && io.LowBits(delete_on_close, 1) && io.LowBits(sequential_scan, 1) &&
           io.LowBits(random_access, 1) && io.LowBits(no_buffering, 1) && io.LowIgnored(1) &&
           io.LowBits(write_through, 1);
  }
  bool operator==(const ZnSMBCFileXAttributes&) const = default;
};

// What to do when the file exists, and when it doesn't. (MS-CIFS 2.2.4.41.1)
struct ZnSMBCOpenFunction : ZnSmbRecord<ZnSMBCOpenFunction> {
  ZnSMBClientValues::Openfunction action = ZnSMBClientValues::OFFail;
  bool create = false;
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(action, 2) && io.LowZero(2) && io.LowBits(create, 1) && io.LowZero(3) && io.LowZero(8);
  }
  bool operator==(const ZnSMBCOpenFunction&) const = default;
};
