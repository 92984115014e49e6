// Listings: of a machine's shares, of a directory, and of the one entry that is a file. And the size of a share's disk.

#include "config/smbnfs_config.h"
#include "model/age.h"
#include "model/name_mapping.h"
#include "session/session.h"

// The shares are those of the configuration: the server isn't asked, and whoever waits for it isn't waited for.
void ZnSMBNFSSession::GetShares(Command& command) {
  if (command.shares.IsEmpty()) {
    ZnDList<ZnUniString> names;
    ZnSMBNFSConfig::GetShareList(config.user, config.machine, names);
    for (const ZnUniString& name : names) {
      ZnSMBCShareObject share(Server(), name, ZnSMBClientValues::ServiceDisk);
      share.share = name;  // shown as it is configured
      command.shares.Append(share);
    }
  }
  command.sessionstatus = ZnSMBNFSEnum::SSTGetShares;
  host_->CompleteRequest(&command);
}

// While a command waits for its turn, the one before it may list the same directory.
void ZnSMBNFSSession::GetDirs(Command& command) {
  const ZnSMBNFSNode& node = *command.node.Get();
  const ZnSMBNFSTree* tree = TreeOf(command);
  command.alreadylisted = tree && ZnIsFresh(node.contentstime, tree->config.contentsttl);
  if (command.alreadylisted) return Advance();
  List(command, node.IsShare() ? node.path : node.Path(), "*");
}

void ZnSMBNFSSession::GetAttribs(Command& command) {
  const ZnSMBNFSNode& node = *command.node.Get();
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  List(command, node.path, InternalToWindowsName(node.NameInPath(), tree->config));
}

void ZnSMBNFSSession::GetEntry(Command& command) {
  const ZnSMBNFSNode& directory = *command.node.Get();
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  List(command, directory.IsShare() ? directory.path : directory.Path(),
       InternalToWindowsName(command.name, tree->config));
}

// That there is no such entry is an answer.
bool ZnSMBNFSSession::EntryIsMissing(const Command& command) const {
  constexpr unsigned kFileNotFound = 2 * 256 + 1;
  return command.sessioncommand == ZnSMBNFSEnum::SCRequestEntry && command.refusal == kFileNotFound;
}

void ZnSMBNFSSession::GetSpace(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  Called(GetDiskSpace(*tree, &command.space, &callback_));
}

void ZnSMBNFSSession::List(Command& command, const ZnUniString& directory, const ZnUniString& pattern) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.files.Flush();  // a listing that was begun before is begun again
  nameswithoutroom_ = false;
  if (command.sessioncommand == ZnSMBNFSEnum::SCRequestDirs) host_->ListingBegins(&command);
  ZnSMBCDirectoryObject object(*tree, InternalToWindowsPath(directory, tree->config));
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*tree, object.path);
  command.fileobject->attribs.directory = true;
  if (pattern != "*") command.fileobject->path += pattern;
  Called(ListDirectory(object, &command.files, pattern, &callback_));
}

// A directory's entries go into the tree as they come, a reply at a time: what a million of them take is neither held
// twice nor worked on in one go. One name can't have many.
bool ZnSMBNFSSession::TookEntries() {
  constexpr size_t kMostOfOneName = 100;
  Command* command = queue_.Head();
  if (!command) return false;
  if (command->sessioncommand != ZnSMBNFSEnum::SCRequestDirs) return command->files.Count() < kMostOfOneName;
  nameswithoutroom_ = !host_->TakeListed(command);
  return !nameswithoutroom_;
}
