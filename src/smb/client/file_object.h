#pragma once
// Files and directories as the client's operations take them and fill them. Plain values, owned by the caller and
// copied freely: a copy of a file object shares its texts with the original, so a tree of many nodes can keep one each.

#include <optional>

#include "runtime/time_val.h"
#include "smb/client/tree_object.h"
#include "smb/wire/encodings.h"

struct ZnSMBCBaseFileObject : ZnSMBCTreeObject {
  static constexpr uint16_t kNotOpen = 0xFFFF;

  ZnUniString path;         // in the share, from its top, with backslashes; of a listed entry, the entry's name alone
  uint16_t fid = kNotOpen;  // file id while open
  bool isopen = false;
  uint64_t size = 0;   // bytes; servers of old dialects count in 32 bits
  ZnTimeVal modified;  // last modified

  ZnSMBCBaseFileObject() : ZnSMBCBaseFileObject(ZnSMBCTreeObject(), ZnUniString()) {}
  ZnSMBCBaseFileObject(const ZnSMBCTreeObject& tree, const ZnUniString& pathInShare)
      : ZnSMBCTreeObject(tree), path(pathInShare), modified(ZnTimeVal::now()) {}
};

struct ZnSMBCFileObject : ZnSMBCBaseFileObject {
  ZnUniString altname;  // alternative (8.3) name, or what a name level of file information gave
  ZnSMBClientValues::Access access = ZnSMBClientValues::AccessRead;
  ZnSMBCFileAttributes attribs;
  ZnTimeVal created;
  ZnTimeVal accessed;

  ZnSMBCFileObject() : ZnSMBCFileObject(ZnSMBCTreeObject(), ZnUniString()) {}
  ZnSMBCFileObject(const ZnSMBCTreeObject& tree, const ZnUniString& pathInShare)
      : ZnSMBCBaseFileObject(tree, pathInShare), created(modified), accessed(modified) {}
};

// What is to be set of a file or directory. What isn't told is left as it is.
struct ZnSMBCFileChange {
  std::optional<ZnSMBCFileAttributes> attribs;  // all of them
  std::optional<ZnTimeVal> accessed;
  std::optional<ZnTimeVal> modified;
};

// A directory whose contents are to be listed.
struct ZnSMBCDirectoryObject : ZnSMBCBaseFileObject {
  using ZnSMBCBaseFileObject::ZnSMBCBaseFileObject;
};
