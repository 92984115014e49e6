#pragma once
// An account of the host by name, as it was when the object was made: what it takes to act as that user.

#include <sys/types.h>

#include <vector>

#include "runtime/uni_string.h"

class ZnUnixUser {
 public:
  // Looks `name` up, and its supplementary groups too with `readgroups`.
  ZnUnixUser(const ZnUniString& name, bool readgroups);

  // Whether the account exists. Without it the numbers below mean nothing, and are those of no user (-1).
  bool found() const { return found_; }
  const ZnUniString& name() const { return name_; }
  uid_t uid() const { return uid_; }
  gid_t gid() const { return gid_; }
  // As the host lists them, the user's own group among them; empty when they weren't read.
  const std::vector<gid_t>& groups() const { return groups_; }
  // Keeps the first `count` groups only, for hosts that take no more.
  void LimitGroups(size_t count);

  // The user's own group or one of the groups that were read.
  bool MemberOf(gid_t gid) const;

 private:
  ZnUniString name_;
  bool found_ = false;
  uid_t uid_ = static_cast<uid_t>(-1);
  gid_t gid_ = static_cast<gid_t>(-1);
  std::vector<gid_t> groups_;
};
