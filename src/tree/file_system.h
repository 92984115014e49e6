#pragma once
// The virtual file system: one in-memory tree of users, machines, shares and what the shares hold, and the steps of
// which the NFS procedures are made. A step says by its name what it may do: NB finishes without network traffic, B may
// go to a session, CB is its completion, Check only decides (it sets command->error and returns). A step that ends
// calls the server's HandleCommand; one that fails calls SendError. After either the command may be gone.

#include <memory>
#include <unordered_set>
#include <vector>

#include "config/server_config.h"
#include "model/node.h"
#include "model/session_base.h"
#include "model/upward.h"
#include "model/user_base.h"
#include "rpc/nfs_records.h"
#include "tree/name_turns.h"

// Which entries answer to a name.
enum class ZnNameMatch : uint8_t {
  Entry,   // the one of that name, in any letter case where the share doesn't tell them apart: what the server would
           // take
  LookUp,  // where there is none, also one that the share's settings `matchlong` and `matchshort` find. Never for a
           // call that changes or removes something
};

class ZnSMBNFSFileSystem : public ZnSMBNFSSessionHost {
 public:
  // `server` and `loop` outlive the file system. It has no root until _init.
  ZnSMBNFSFileSystem(ZnSMBNFSCommandHandler* server, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config);
  ~ZnSMBNFSFileSystem() override;

  // --- Nodes and handles (nodes.cpp) ---
  // Builds the root from the handle of the profile, or else of the first GETATTR or STATFS that arrives, whatever its
  // bytes are. The other handles of the tree are of an epoch of their own.
  void _init(const ZnNFSFileHandle& handle);
  bool IsInitialised() const { return root_ != nullptr; }
  ZnSMBNFSNode* root() { return root_.get(); }
  // A file id for a node: never 0 to 2 and never that of an ancestor, since ids serve as directory cookies. They are
  // counted on from a random start.
  uint32_t NextId(ZnSMBNFSNode* node);
  // Makes a node of level 4 or deeper from an entry of a listing of `parent`. Owned by the session's handle dictionary.
  ZnSMBNFSNode* AddNode(ZnSMBNFSNode* parent, const ZnSMBCFileObject& entry);
  // The same with the Windows path of what lies in `parent`, which all entries of a listing share.
  ZnSMBNFSNode* AddNode(ZnSMBNFSNode* parent, const ZnSMBCFileObject& entry, const ZnUniString& path);
  // Destroys a node and everything below it; its handles are stale for good. Commands that wait for a machine's session
  // fail on the way, and what they do next may reach back here.
  void Prune(ZnSMBNFSNode* node);
  // The session of the machine above, made on demand; null when there is none.
  ZnSMBNFSSessionBase* GetSession(ZnSMBNFSNode* node);
  // The tree of the share above, made on demand; null when there is none.
  ZnSMBNFSTree* GetTree(ZnSMBNFSNode* node);
  // Records a failure; unless the command is tolerant it takes no more steps. Then HandleCommand.
  void SendError(ZnSMBNFSCommand* command, ZnNFSEnum::Status status);
  // The step is done: the command goes on.
  void Continue(ZnSMBNFSCommand* command) { server_->HandleCommand(command); }

  // --- Looking up (find.cpp) ---
  void NBFindByHandle(ZnSMBNFSCommand* command);
  void NBFindByName(ZnSMBNFSCommand* command, ZnNameMatch match);
  // The child that answers to `name` in `directory`, by the share's matching rules; null when there is none.
  ZnSMBNFSNode* FindByName(ZnSMBNFSNode* directory, const ZnUniString& name, ZnNameMatch match);
  // Whether an entry `name` may be made in `directory`, as far as the share's settings go. `besides`, when not null, is
  // an entry that doesn't count: the one that gets the name.
  bool ValidateName(ZnSMBNFSNode* directory, const ZnUniString& name, const ZnSMBNFSShareConfig& config,
                    const ZnSMBNFSNode* besides = nullptr);

