// An edited profile counts at once. What it doesn't touch goes on as it was, with its connections and handles; what it
// no longer has goes, and so does what stands for something else under the new records.

#include <algorithm>

#include "config/smbnfs_config.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"

namespace {

using Nodes = std::vector<ZnWeakRef<ZnSMBNFSNode>>;

// Those that are there now: they may go while they are walked.
Nodes ChildrenOf(ZnSMBNFSNode* node) {
  Nodes children;
  for (auto& child : node->children) children.emplace_back(child.value);
  return children;
}

bool ContainsCaseless(const ZnDList<ZnUniString>& names, const ZnUniString& name) {
  return std::any_of(names.begin(), names.end(), [&](const ZnUniString& each) { return each.MatchCaseless(name); });
}

bool Offers(const ZnSMBNFSUserConfig& user, const ZnUniString& machine) {
  if (user.machinenames.Contains(machine)) return true;
  return user.machinenames.Contains("*") && !ContainsCaseless(user.notmachines, machine);
}

bool Offers(const ZnSMBNFSMachineConfig& machine, const ZnUniString& share) {
  if (machine.sharenames.Contains(share)) return true;
  return machine.sharenames.Contains("*") && !(machine.hidedollar && share.EndsWith("$"));
}

}  // namespace

void ZnSMBNFSFileSystem::FollowProfile(bool anyway) {
  bool changed = false;
  const ZnUniString error = ZnSMBNFSConfig::Refresh(changed, anyway);
  if (!error.IsEmpty()) Log409(error);
  if (!changed) return;
  Log408();
  for (const ZnUniString& warning : ZnSMBNFSConfig::Warnings()) Log407(warning);
  ZnSMBNFSConfig::LoadServerAgain(config_);
  if (!root_) return;

  ZnDList<ZnUniString> users;
  ZnSMBNFSConfig::ListUsers(users);
  PruneMissing(root_.get(), {users.begin(), users.end()});
  for (auto& user : ChildrenOf(root_.get())) {
    if (user) FollowUser(user.Get());
  }
  OutOfDate(root_.get(), true);
}

void ZnSMBNFSFileSystem::FollowUser(ZnSMBNFSNode* node) {
  if (!UpdateUser(node, node->name)) return Prune(node);
  OutOfDate(node, true);
  for (auto& machine : ChildrenOf(node)) {
    if (machine) FollowMachine(machine.Get());
  }
}

void ZnSMBNFSFileSystem::FollowMachine(ZnSMBNFSNode* node) {
  ZnWeakRef<ZnSMBNFSNode> usernode = node->parent;
  const ZnUniString name = node->name;
  if (!Offers(usernode->userinfo->config, name)) return Prune(node);
  ZnSMBNFSMachineConfig config;
  const ZnUniString error = ZnSMBNFSConfig::LoadMachineConfig(node->user, name, config);
  if (!error.IsEmpty()) {
    Log401(error);
    return Prune(node);
  }
  if (node->session && !node->session->config.SameConversation(config)) {
    // Under other records the same path is another file: the new machine has handles of its own.
    Prune(node);
    if (usernode) UpdateMachine(usernode.Get(), name);
    return;
  }
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
  OutOfDate(node, true);
  if (!node->session) return;
  node->session->config = config;
  for (auto& share : ChildrenOf(node)) {
    if (share) FollowShare(share.Get(), config);
  }
}

void ZnSMBNFSFileSystem::FollowShare(ZnSMBNFSNode* node, const ZnSMBNFSMachineConfig& machine) {
  if (!Offers(machine, node->share)) return Prune(node);
  if (!ZnSMBNFSConfig::CheckValueExistsInConfig(node->user, node->machine, node->share)) return Prune(node);
  ZnSMBNFSShareConfig config;
  const ZnUniString error = ZnSMBNFSConfig::LoadShareConfig(node->user, node->machine, node->share, config);
  if (!error.IsEmpty()) {
    Log402(error);
    return Prune(node);
  }
  if (node->tree && !node->tree->config.SameNames(config)) return Prune(node);
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
  if (!node->tree || node->tree->config == config) return;
  node->tree->config = config;
  NeedsUpdate(node);
}
