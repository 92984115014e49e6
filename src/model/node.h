#pragma once
// One entry of the tree: the root (level 0), a user (1), a machine (2), a share (3), or a file or directory inside a
// share (4 and deeper). The level follows from the strings and the handle.
//
// Who owns what: the dictionary in which a node's handle is entered owns the node (the file system's for levels 0 to 3,
// the session's for the rest); `children` only refer to nodes. A user node owns its user, a machine node its session.
// Whoever keeps a node across an event keeps a ZnWeakRef, since a refresh may prune it meanwhile.

#include <memory>

#include "model/children.h"
#include "model/handle.h"
#include "runtime/clock.h"
#include "runtime/dictionary.h"
#include "runtime/slab.h"
#include "runtime/uni_string.h"
#include "runtime/weak_ref.h"
#include "smb/client/file_object.h"

class ZnDirectoryListing;
class ZnSMBNFSNode;
class ZnSMBNFSSessionBase;
class ZnSMBNFSUserBase;
class ZnSMBNFSDirectoryIndex;
struct ZnSMBNFSFile;
struct ZnSMBNFSTree;

using ZnSMBNFSHandleDictionary = ZnDictionary<ZnSMBNFSHandle, std::unique_ptr<ZnSMBNFSNode>>;

class ZnSMBNFSNode : public ZnReferable, public ZnInSlab<ZnSMBNFSNode> {
 public:
  // The strings empty, the times out of date, the file object's times now.
  ZnSMBNFSNode();
  ~ZnSMBNFSNode();
  ZnSMBNFSNode(const ZnSMBNFSNode&) = delete;
  ZnSMBNFSNode& operator=(const ZnSMBNFSNode&) = delete;

  bool IsRoot() const { return parent == this; }
  bool IsUser() const { return userinfo != nullptr; }
  bool IsMachine() const { return machinenode == this; }
  bool IsShare() const { return sharenode == this; }
  // Levels 4 and deeper: what a server stores.
  bool IsInside() const { return !IsRoot() && !handle.InTop(); }
  bool IsDirectory() const;
  // Of this entry of a share, in a path that InternalToWindowsPath takes.
  ZnUniString NameInPath() const;
  ZnUniString Path() const { return path + NameInPath(); }
  // The Windows path of what lies in this directory of a share, with "\" at both ends.
  ZnUniString PathInside() const;

  ZnUniString name;  // as clients see it, apart from a link's prefix; key in the parent's children
  // Its name on the share where the mapping of `name` gives another, null else: others made it, by rules of their own.
  ZnUniString stored;
  // Windows path of the directory that holds this entry, relative to the share, with "\" at both ends.
  ZnUniString path;
  ZnNFSFattr attribs;                            // as handed to clients
  ZnSMBCFileObject fileobject;                   // what the server last said of the entry
  ZnUniString user, machine, share;              // key triple of the configuration; empty below the entry's level
  ZnSMBNFSHandle handle;                         // never changes
  uint32_t id = 0;                               // file id
  ZnSMBNFSNode* parent = nullptr;                // the root's is the root
  ZnSMBNFSNode* machinenode = nullptr;           // the machine above, or this one
  ZnSMBNFSNode* sharenode = nullptr;             // the share above, or this one
  std::unique_ptr<ZnSMBNFSUserBase> userinfo;    // user nodes
  std::unique_ptr<ZnSMBNFSSessionBase> session;  // machine nodes, once needed
  ZnSMBNFSTree* tree = nullptr;                  // share nodes, once needed; the session owns it
  ZnSMBNFSFile* file = nullptr;                  // while open; the session owns it
  ZnDirectoryListing* listing = nullptr;         // of its contents, under way; a command owns it
  ZnSMBNFSHandleDictionary* handles = nullptr;   // where this node's handle is entered
  ZnSMBNFSChildren children;
  std::unique_ptr<ZnSMBNFSDirectoryIndex> index;  // of the children; null until asked for
  ZnMoment lastused;                              // machine nodes: when a look-up last found it
  uint32_t changing = 0;                          // changes of it that are under way at the server
  uint64_t changed = 0;                           // the last look at a server before the end of one (entry_change.h)
  uint64_t written = 0;                           // the same of a write to it, or of a change of what it holds
  ZnMoment attribtime;                            // when attribs were refreshed; never is out of date
  ZnMoment contentstime;                          // when children were refreshed; never is out of date
};

// Marks a node's attributes, and its contents too if asked, as out of date.
void OutOfDate(ZnSMBNFSNode* node, bool contents);
// The same for a node and everything below it.
void NeedsUpdate(ZnSMBNFSNode* node);
