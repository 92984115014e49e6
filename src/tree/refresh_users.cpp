// Level 1: users, from the configuration. This is also where a changed profile is noticed.

#include "config/smbnfs_config.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"

void ZnSMBNFSFileSystem::BUpdateNodeContents(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (node->IsRoot()) return NBUpdateUserList(command);
  if (node->IsInside() || !node->share.IsEmpty()) return BUpdateDirList(command);
  if (!node->machine.IsEmpty()) return BUpdateShareList(command);
  NBUpdateMachineList(command);
}

void ZnSMBNFSFileSystem::NBUpdateUserList(ZnSMBNFSCommand* command) {
  bool changed = false;
  ZnUniString error = ZnSMBNFSConfig::Refresh(changed);
  if (!error.IsEmpty()) Log400(error);
  if (changed && error.IsEmpty()) {
    for (ZnSMBNFSSessionBase* session : sessions()) session->NeedsConfigReload(true);
  }
  if (!changed && root_->contentstime != ZnMoment{}) return Continue(command);

  ZnDList<ZnUniString> users;
  error = ZnSMBNFSConfig::ListUsers(users);
  if (!error.IsEmpty()) Log400(error);
  PruneMissing(root_.get(), {users.begin(), users.end()});
  for (const ZnUniString& name : users) {
    auto* child = root_->children.Find(name);
    if (!child || changed) UpdateUser(child ? child->node : nullptr, name);
  }
  root_->contentstime = ZnSteadyClock::now();
  root_->attribs.mtime = ZnNfsTime(ZnTimeVal::now());
  Continue(command);
}

// `node` is the user's, or null for one that isn't in the tree yet.
void ZnSMBNFSFileSystem::UpdateUser(ZnSMBNFSNode* node, const ZnUniString& name) {
  ZnSMBNFSUserConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadUserConfig(name, config);
  if (!error.IsEmpty()) return Log401(error);
  if (!node) {
    node = AddTopNode(root_.get(), name);
    node->user = name;
    node->userinfo = MakeUser();
  }
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
  node->userinfo->config = std::move(config);
}