  // --- Keeping the tree up to date (refresh_*.cpp, follow_profile.cpp) ---
  // Reads the profile again if it was edited, or `anyway`, and brings what is in the tree in line with it. Nodes may
  // go.
  void FollowProfile(bool anyway);
  void BUpdateNodeContents(ZnSMBNFSCommand* command);
  void NBUpdateUserList(ZnSMBNFSCommand* command);
  void NBUpdateMachineList(ZnSMBNFSCommand* command);
  // Makes the machine that a look-up named below a user, as far as the configuration allows it.
  void AddLookedUpMachine(ZnSMBNFSNode* usernode, const ZnUniString& name);
  void BUpdateShareList(ZnSMBNFSCommand* command);
  void CBUpdateShareList(ZnSMBNFSCommand* command);
  void BUpdateDirList(ZnSMBNFSCommand* command);
  // Brings a share's contents up to date, some time, if they aren't. One refresh of a share goes on at a time.
  void RefreshShareUnasked(ZnSMBNFSNode* share);
  void CBUpdateDirList(ZnSMBNFSCommand* command);
  void ListingBegins(ZnSMBNFSCommand* command) override;
  bool TakeListed(ZnSMBNFSCommand* command) override;
  // The same for at most `most` entries that had to wait for the listing's end. Its directory is there.
  void TakeWaiting(ZnSMBNFSCommand* command, size_t most);
  // The listing has been merged and what it didn't hold is pruned, or, after one that failed, what it brought.
  void ListingEnds(ZnSMBNFSCommand* command);
  // Asks for the entry command->name of the directory alone, and brings it into the tree if it is there: what was just
  // made, or what stands in the way.
  void BFindEntry(ZnSMBNFSCommand* command);
  void CBFindEntry(ZnSMBNFSCommand* command);
  // Whether the tree knows an entry command->name of the directory that the command stands at.
  bool KnowsEntry(const ZnSMBNFSCommand& command);
  void BUpdateNode(ZnSMBNFSCommand* command);
  void CBUpdateNode(ZnSMBNFSCommand* command);
  // Turns what the server says of an entry into NFS attributes.
  void UpdateNode(ZnSMBNFSNode* node, const ZnSMBCFileObject& entry, bool isnew);
  // The same for an entry that is known, by the look of this number.
  void UpdateKnown(ZnSMBNFSNode* node, const ZnSMBCFileObject& entry, uint64_t look);
  // Builds one READDIR page. `cookie` is the file id of the entry to go on at, 0 for the start; `count` bounds the
  // bytes; `eof` becomes 1 when the directory's end is reached.
  void FillContents(ZnSMBNFSNode* node, uint32_t cookie, uint32_t count, ZnNFSList<ZnNFSDirEntry>& list, uint32_t& eof);

  // --- Order (order.cpp) ---
  // Waits until all changes of these names that came before have ended. Null directories are gone.
  void BTakeNames(ZnSMBNFSCommand* command, const std::vector<std::pair<ZnSMBNFSNode*, ZnUniString>>& names);

  // --- File operations (operations.cpp, checks.cpp, completions.cpp) ---
  void CheckReadFromFile(ZnSMBNFSCommand* command);
  void CheckWriteToFile(ZnSMBNFSCommand* command);
  void CheckRemoveDirectory(ZnSMBNFSCommand* command);
  void CheckCreateFile(ZnSMBNFSCommand* command);
  void CheckMakeDirectory(ZnSMBNFSCommand* command);
  void CheckCreateLink(ZnSMBNFSCommand* command);
  void CheckCreateSymLink(ZnSMBNFSCommand* command);
  // Whether command->node may be renamed into the directory command->node2 at all: the first check, before anything
  // else is asked for.
  void CheckRenamePlace(ZnSMBNFSCommand* command);
  // The same for the name, and for what stands there already.
  void CheckRename(ZnSMBNFSCommand* command);
  void CheckRemoveFile(ZnSMBNFSCommand* command);
  // What a rename of command->node to command->name in the directory command->node2 would replace; null for nothing.
  ZnSMBNFSNode* RenameTarget(const ZnSMBNFSCommand& command);
  bool SetAttrNeedTruncate(ZnSMBNFSCommand* command);
  void BCreateFile(ZnSMBNFSCommand* command);
  void BReadFromFile(ZnSMBNFSCommand* command);
  void BWriteToFile(ZnSMBNFSCommand* command);
  void BRemoveFile(ZnSMBNFSCommand* command);
  void BRemoveDirectory(ZnSMBNFSCommand* command);
  void BMakeDirectory(ZnSMBNFSCommand* command);
  void BRename(ZnSMBNFSCommand* command);
  void BSetAttributes(ZnSMBNFSCommand* command);
  void BSetAllAttributes(ZnSMBNFSCommand* command);
  void BSetTimes(ZnSMBNFSCommand* command);
  void NBCreateLink(ZnSMBNFSCommand* command);
  void NBCreateSymLink(ZnSMBNFSCommand* command);
  void NBGetLinkPath(ZnSMBNFSCommand* command);
  void BStatFileSystem(ZnSMBNFSCommand* command);
  void NBStatFileSystem(ZnSMBNFSCommand* command);

