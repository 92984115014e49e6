#pragma once
// An NFS call in flight. It walks its procedure's steps until a reply can be sent, and belongs to nobody but itself
// meanwhile: whoever ends it deletes it, and its destructor withdraws it from its session and from the server.

#include <memory>
#include <variant>

#include "model/directory_listing.h"
#include "model/entry_change.h"
#include "model/enums.h"
#include "model/node.h"
#include "model/work.h"
#include "rpc/nfs_records.h"
#include "runtime/inet_addr.h"
#include "runtime/list.h"
#include "runtime/weak_ref.h"
#include "smb/client/disk_space.h"
#include "smb/client/share_object.h"

class ZnSMBNFSCommandHandler;
struct ZnProcedure;

// The call's decoded arguments, by procedure.
using ZnSMBNFSArguments =
    std::variant<std::monostate, ZnNFSFileHandle, ZnNFSSattrargs, ZnNFSDiropargs, ZnNFSReadargs, ZnNFSWriteargs,
                 ZnNFSCreateargs, ZnNFSRenameargs, ZnNFSLinkargs, ZnNFSSymlinkargs, ZnNFSReaddirargs>;

class ZnSMBNFSCommand {
 public:
  // A call from `source`; `handler` (not owned, may be null) hears of its end.
  ZnSMBNFSCommand(const ZnInetAddr& source, uint32_t xid, ZnSMBNFSCommandHandler* handler);
  ZnSMBNFSCommand(const ZnSMBNFSCommand&) = delete;
  ZnSMBNFSCommand& operator=(const ZnSMBNFSCommand&) = delete;
  ~ZnSMBNFSCommand();

  template <class Args>
  const Args& As() const {
    return std::get<Args>(args);
  }

  // Ends the command as if its datagram had been lost: no reply, and a retransmission is served like a new call.
  // Deletes it.
  void Drop() { delete this; }

  const ZnProcedure* procedure = nullptr;       // what it walks; null for what nobody called
  unsigned nextstep = 0;                        // of the procedure's
  ZnNFSEnum::Status error = ZnNFSEnum::NFS_OK;  // for the reply
  bool failed = false;                          // no more steps: the error is the reply
  bool tolerant = false;                        // while true an error is recorded, but the command goes on its way
  ZnInetAddr source;                            // where the reply goes
  uint32_t uid = 0;                             // the caller's, as it says
  uint32_t xid = 0;
  uint64_t argumentshash = 0;  // of the arguments' bytes, as the filter of repeated calls knows them
  ZnSMBNFSArguments args;

  ZnWeakRef<ZnSMBNFSNode> node;       // where the command stands
  ZnWeakRef<ZnSMBNFSNode> node2;      // target directory of RENAME and LINK
  ZnWeakRef<ZnSMBNFSNode> savednode;  // parked across a second look-up
  ZnWeakRef<ZnSMBNFSNode> directory;  // where a look-up found the node, as `entry`: what removes or renames means
  ZnUniString entry;                  // whatever stands there by then
  ZnSMBNFSHandle handle;              // to be found
  const ZnNFSSattr* sattr = nullptr;  // to be applied; `ownsattr` or null
  ZnNFSSattr ownsattr;                // worked out from the call's
  ZnUniString name;
  uint32_t offset = 0;
  uint32_t count = 0;      // bytes wanted by a read
  ZnByteBuffer data;       // bytes read, or to be written
  uint32_t writeend = 0;   // offset behind the last byte of the write
  bool exclusive = false;  // what is created mustn't be there yet
  bool truncates = false;  // the write is one of no bytes: its offset becomes the file's size
  ZnUniString linkpath;
  bool openread = false;
  bool openwrite = false;
  bool freshopen = false;  // the file wasn't open yet when the command wanted it open
  ZnNFSStatfsres statfs;
  ZnSMBDiskSpace space;  // as the server told it
  // What it holds and waits for in the tree. Whoever waits for one of these goes on when they end, at the latest with
  // the command.
  std::unique_ptr<ZnSMBNFSWork> names;          // its turn at the names that it changes
  std::unique_ptr<ZnDirectoryListing> listing;  // that it has asked for
  std::unique_ptr<ZnSMBNFSWork> work;           // the end of that, or its place among those who follow another's
  ZnEntryChange change;                         // that the request under way makes
  uint64_t look = 0;                            // the number of the last query of one entry

  // The session's part.
  ZnSMBNFSSessionBase* session = nullptr;  // in whose queue the command stands; it outlives that
  ZnSMBNFSEnum::SessionCommand sessioncommand = ZnSMBNFSEnum::SCRequestShares;
  ZnSMBNFSEnum::SessionStatus sessionstatus = ZnSMBNFSEnum::SSTStart;
  ZnDList<ZnSMBCShareObject> shares;
  ZnDList<ZnSMBCFileObject> files;
  bool alreadylisted = false;                                 // the directory's contents are good: `files` says nothing
  std::unique_ptr<ZnSMBCFileObject> fileobject, fileobject2;  // of the request in progress
  bool retried = false;                                       // begun again after a stale connection
  bool answered = false;                                      // the server has answered the command
  bool replacedunknown = false;                               // a rename took the place of what isn't in the tree
  // Why the session couldn't do its part.
  ZnNFSEnum::Status failure = ZnNFSEnum::NFS_OK;  // for the reply; the words went to the user
  unsigned refusal = 0;                           // the server's error as code times 256 plus class, if it refused

 private:
  ZnSMBNFSCommandHandler* handler_;
};
