#include "runtime/unix_user.h"

#include <grp.h>

#include <algorithm>

#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"
#include "runtime/user_database.h"

namespace {

std::vector<gid_t> ReadGroups(const ZnUniString& name, gid_t gid) {
  auto hostname = ZnHostText(name, ZnSysEncoding::userdb, ZnSysEncoding::userdbopt);
  if (!hostname) return {};
  int count = 16;
  std::vector<gid_t> groups;
  int told = -1;
  while (told < 0) {
    groups.resize(static_cast<size_t>(count));
    told = getgrouplist(ZnCStringOf(*hostname), gid, groups.data(), &count);
    // Too small: `count` says what it takes. A host that doesn't say gets twice the room.
    if (told < 0) count = std::max(count, static_cast<int>(groups.size()) * 2);
  }
  groups.resize(static_cast<size_t>(count));
  return groups;
}

}  // namespace

ZnUnixUser::ZnUnixUser(const ZnUniString& name, bool readgroups) : name_(name) {
  ZnUserDatabaseIterator users;
  found_ = users.Find(name);
  if (!found_) return;
  uid_ = users.Current().UserNumber();
  gid_ = users.Current().GroupNumber();
  if (readgroups) groups_ = ReadGroups(name, gid_);
}

void ZnUnixUser::LimitGroups(size_t count) { groups_.resize(std::min(count, groups_.size())); }

bool ZnUnixUser::MemberOf(gid_t gid) const {
  return found_ && (gid == gid_ || std::find(groups_.begin(), groups_.end(), gid) != groups_.end());
}
