// Nodes and handles: how they are made, numbered and destroyed.

#include <sys/random.h>

#include <algorithm>
#include <cstdlib>

#include "config/smbnfs_config.h"
#include "model/directory_index.h"
#include "model/log_catalogue.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"

namespace {

constexpr uint32_t kFileSystemId = 4242;
constexpr uint32_t kRootId = 2;
constexpr uint32_t kFirstId = 3;
constexpr uint32_t kDirectoryMode = 0040555;
constexpr uint32_t kDirectoryBit = 0040000;
constexpr uint32_t kBlockSize = 512;
constexpr uint8_t kServerNameType = 32;

// Where the count of file ids begins: anywhere in the lower half of what there is. A client that knew an earlier start
// hardly ever sees an id again for another object (of two starts with a million entries each, one pair in a thousand
// overlaps), and 2^31 ids are left before the count comes round, which takes a day of 24,000 new entries a second. A
// hash of the path would give a new file the id of the one that was removed from its place, which a count never does.
uint32_t FirstFreeId() {
  uint32_t drawn = 0;
  if (getentropy(&drawn, sizeof drawn) != 0) abort();
  return std::max(drawn >> 1, kRootId);
}

}  // namespace

ZnSMBNFSFileSystem::ZnSMBNFSFileSystem(ZnSMBNFSCommandHandler* server, ZnEventLoopBase* loop,
                                       const ZnSMBNFSServerConfig& config)
    : server_(server), loop_(loop), config_(config) {}

// Machine nodes own sessions that leave the session list as they die.
ZnSMBNFSFileSystem::~ZnSMBNFSFileSystem() { handles_.Flush(); }

void ZnSMBNFSFileSystem::_init(const ZnNFSFileHandle& handle) {
  nextid_ = FirstFreeId();
  baseattribs_.type = ZnNFSEnum::NFDIR;
  baseattribs_.mode = kDirectoryMode;
  baseattribs_.nlink = 1;
  baseattribs_.size = kBlockSize;
  baseattribs_.blocksize = kBlockSize;
  baseattribs_.blocks = 1;
  baseattribs_.fsid = kFileSystemId;
  baseattribs_.atime = baseattribs_.mtime = baseattribs_.ctime = ZnNfsTime(ZnTimeVal::now());

  inchandle_ = ZnSMBNFSHandle(handle);
  inchandle_.DrawEpoch();
  inchandle_.IncTop();

  root_ = std::make_unique<ZnSMBNFSNode>();
  root_->name = "<root>";
  root_->path = "<rootpath>";
  root_->handle = ZnSMBNFSHandle(handle);
  root_->id = kRootId;
  root_->parent = root_.get();
  root_->handles = &handles_;
  root_->attribs = baseattribs_;
  root_->attribs.fileid = kRootId;
}

uint32_t ZnSMBNFSFileSystem::NextId(ZnSMBNFSNode* node) {
  if (node->IsRoot()) return kRootId;
  auto isAncestors = [node](uint32_t id) {
    for (const ZnSMBNFSNode* above = node->parent;; above = above->parent) {
      if (above->id == id) return true;
      if (above->IsRoot()) return false;
    }
  };
  do {
    nextid_ = std::max(nextid_ + 1, kFirstId);
  } while (isAncestors(nextid_));
  return nextid_;
}

ZnSMBNFSNode* ZnSMBNFSFileSystem::AddTopNode(ZnSMBNFSNode* parent, const ZnUniString& name) {
  auto owned = std::make_unique<ZnSMBNFSNode>();
  ZnSMBNFSNode* node = owned.get();
  node->name = name;
  node->path = parent->path + "/";
  node->user = parent->user;
  node->machine = parent->machine;
  node->parent = parent;
  node->machinenode = parent->machinenode;
  node->handles = &handles_;
  node->handle = inchandle_;
  node->handle.TopOnly();
  inchandle_.IncTop();
  node->id = NextId(node);
  handles_.Insert(node->handle, std::move(owned));
  AddChild(parent, node);
  return node;
}

void ZnSMBNFSFileSystem::SetTopAttributes(ZnSMBNFSNode* node, int32_t uid, int32_t gid, int32_t unixperms) {
  node->attribs = baseattribs_;
  node->attribs.uid = static_cast<uint32_t>(uid);
  node->attribs.gid = static_cast<uint32_t>(gid);
  node->attribs.mode = static_cast<uint32_t>(unixperms) | kDirectoryBit;
  node->attribs.fileid = node->id;
}

ZnUniString ZnSMBNFSFileSystem::EntriesPath(const ZnSMBNFSNode& directory, const ZnSMBNFSShareConfig& config) {
  ZnUniString path = directory.PathInside();
  // Clients see lower-case names of such a share; Windows doesn't care.
  if (config.lowercase) path.UpperCase();
  return path;
}

ZnSMBNFSNode* ZnSMBNFSFileSystem::AddNode(ZnSMBNFSNode* parent, const ZnSMBCFileObject& entry) {
  return AddNode(parent, entry, EntriesPath(*parent, GetTree(parent)->config));
}

ZnSMBNFSNode* ZnSMBNFSFileSystem::AddNode(ZnSMBNFSNode* parent, const ZnSMBCFileObject& entry,
                                          const ZnUniString& path) {
  ZnSMBNFSSessionBase* session = parent->machinenode->session.get();
  auto owned = std::make_unique<ZnSMBNFSNode>();
  ZnSMBNFSNode* node = owned.get();
  node->name = entry.path;
  node->path = path;
  node->user = parent->user;
  node->machine = parent->machine;
  node->share = parent->share;
  node->parent = parent;
  node->machinenode = parent->machinenode;
  node->sharenode = parent->sharenode;
  node->handles = &session->handles;
  node->handle = parent->machinenode->handle;
  lastinside_.IncBottom();
  node->handle.TakeBottom(lastinside_);
  node->id = NextId(node);
  UpdateNode(node, entry, true);
  session->handles.Insert(node->handle, std::move(owned));
  AddChild(parent, node);
  return node;
}