  // --- Completions (completions.cpp) ---
  void CBReadFromFile(ZnSMBNFSCommand* command);
  bool MayHaveChanged(const ZnSMBNFSCommand& command) const;
  void CBWriteToFile(ZnSMBNFSCommand* command);
  void CBCreateFile(ZnSMBNFSCommand* command);
  void CBMakeDirectory(ZnSMBNFSCommand* command);
  void CBRemoveFile(ZnSMBNFSCommand* command);
  void CBRemoveDirectory(ZnSMBNFSCommand* command);
  void CBRename(ZnSMBNFSCommand* command);
  void CBSetAttributes(ZnSMBNFSCommand* command);
  void CBSetAllAttributes(ZnSMBNFSCommand* command);
  void CBSetTimes(ZnSMBNFSCommand* command);
  void CBStatFileSystem(ZnSMBNFSCommand* command);

  // --- What sessions ask of us ---
  void CompleteRequest(ZnSMBNFSCommand* command) override;
  ZnEventLoopBase* eventloop() override { return loop_; }
  const ZnSMBNFSServerConfig& serverconfig() const override { return config_; }
  void AddSession(ZnSMBNFSSessionBase* session) override;
  void RemoveSession(ZnSMBNFSSessionBase* session) override;
  // A copy: the list may change while it is walked.
  std::vector<ZnSMBNFSSessionBase*> sessions() const { return {sessions_.begin(), sessions_.end()}; }
  // Calls CleanUp on every session, whichever of them go meanwhile.
  void CleanUpSessions();

 protected:
  // Tests put stand-ins here.
  virtual std::unique_ptr<ZnSMBNFSSessionBase> MakeSession(ZnSMBNFSNode* machinenode,
                                                           const ZnSMBNFSMachineConfig& config);
  virtual std::unique_ptr<ZnSMBNFSUserBase> MakeUser();

