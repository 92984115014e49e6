#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/unix_process.h"
#include "runtime/unix_user.h"

bool ZnUnixProcess::core_dumps = false;

void ZnUnixProcess::AllowCoreDumps(bool allow) {
  core_dumps = allow;
  KeepCoreDumps();
}

void ZnUnixProcess::KeepCoreDumps() { prctl(PR_SET_DUMPABLE, core_dumps ? 1 : 0, 0, 0, 0); }

ZnUnixProcess::ZnUnixProcess() : effective_uid_(geteuid()), effective_gid_(getegid()) {}

int ZnUnixProcess::SetEffectiveUid(uid_t uid) { return seteuid(uid); }

int ZnUnixProcess::SetEffectiveGid(gid_t gid) { return setegid(gid); }

int ZnUnixProcess::SetGroups(const std::vector<gid_t>& groups) {
  return setgroups(groups.size(), groups.empty() ? nullptr : groups.data());
}

bool ZnUnixProcess::SetUidError(const char* call, const ZnUniString& argument) {
  uid_error_ = ZnUnixError(errno, call, argument);
  identity_failed_ = true;
  return false;
}

// Nothing was changed, so this isn't a failed change.
bool ZnUnixProcess::UserLookupFailed(const ZnUniString& names) {
  uid_error_ = ZnUnixError(ENOENT, "User lookup", names);
  return false;
}

bool ZnUnixProcess::ChangeUid(uid_t uid) {
  if (!identity_failed_ && uid == effective_uid_) return true;
  if (SetEffectiveUid(uid) < 0) return SetUidError("seteuid", ZnUniString::CreateFromUnsigned(uid));
  effective_uid_ = uid;
  KeepCoreDumps();
  return true;
}

bool ZnUnixProcess::ChangeGid(gid_t gid) {
  if (!identity_failed_ && gid == effective_gid_) return true;
  if (SetEffectiveGid(gid) < 0) return SetUidError("setegid", ZnUniString::CreateFromUnsigned(gid));
  effective_gid_ = gid;
  KeepCoreDumps();
  return true;
}

// The host may take fewer groups than the user has: one less each time until it does.
bool ZnUnixProcess::FixGroups(ZnUnixUser& user) {
  while (SetGroups(user.groups()) < 0) {
    if (errno != EINVAL || user.groups().empty()) {
      return SetUidError("setgroups", ZnUniString::CreateFromUnsigned(user.groups().size()));
    }
    user.LimitGroups(user.groups().size() - 1);
  }
  return true;
}

bool ZnUnixProcess::BecomeUser(ZnUnixUser& user) {
  if (!user.found()) return UserLookupFailed(user.name());
  if (!identity_failed_ && effective_uid_ == user.uid() && effective_gid_ == user.gid()) return true;
  // Only root may change the groups.
  const bool changed = ChangeUid(0) && FixGroups(user) && ChangeGid(user.gid()) && ChangeUid(user.uid());
  if (changed) identity_failed_ = false;
  return changed;
}

bool ZnUnixProcess::BecomeRoot() {
  ZnUnixUser root("root", true);
  // The host's list of users may be out of reach just now: that mustn't leave us somebody else.
  return root.found() ? BecomeUser(root) : ChangeUid(0) && ChangeGid(0);
}

bool ZnUnixProcess::BecomeNobody() {
  for (const char* const name : {"nobody", "nouser"}) {
    ZnUnixUser user(name, true);
    if (user.found()) return BecomeUser(user);
  }
  return UserLookupFailed("'nobody' or 'nouser'");
}
