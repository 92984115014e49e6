// Level 3: the shares of a machine, from the configuration.

#include "config/smbnfs_config.h"
#include "model/age.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"
#include "tree/safe_name.h"

void ZnSMBNFSFileSystem::BUpdateShareList(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSSessionBase* session = GetSession(node);
  if (!session) {
    command->sessionstatus = ZnSMBNFSEnum::SSTError;
    return CBUpdateShareList(command);
  }
  if (ZnIsFresh(node->contentstime, session->config.sharesttl)) return Continue(command);
  session->Request(command, ZnSMBNFSEnum::SCRequestShares);
}

namespace {

// The names of the machine's shares: those configured, where "*" stands for what the session found.
ZnDList<ZnUniString> ShareNames(const ZnSMBNFSMachineConfig& config, const ZnDList<ZnSMBCShareObject>& found) {
  ZnDList<ZnUniString> names;
  std::unordered_set<ZnUniString> seen;
  auto add = [&](const ZnUniString& name) {
    if (ZnIsSafeName(name) && seen.insert(name).second) names.Append(name);
  };
  for (const ZnUniString& entry : config.sharenames) {
    if (entry != "*") {
      add(entry);
      continue;
    }
    for (const ZnSMBCShareObject& share : found) {
      if (share.service != ZnSMBClientValues::ServiceDisk) continue;
      if (!config.hidedollar || !share.share.EndsWith("$")) add(share.share);
    }
  }
  return names;
}

}  // namespace

void ZnSMBNFSFileSystem::CBUpdateShareList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (command->sessionstatus == ZnSMBNFSEnum::SSTError || !node->session) return RefreshFailed(command);
  ZnDList<ZnUniString> names = ShareNames(node->session->config, command->shares);
  PruneMissing(node.Get(), {names.begin(), names.end()});
  for (const ZnUniString& name : names) UpdateShare(node.Get(), name);
  node->contentstime = ZnSteadyClock::now();
  node->attribs.mtime = ZnNfsTime(ZnTimeVal::now());
  Continue(command);
}

// Makes or refreshes the node of one share. Only a share that was set up by name, with a password, is shown.
void ZnSMBNFSFileSystem::UpdateShare(ZnSMBNFSNode* machinenode, const ZnUniString& name) {
  if (!ZnSMBNFSConfig::CheckValueExistsInConfig(machinenode->user, machinenode->machine, name)) return;
  ZnSMBNFSShareConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadShareConfig(machinenode->user, machinenode->machine, name, config);
  if (!error.IsEmpty()) return Log402(error);
  auto* child = machinenode->children.Find(name);
  ZnSMBNFSNode* node = child ? child->node : AddTopNode(machinenode, name);
  if (!child) {
    node->path = "\\";
    node->share = name;
    node->sharenode = node;
  }
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
}
