#pragma once
// What each kind of operation works on from its start to its callback. Pointers are the caller's objects. One of these
// exists at a time, and it goes when the operation ends.

#include <variant>

#include "runtime/byte_buffer.h"
#include "runtime/clock.h"
#include "runtime/list.h"
#include "smb/client/disk_space.h"
#include "smb/client/file_object.h"
#include "smb/client/server_objects.h"
#include "smb/client/share_object.h"

namespace ZnSMBOperation {

struct Logon {
  ZnUniString user;
  ZnUniString password;

  Logon(const ZnUniString& userName, const ZnUniString& secret) : user(userName), password(secret) {
    password.MarkSecret();
  }
};

struct TreeConnect {
  ZnSMBCTreeObject* tree;
};

struct Open {
  ZnSMBCFileObject* file;
};

struct Read {
  uint16_t fid;
  uint16_t wanted;  // bytes in all
  uint16_t asked;   // bytes of the request in flight, and where
  uint32_t offset;
  ZnByteBuffer* buffer;
};

struct Download {
  ZnByteBuffer* buffer;
  uint16_t fid = 0;
  uint32_t size = 0;
};

struct Write {
  uint16_t fid;
  uint32_t offset;  // of the request in flight
  ZnByteBuffer bytes;
  size_t done = 0;
  uint16_t chunk = 0;  // bytes of the request in flight
};

struct Listing {
  ZnSMBCDirectoryObject directory;
  ZnDList<ZnSMBCFileObject>* list;
  ZnSMBClientValues::Trans2Command step = ZnSMBClientValues::Trans2FindFirst2;
  uint16_t sid = 0;
  uint32_t resumekey = 0;
  size_t entries = 0;  // that have come
  ZnMoment began = ZnSteadyClock::now();
};

struct FileInfo {
  ZnSMBCFileObject* file;
  ZnSMBClientValues::FileInfoLevel level;
};

struct SetFileInfo {
  ZnSMBClientValues::Trans2Command command;
};

struct DiskSpace {
  ZnSMBDiskSpace* space;
};

struct Transaction {
  ZnByteBuffer* setup;
  ZnByteBuffer* params;
  ZnByteBuffer* data;
};

struct Shares {
  ZnDList<ZnSMBCShareObject>* list;
  bool longNames;
};

struct Servers {
  ZnDList<ZnSMBCServerObject>* list;
  ZnUniString domain;
  uint32_t type;
  bool longNames;
};

struct User {
  ZnSMBCUserObject* user;
};

struct Clock {
  ZnSMBCTimeObject* time;
};

using Storage = std::variant<std::monostate, Logon, TreeConnect, Open, Read, Download, Write, Listing, FileInfo,
                             SetFileInfo, DiskSpace, Transaction, Shares, Servers, User, Clock>;

}  // namespace ZnSMBOperation
