// Level 2: machines, from the configuration, and under a "*" those that clients look up.

#include <algorithm>

#include "config/smbnfs_config.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"
#include "tree/safe_name.h"

namespace {

// Names that look-ups bring are anybody's choice: only so many of them are kept for a user.
constexpr size_t kMostLookedUpMachines = 1024;

bool CouldBeMachine(const ZnUniString& name) {
  return ZnIsSafeName(name) &&
         std::ranges::none_of(name.View(), [](char16_t unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); });
}

bool ContainsCaseless(const std::unordered_set<ZnUniString>& names, const ZnUniString& name) {
  return std::any_of(names.begin(), names.end(), [&](const ZnUniString& each) { return each.MatchCaseless(name); });
}

bool HasMachine(ZnSMBNFSNode& usernode, const ZnUniString& name) {
  for (const auto& child : usernode.children) {
    if (child.key.MatchCaseless(name)) return true;
  }
  return false;
}

struct Configured {
  std::unordered_set<ZnUniString> names;
  bool wildcard = false;  // any other machine appears once it is looked up
};

Configured ConfiguredMachines(const ZnSMBNFSNode& usernode) {
  Configured configured;
  for (const ZnUniString& entry : usernode.userinfo->config.machinenames) {
    if (entry == "*") {
      configured.wildcard = true;
    } else {
      configured.names.insert(entry);
    }
  }
  return configured;
}

void StampContents(ZnSMBNFSNode* node) {
  node->contentstime = ZnSteadyClock::now();
  node->attribs.mtime = ZnNfsTime(ZnTimeVal::now());
}

}  // namespace

// The records of the machines that are there are loaded again only where the list was marked out of date: the
// configuration changes in no other way, and a look-up shouldn't pay for all of them.
void ZnSMBNFSFileSystem::NBUpdateMachineList(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (node->IsUser() && node->contentstime == ZnMoment{}) UpdateKnownMachines(node);
  Continue(command);
}

void ZnSMBNFSFileSystem::AddLookedUpMachine(ZnSMBNFSNode* usernode, const ZnUniString& name) {
  if (usernode->contentstime == ZnMoment{}) UpdateKnownMachines(usernode);
  const Configured configured = ConfiguredMachines(*usernode);
  if (!configured.wildcard || !CouldBeMachine(name)) return;
  if (ContainsCaseless(configured.names, name) || HasMachine(*usernode, name)) return;
  LimitLookedUpMachines(usernode, configured.names);
  UpdateMachine(usernode, name);
  StampContents(usernode);
}

void ZnSMBNFSFileSystem::UpdateKnownMachines(ZnSMBNFSNode* node) {
  const Configured configured = ConfiguredMachines(*node);
  if (!configured.wildcard) PruneMissing(node, configured.names);
  std::vector<ZnUniString> names;
  std::unordered_set<ZnUniString> seen;
  auto add = [&](const ZnUniString& name) {
    if (name != "*" && ZnIsSafeName(name) && seen.insert(name).second) names.push_back(name);
  };
  for (const ZnUniString& entry : node->userinfo->config.machinenames) add(entry);
  for (auto& child : node->children) add(child.key);
  for (const ZnUniString& name : names) UpdateMachine(node, name);
  StampContents(node);
}

// Makes or refreshes the node of one machine.
void ZnSMBNFSFileSystem::UpdateMachine(ZnSMBNFSNode* usernode, const ZnUniString& name) {
  ZnSMBNFSMachineConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadMachineConfig(usernode->user, name, config);
  if (!error.IsEmpty()) return Log401(error);
  auto* child = usernode->children.Find(name);
  ZnSMBNFSNode* node = child ? child->node : AddTopNode(usernode, name);
  node->machine = name;
  node->machinenode = node;
  SetTopAttributes(node, config.uid, config.gid, config.unixperms);
}

// Makes room for one more machine of those that look-ups brought: the one longest unused and without a connection goes.
void ZnSMBNFSFileSystem::LimitLookedUpMachines(ZnSMBNFSNode* usernode,
                                               const std::unordered_set<ZnUniString>& configured) {
  size_t lookedup = 0;
  ZnSMBNFSNode* oldest = nullptr;
  ZnMoment oldestuse;
  for (auto& child : usernode->children) {
    if (configured.contains(child.key)) continue;
    lookedup++;
    const auto& session = child.value->session;
    if (session && session->IsConnected()) continue;
    ZnMoment use = session ? std::max(session->lastactivity, child.value->lastused) : child.value->lastused;
    if (!oldest || use < oldestuse) {
      oldest = child.value;
      oldestuse = use;
    }
  }
  if (lookedup >= kMostLookedUpMachines && oldest) Prune(oldest);
}
