// Levels 4 and deeper: the merge of a server's listing into the tree.

#include "config/smbnfs_config.h"
#include "model/age.h"
#include "model/directory_index.h"
#include "model/log_catalogue.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/safe_name.h"
#include "tree/sweep.h"

void ZnSMBNFSFileSystem::BUpdateDirList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (!node->IsDirectory()) return SendError(command, ZnNFSEnum::NFSERR_NOTDIR);
  ZnSMBNFSTree* tree = GetTree(node.Get());
  if (!tree) return SendError(command, ZnNFSEnum::NFSERR_ACCES);
  if (ZnIsFresh(node->contentstime, tree->config.contentsttl)) return Continue(command);
  if (node->listing) {
    if (!node->listing->Follow(*command)) return command->Drop();
    return StepOut(command);
  }
  command->listing = std::make_unique<ZnDirectoryListing>(
      *node.Get(), [this](ZnSMBNFSCommand* follower, ZnNFSEnum::Status failure) { FollowerGoesOn(follower, failure); });
  GetSession(node.Get())->Request(command, ZnSMBNFSEnum::SCRequestDirs);
}

// A listing that another change has made out of date again isn't for those who came after that.
void ZnSMBNFSFileSystem::FollowerGoesOn(ZnSMBNFSCommand* command, ZnNFSEnum::Status failure) {
  failure == ZnNFSEnum::NFS_OK ? BUpdateDirList(command) : SendError(command, failure);
}

// The refresh is a command that nobody called: it ends where the next step of a call would be.
void ZnSMBNFSFileSystem::RefreshShareUnasked(ZnSMBNFSNode* share) {
  ZnSMBNFSTree* tree = GetTree(share);
  if (!tree || share->listing) return;
  if (ZnIsFresh(share->contentstime, tree->config.contentsttl)) return;
  auto* command = new ZnSMBNFSCommand(ZnInetAddr(), 0, nullptr);  // its own owner from here on
  command->node = share;
  BUpdateDirList(command);
}

// What can't be listed isn't empty: the call fails, and what was known stays, handles and open files with it. Where the
// server says that the directory itself is gone, whoever looks at the one above learns it.
void ZnSMBNFSFileSystem::RefreshFailed(ZnSMBNFSCommand* command) {
  ZnNFSEnum::Status status = command->session ? command->session->ConvertError(*command) : ZnNFSEnum::NFSERR_ACCES;
  if (status == ZnNFSEnum::NFSERR_NOENT) OutOfDate(command->node->parent, true);
  const auto listing = std::move(command->listing);  // ends when the command has gone on
  if (listing) {
    listing->failure = status;
    listing->Over();
  }
  SendError(command, status);
}

namespace {

// Where the top of a drive that holds nothing is listed, Windows says that it finds no file.
bool IsEmptyTop(const ZnSMBNFSCommand& command) {
  constexpr unsigned kFileNotFound = 2 * 256 + 1;
  return command.node->IsShare() && command.refusal == kFileNotFound;
}

using Listed = ZnDirectoryListing::Entry;

// Turns the server's name of an entry into the tree's. False for an entry that isn't shown.
bool TakeName(Listed& listed, const ZnSMBNFSShareConfig& config) {
  ZnSMBCFileObject& file = listed.file;
  if ((!config.showhidden && file.attribs.hidden) || ZnLeavesDirectory(file.path)) return false;
  const ZnUniString given = file.path;
  file.path = WindowsToInternalName(given, config);
  if (config.lowercase) file.path.LowerCase();
  const ZnUniString ours = InternalToWindowsName(file.path, config);
  if (config.lowercase ? !ours.MatchCaseless(given) : ours != given) listed.stored = given;
  return ZnIsSafeName(FromLinkName(file.path, config.linkstring));
}

// Where another entry has the name already, this one gets two escape characters more, and keeps them when the other
// goes. Gives the entry's node, if it is there.
ZnSMBNFSChild* TakePlace(Listed& listed, ZnSMBNFSNode& directory, const ZnSMBNFSShareConfig& config) {
  ZnUniString& name = listed.file.path;
  const auto isIt = [&listed](const ZnSMBNFSChild* child) { return child && child->node->stored == listed.stored; };
  ZnSMBNFSChild* usual = directory.children.Find(name);
  if (isIt(usual) || (!usual && listed.stored.IsEmpty())) return usual;
  const ZnUniString given = listed.stored.IsEmpty() ? InternalToWindowsName(name, config) : listed.stored;
  const ZnUniString more(std::u16string(2, static_cast<char16_t>(config.hashchar)));
  while (true) {
    ZnSMBNFSChild* child = directory.children.Find(name);
    if (isIt(child)) return child;
    if (!child && (listed.stored.IsEmpty() || !isIt(directory.children.Find(name + more)))) return nullptr;
    listed.stored = given;
    name += more;
  }
}

}  // namespace

void ZnSMBNFSFileSystem::ListingBegins(ZnSMBNFSCommand* command) {
  if (command->listing) command->listing->Begin(++listings_, ++looks_, nextid_);
}

bool ZnSMBNFSFileSystem::IsFull(const ZnSMBNFSNode& directory, const ZnUniString& name, size_t waitingbytes) {
  constexpr size_t kMebibyte = size_t{1} << 20U;
  const ZnSMBNFSSessionBase& session = *directory.machinenode->session;
  const size_t limit = static_cast<size_t>(session.config.treelimit) * kMebibyte;
  return session.treebytes + waitingbytes + BytesOf(name) > limit;
}