// Itself, its entries in two tables and in their indexes, and its name, which the entry shares with it.
size_t ZnSMBNFSFileSystem::BytesOf(const ZnUniString& name) {
  constexpr size_t kTableEntries = 240;
  return sizeof(ZnSMBNFSNode) + kTableEntries + 2 * name.Length();
}

void ZnSMBNFSFileSystem::AddChild(ZnSMBNFSNode* parent, ZnSMBNFSNode* node) {
  parent->children.Insert(node->name, {node, node->id});
  if (parent->index) parent->index->Add(node);
  if (node->IsInside()) node->machinenode->session->treebytes += BytesOf(node->name);
}

void ZnSMBNFSFileSystem::RemoveFromParent(ZnSMBNFSNode* node) {
  if (node->parent->index && !node->parent->index->Remove(node)) node->parent->index.reset();
  const ZnSMBNFSChild* child = node->parent->children.Find(node->name);
  if (child && child->node == node) node->parent->children.Remove(node->name);
  if (node->IsInside()) node->machinenode->session->treebytes -= BytesOf(node->name);
}

void ZnSMBNFSFileSystem::PruneMissing(ZnSMBNFSNode* node, const std::unordered_set<ZnUniString>& names) {
  std::vector<ZnWeakRef<ZnSMBNFSNode>> missing;
  for (auto& child : node->children) {
    if (!names.contains(child.key)) missing.emplace_back(child.value);
  }
  for (auto& child : missing) {
    if (child) Prune(child.Get());
  }
}

void ZnSMBNFSFileSystem::Prune(ZnSMBNFSNode* node) {
  // What lies below goes first. Flushing a session may prune on its own, so nothing here trusts a plain pointer.
  std::vector<ZnWeakRef<ZnSMBNFSNode>> doomed{node};
  for (size_t i = 0; i < doomed.size(); i++) {
    for (auto& child : doomed[i]->children) doomed.emplace_back(child.value);
  }
  while (!doomed.empty()) {
    if (doomed.back()) PruneOne(doomed.back().Get(), doomed.size() == 1);
    doomed.pop_back();
  }
}

void ZnSMBNFSFileSystem::PruneOne(ZnSMBNFSNode* node, bool istop) {
  ZnWeakRef<ZnSMBNFSNode> self(node);
  if (node->session) {
    node->session->SendErrors();
    if (!self) return;
  }
  if (node->tree) {
    node->tree->node = nullptr;
    // When a whole machine goes, its session's end does this work.
    if (istop) node->tree->closing = true;
  }
  if (node->file) GetSession(node)->NodeGoes(*node);
  // A command that failed meanwhile may have listed something new.
  while (!node->children.IsEmpty()) Prune(node->children.begin()->value);
  RemoveFromParent(node);
  OutOfDate(node->parent, !node->IsInside());  // what a listing doesn't hold, or a change takes out, leaves it good
  node->handles->Remove(ZnSMBNFSHandle(node->handle));  // destroys the node
}

ZnSMBNFSSessionBase* ZnSMBNFSFileSystem::GetSession(ZnSMBNFSNode* node) {
  ZnSMBNFSNode* machine = node->machinenode;
  if (!machine) return nullptr;
  if (machine->session) return machine->session.get();
  ZnSMBNFSMachineConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadMachineConfig(machine->user, machine->machine, config);
  if (!error.IsEmpty()) {
    Log404(machine->machine, error);
    return nullptr;
  }
  machine->session = MakeSession(machine, config);
  machine->session->machinenode = machine;
  machine->session->config = config;
  return machine->session.get();
}

ZnSMBNFSTree* ZnSMBNFSFileSystem::GetTree(ZnSMBNFSNode* node) {
  ZnSMBNFSNode* share = node->sharenode;
  if (!share) return nullptr;
  ZnSMBNFSSessionBase* session = GetSession(share);
  if (!session) return nullptr;
  if (share->tree) return share->tree;
  ZnSMBNFSShareConfig config;
  ZnUniString error = ZnSMBNFSConfig::LoadShareConfig(share->user, share->machine, share->share, config);
  if (!error.IsEmpty()) {
    Log405(share->share, share->machine, error);
    return nullptr;
  }
  ZnMachine server;
  server.Name(session->config.nbtname, kServerNameType);
  auto tree = std::make_unique<ZnSMBNFSTree>();
  static_cast<ZnSMBCTreeObject&>(*tree) = ZnSMBCTreeObject(server, share->share);
  tree->node = share;
  tree->config = config;
  share->tree = tree.get();
  session->trees.push_back(std::move(tree));
  return share->tree;
}

void ZnSMBNFSFileSystem::SendError(ZnSMBNFSCommand* command, ZnNFSEnum::Status status) {
  command->error = status;
  if (!command->tolerant) command->failed = true;
  Continue(command);
}

void ZnSMBNFSFileSystem::AddSession(ZnSMBNFSSessionBase* session) { sessions_.insert(session); }

void ZnSMBNFSFileSystem::RemoveSession(ZnSMBNFSSessionBase* session) { sessions_.erase(session); }

void ZnSMBNFSFileSystem::CleanUpSessions() {
  for (ZnSMBNFSSessionBase* session : sessions()) {
    if (sessions_.contains(session)) session->CleanUp();
  }
}
