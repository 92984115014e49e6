#pragma once
// An NFS call in flight. It walks its procedure's steps until a reply can be sent, and belongs to nobody but itself
// meanwhile: whoever ends it deletes it, and its destructor withdraws it from its session and from the server.

#include <list>
#include <memory>
#include <variant>

#include "model/enums.h"
#include "model/node.h"
#include "rpc/nfs_records.h"
#include "rpc/rpc_records.h"
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

// A directory's listing on its way into the tree.
struct ZnSMBNFSListing {
  struct Entry {
    ZnSMBCFileObject file;
    ZnUniString stored;  // as of the node
  };

  uint32_t number = 0;       // as of the children that it has held
  size_t held = 0;           // so many
  uint32_t idbefore = 0;     // the last file id before it began
  std::list<Entry> waiting;  // what is new under names that others made: it comes when all of ours are known
  size_t waitingbytes = 0;   // that these will take as nodes
};

// Work for a command that goes on over several turns of the loop, and ends with the command.
struct ZnSMBNFSWork {
  ZnSMBNFSWork() = default;
  ZnSMBNFSWork(const ZnSMBNFSWork&) = delete;
  ZnSMBNFSWork& operator=(const ZnSMBNFSWork&) = delete;
  virtual ~ZnSMBNFSWork() = default;
};

class ZnSMBNFSCommand {
 public:
  // A call from `source`; `handler` (not owned) hears of its end. A null handler is for a session's own clean-up
  // command.
  ZnSMBNFSCommand(const ZnInetAddr& source, const ZnRPCAuthBlock& auth, uint32_t xid, ZnSMBNFSCommandHandler* handler);
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
  ZnRPCAuthBlock auth;
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
  ZnSMBNFSListing listing;
  std::unique_ptr<ZnSMBNFSWork> work;

  // The session's part.
  ZnSMBNFSSessionBase* session = nullptr;  // in whose queue the command stands; it outlives that
  ZnSMBNFSEnum::SessionCommand sessioncommand = ZnSMBNFSEnum::SCRequestShares;
  ZnSMBNFSEnum::SessionStatus sessionstatus = ZnSMBNFSEnum::SSTStart;
  ZnDList<ZnSMBCShareObject> shares;
  ZnDList<ZnSMBCFileObject> files;
  bool alreadylisted = false;                                 // the directory's contents are good: `files` says nothing
  std::unique_ptr<ZnSMBCFileObject> fileobject, fileobject2;  // of the request in progress
  bool retried = false;                                       // begun again after a stale connection
  uint32_t conversation = 0;                                  // that let the command through, by its number
  bool answered = false;                                      // the server has answered the command
  bool replacedunknown = false;                               // a rename took the place of what isn't in the tree
  // Why the session couldn't do its part.
  ZnNFSEnum::Status failure = ZnNFSEnum::NFS_OK;  // for the reply; the words went to the user
  unsigned refusal = 0;                           // the server's error as code times 256 plus class, if it refused

 private:
  ZnSMBNFSCommandHandler* handler_;
};
