// Level 1: users, from the configuration. An edited profile is noticed here, at the levels that it makes.

#include "config/smbnfs_config.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"

void ZnSMBNFSFileSystem::BUpdateNodeContents(ZnSMBNFSCommand* command) {
  if (command->node && !command->node->sharenode) FollowProfile(false);
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (node->IsRoot()) return NBUpdateUserList(command);
  if (node->IsInside() || !node->share.IsEmpty()) return BUpdateDirList(command);
  if (!node->machine.IsEmpty()) return BUpdateShareList(command);
  NBUpdateMachineList(command);
}

void ZnSMBNFSFileSystem::NBUpdateUserList(ZnSMBNFSCommand* command) {
  if (root_->contentstime != ZnMoment{}) return Continue(command);

  ZnDList<ZnUniString> users;
  ZnUniString error = ZnSMBNFSConfig::ListUsers(users);
  if (!error.IsEmpty()) Log400(error);
  PruneMissing(root_.get(), {users.begin(), users.end()});
  for (const ZnUniString& name : users) {
    if (!root_->children.Find(name)) UpdateUser(nullptr, name);
  }
  root_->contentstime = ZnSteadyClock::now();
  root_->attribs.mtime = ZnNfsTime(ZnTimeVal::now());
  Continue(command);
}

// `node` is the user's, or null for one that isn't in the tree yet.
bool ZnSMBNFSFileSystem::UpdateUser(ZnSMBNFSNode* node, const ZnUniString& name) {
  ZnSMBNFSUserConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadUserConfig(name, config);
  if (!error.IsEmpty()) {
    Log401(error);
    return false;
  }
  if (!node) {
    node = AddTopNode(root_.get(), name);
    node->user = name;
    node->userinfo = MakeUser();
  }
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
  node->userinfo->config = std::move(config);
  return true;
}