bool ZnSMBNFSFileSystem::TakeListed(ZnSMBNFSCommand* command) {
  ZnDList<ZnSMBCFileObject> files;
  std::swap(files, command->files);
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSTree* tree = node ? GetTree(node) : nullptr;
  if (!tree || !command->listing) return true;  // the listing's end finds that
  ZnDirectoryListing& listing = *command->listing;
  const ZnUniString path = EntriesPath(*node, tree->config);
  for (ZnSMBCFileObject& file : files) {
    Listed listed{std::move(file), {}};
    if (!TakeName(listed, tree->config)) continue;
    ZnSMBNFSChild* child = TakePlace(listed, *node, tree->config);
    if (!child && listing.gone.contains(listed.file.path)) continue;
    if (!child && IsFull(*node, listed.file.path, listing.waitingbytes)) return false;
    if (child || listed.stored.IsEmpty()) {
      Merge(listing, listed, child, node, path);
    } else {
      listing.waitingbytes += BytesOf(listed.file.path);
      listing.waiting.push_back(std::move(listed));
    }
  }
  return true;
}

// Names that others made come last: where ours stands beside them, they make way.
void ZnSMBNFSFileSystem::TakeWaiting(ZnSMBNFSCommand* command, size_t most) {
  ZnSMBNFSNode* node = command->node.Get();
  ZnSMBNFSTree* tree = GetTree(node);
  ZnDirectoryListing& listing = *command->listing;
  std::list<Listed>& waiting = listing.waiting;
  const ZnUniString path = tree ? EntriesPath(*node, tree->config) : ZnUniString();
  for (; most > 0 && !waiting.empty(); most--, waiting.pop_front()) {
    Listed& listed = waiting.front();
    ZnSMBNFSChild* child = tree ? TakePlace(listed, *node, tree->config) : nullptr;
    const bool fits = tree && ZnIsSafeName(listed.file.path) && !listing.gone.contains(listed.file.path);
    if (child || fits) Merge(listing, listed, child, node, path);
  }
}

// Of an entry that a change meets meanwhile the listing tells nothing new.
void ZnSMBNFSFileSystem::Merge(ZnDirectoryListing& listing, const Listed& listed, ZnSMBNFSChild* child,
                               ZnSMBNFSNode* directory, const ZnUniString& path) {
  if (child && child->listing == listing.number) return;  // twice in the listing
  child = Show(listed, child, directory, path, listing.look);
  child->listing = listing.number;
  listing.held++;
}

// What is new gets a node, what is known gets its new attributes.
ZnSMBNFSChild* ZnSMBNFSFileSystem::Show(const Listed& listed, ZnSMBNFSChild* child, ZnSMBNFSNode* directory,
                                        const ZnUniString& path, uint64_t look) {
  if (child) {
    UpdateKnown(child->node, listed.file, look);
    return child;
  }
  directory->index.reset();  // made anew when it is asked for: much more may come
  AddNode(directory, listed.file, path)->stored = listed.stored;
  return directory->children.Find(listed.file.path);
}

bool ZnSMBNFSFileSystem::KnowsEntry(const ZnSMBNFSCommand& command) {
  ZnSMBNFSNode* directory = command.node.Get();
  return directory && FindByName(directory, command.name, ZnNameMatch::Entry);
}

// A name may also be what the server takes for a second one of another entry: all that it tells of are there.
void ZnSMBNFSFileSystem::CBFindEntry(ZnSMBNFSCommand* command) {
  ZnDList<ZnSMBCFileObject> files;
  std::swap(files, command->files);
  ZnSMBNFSNode* directory = command->node.Get();
  ZnSMBNFSTree* tree = directory ? GetTree(directory) : nullptr;
  const bool failed = command->sessionstatus == ZnSMBNFSEnum::SSTError;
  if (tree && failed) OutOfDate(directory, true);
  if (!tree || failed) return Finish(command);
  const ZnUniString path = EntriesPath(*directory, tree->config);
  for (ZnSMBCFileObject& file : files) {
    Listed listed{std::move(file), {}};
    if (!TakeName(listed, tree->config)) continue;
    ZnSMBNFSChild* child = TakePlace(listed, *directory, tree->config);
    if (child || (ZnIsSafeName(listed.file.path) && !IsFull(*directory, listed.file.path, 0)))
      Show(listed, child, directory, path, command->look)->node->changed = looks_;  // no listing has to tell it
  }
  Continue(command);
}

void ZnSMBNFSFileSystem::CBUpdateDirList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (!command->listing || command->alreadylisted) return ListingEnds(command);
  const ZnDirectoryListing& listing = *command->listing;
  const bool failed = command->sessionstatus == ZnSMBNFSEnum::SSTError && !IsEmptyTop(*command);
  if (failed && (listing.held > 0 || !listing.waiting.empty())) {
    return ZnSweep::Begin(*this, loop_, command, ZnSweep::What::Brought);
  }
  if (failed || !GetTree(node.Get())) return RefreshFailed(command);
  if (listing.held < node->children.Count() || !listing.waiting.empty()) {
    node->index.reset();  // much may go
    return ZnSweep::Begin(*this, loop_, command, ZnSweep::What::NotListed);
  }
  ListingEnds(command);
}

void ZnSMBNFSFileSystem::ListingEnds(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (command->sessionstatus == ZnSMBNFSEnum::SSTError && !IsEmptyTop(*command)) return RefreshFailed(command);
  const auto listing = std::move(command->listing);  // ends when the command has gone on
  if (listing && listing->number != 0) {
    node->contentstime = listing->outdated ? ZnMoment{} : ZnSteadyClock::now();
    listing->Over();
  }
  Continue(command);
}