 private:
  // The command is about to wait for another, which may stand behind it in its session's queue.
  static void StepOut(ZnSMBNFSCommand* command);
  // One that waited for another's listing goes on.
  void FollowerGoesOn(ZnSMBNFSCommand* command, ZnNFSEnum::Status failure);
  // Why an entry `name` can't be made in `directory`; NFS_OK when it can.
  ZnNFSEnum::Status NameStatus(ZnSMBNFSNode* directory, const ZnUniString& name, const ZnSMBNFSNode* besides = nullptr);
  bool WouldBeLink(ZnSMBNFSNode* directory, const ZnUniString& name);
  // What a new file, directory or link of command->name would meet in `directory`.
  ZnNFSEnum::Status NewNameStatus(ZnSMBNFSNode* directory, const ZnUniString& name);
  // The form that all steps with a request share: access denied where no server stores anything, or where there is no
  // session.
  void Ask(ZnSMBNFSCommand* command, ZnSMBNFSEnum::SessionCommand what);
  // Whether the command's attributes go to the server the old way, in two calls.
  bool SetsOldWay(ZnSMBNFSNode* node);
  // Whether the command's mode has anything to say to the server.
  bool SetsMode(const ZnSMBNFSCommand& command);
  void SetMadeUp(ZnSMBNFSCommand* command);
  // False if the record doesn't load.
  bool UpdateUser(ZnSMBNFSNode* node, const ZnUniString& name);
  void FollowUser(ZnSMBNFSNode* node);
  void FollowMachine(ZnSMBNFSNode* node);
  void FollowShare(ZnSMBNFSNode* node, const ZnSMBNFSMachineConfig& machine);
  void UpdateKnownMachines(ZnSMBNFSNode* usernode);
  void UpdateMachine(ZnSMBNFSNode* usernode, const ZnUniString& name);
  void LimitLookedUpMachines(ZnSMBNFSNode* usernode, const std::unordered_set<ZnUniString>& configured);
  void UpdateShare(ZnSMBNFSNode* machinenode, const ZnUniString& name);
  // Ends a command whose directory couldn't be listed.
  void RefreshFailed(ZnSMBNFSCommand* command);
  // Goes on, or with the failure's status after a request that failed.
  void Finish(ZnSMBNFSCommand* command);
  void ShowSet(ZnSMBNFSNode* node, const ZnNFSSattr* set);  // null sets nothing
  void ShowChange(ZnSMBNFSNode* directory);
  void ShowWrite(ZnSMBNFSNode* node, uint32_t end, bool truncates);
  // The path of a directory's entries as the tree keeps it: in upper case on a share whose names are shown in lower
  // case.
  static ZnUniString EntriesPath(const ZnSMBNFSNode& directory, const ZnSMBNFSShareConfig& config);
  // Levels 1 to 3: a new node below `parent`, with its handle and id.
  ZnSMBNFSNode* AddTopNode(ZnSMBNFSNode* parent, const ZnUniString& name);
  // Attributes of a made-up directory from the configuration.
  void SetTopAttributes(ZnSMBNFSNode* node, int32_t uid, int32_t gid, int32_t unixperms);
  // Merges an entry of a listing. `child` is its node's place, null when it has none yet; `path` is that of what lies
  // in the directory.
  void Merge(ZnDirectoryListing& listing, const ZnDirectoryListing::Entry& listed, ZnSMBNFSChild* child,
             ZnSMBNFSNode* directory, const ZnUniString& path);
  // Brings one that the look of this number tells of into the tree, or up to date there. Gives its place.
  ZnSMBNFSChild* Show(const ZnDirectoryListing::Entry& listed, ZnSMBNFSChild* child, ZnSMBNFSNode* directory,
                      const ZnUniString& path, uint64_t look);
  // Whether a node of this name finds no room below the machine's `treelimit`, beside what waits already.
  static bool IsFull(const ZnSMBNFSNode& directory, const ZnUniString& name, size_t waitingbytes);
  // What a node inside a machine takes, about, by its name.
  static size_t BytesOf(const ZnUniString& name);
  static void AddChild(ZnSMBNFSNode* parent, ZnSMBNFSNode* node);
  static void RemoveFromParent(ZnSMBNFSNode* node);
  // Prunes the children whose names aren't in `names`; all of them for an empty set.
  void PruneMissing(ZnSMBNFSNode* node, const std::unordered_set<ZnUniString>& names);
  void PruneOne(ZnSMBNFSNode* node, bool istop);
  static void NameGoes(ZnSMBNFSNode* node);
  // What the server has removed leaves the tree (moves.cpp).
  void TakeOut(ZnSMBNFSNode* node);
  // What the server has renamed gets its new name, perhaps in another directory of its share; what had that name leaves
  // the tree.
  void Move(ZnSMBNFSNode* node, ZnSMBNFSNode* directory, ZnUniString name);
  static void SetPaths(ZnSMBNFSNode* directory, ZnSMBNFSNode* node, const ZnSMBNFSShareConfig& config);

  ZnSMBNFSCommandHandler* server_;
  ZnEventLoopBase* loop_;
  ZnSMBNFSServerConfig config_;
  ZnNFSFattr baseattribs_;     // template of every node's attributes
  ZnSMBNFSHandle inchandle_;   // the next top
  ZnSMBNFSHandle lastinside_;  // the last bottom; of all machines, so that none comes again with a new session
  uint32_t nextid_ = 2;        // the last id handed out
  uint32_t listings_ = 0;      // begun so far
  uint64_t looks_ = 0;         // at servers so far: listings and queries of one entry
  ZnNameTurns nameturns_{[this](ZnSMBNFSCommand* command) { Continue(command); }};
  std::unordered_set<ZnSMBNFSSessionBase*> sessions_;
  std::unique_ptr<ZnSMBNFSNode> root_;
  ZnSMBNFSHandleDictionary handles_;  // owns levels 1 to 3
};
