#pragma once
// An asynchronous SMB1 client for one server: connecting and logging on, then any number of operations side by side.
//
// Every operation gives a handle, a ZnSmbCall, and tells its end by calling `done` once, from the event loop, never
// from within the call that began it. Destroying the handle before that withdraws the operation: `done` isn't called,
// and what the server still answers is discarded. `done` may destroy the handle, begin operations, or delete the
// client. A handle may outlive the client; its `done` is never called then.
//
// Objects and buffers that are handed over by pointer belong to the caller and stay in use until `done` is called or
// the handle is destroyed. Those handed over by reference, and texts, are copied. Paths run from the top of the share,
// with backslashes.
//
// Common failures: ErrNotConnected; ErrBadTID (the object's tree isn't connected here); ErrSMB (the server refused);
// ErrTimedOut (no reply in time; the connection goes on); ErrRead, ErrBadValue (a reply that can't be read, or can't be
// true); ErrInternal (a request that doesn't fit into a message). When the connection ends, the client's owner hears
// first, and then every operation ends with the reason of that.

#include <memory>

#include "netbios/machine.h"
#include "runtime/event_loop.h"
#include "runtime/list.h"
#include "runtime/unix_error.h"
#include "smb/client/call.h"
#include "smb/client/disk_space.h"
#include "smb/client/exchange.h"
#include "smb/client/file_object.h"
#include "smb/client/server_info.h"
#include "smb/client/tree_object.h"
#include "smb/client/tree_password.h"

class ZnSmbConversation;

// For the next connection, but for the first, which holds at once.
struct ZnSmbSettings {
  uint32_t replytimeout = 10;  // seconds that a reply may take, and the NetBIOS session may take to come about
  ZnUniString domain;          // to log on to
  // In which forms a password may go out. A logon or tree connect that would need another fails with ErrClearPassword
  // or ErrWeakLogon, and nothing is sent.
  ZnSMBLogonRules rules;
  ZnEncoding encoding = ZnCodeset::Cp850;  // of texts that aren't Unicode on the wire
};

struct ZnSmbOpenMode {
  ZnSMBClientValues::Access access = ZnSMBClientValues::AccessRead;
  ZnSMBClientValues::Sharing sharing = ZnSMBClientValues::DenyNone;
  bool create = false;  // an absent file is made, with file->attribs and file->modified; the oldest dialect makes none
  ZnSMBClientValues::Openfunction existing = ZnSMBClientValues::OFOpen;  // what becomes of one that is there
};

class ZnSmbClient {
 public:
  class Owner {
   public:
    virtual ~Owner() = default;
    // The connection has ended by itself; called from the loop, before the operations in flight hear of it. The client
    // may be deleted, or Connect called. Not called for Disconnect, nor while Connect is under way: that tells itself.
    virtual void ConnectionLost(ZnSMBClientValues::Reason reason) = 0;
  };

  // Neither is owned; both outlive the client.
  ZnSmbClient(ZnEventLoopBase* loop, Owner* owner);
  ZnSmbClient(const ZnSmbClient&) = delete;
  ZnSmbClient& operator=(const ZnSmbClient&) = delete;
  ~ZnSmbClient();

  void Settings(const ZnSmbSettings& settings);

  // ---- the connection

  // Connects to `machine` at its address and port, calls it from the NetBIOS name `localName`, negotiates, logs on as
  // `user` and connects "IPC$" (the oldest dialect has neither). Forgets an earlier connection. Also fails with
  // ErrConnect (Error() tells), ErrNegprot, ErrClearPassword, ErrWeakLogon; after a failure there is no connection.
  ZnSmbCall Connect(const ZnMachine& machine, const ZnUniString& localName, const ZnUniString& user,
                    const ZnUniString& password, ZnSmbDone done);
  // Connects tree->share of tree->machine as tree->service; success sets the tid and the service that the server
  // reports.
  ZnSmbCall TreeConnect(ZnSMBCTreeObject* tree, const ZnUniString& password, ZnSmbDone done);
  // Ends the connection without a word to the server and forgets all that belonged to it: trees, what was negotiated.
  // Operations in flight end with ErrDisconnect, from the loop.
  void Disconnect();
  // Logged on; operations may begin.
  bool IsConnected() const;
  // The server is known to have hung up while nothing was asked.
  bool HasHungUp() const;
  const ZnSMBServerInfo& server() const;
  // Of the last connection: why it didn't come about, or how it broke.
  const ZnUnixError& Error() const;
  // Of the names in requests.
  ZnEncoding nameencoding() const;
  // Whether Replace may be used.
  bool CanReplace() const;
  // Whether SetInfo sets UTC in units of 100 ns and attributes too. Otherwise times are the server's local time, in
  // steps of two seconds from 1980 on, and a server may leave the attributes alone.
  bool SetsLongTimes() const;

  // ---- files. `caller` is on whose behalf: where requests have to wait, callers take turns.

  // Opens file->path. Success sets fid, isopen, access, attribs and size; created, accessed and modified become UTC, or
  // zero where the server tells only its local time. ErrBadFID when it is open already. If the handle is destroyed
  // while the server is opening the file, it is closed again.
  ZnSmbCall Open(ZnSmbCaller caller, ZnSMBCFileObject* file, const ZnSmbOpenMode& mode, ZnSmbDone done);
  // Reads up to `length` bytes (any number) at `offset`, in as many requests as it takes, side by side. `buffer` is
  // replaced by what came; fewer bytes mean the end of the file.
  ZnSmbCall Read(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset, size_t length, ZnByteBuffer* buffer,
                 ZnSmbDone done);
  // Writes all bytes at `offset`, likewise; what fits into one request is shared, not copied. ErrServer when the server
  // took less than it was sent, ErrNotSupported when the file would become larger than this server's requests can say.
  // No bytes: nothing is sent.
  ZnSmbCall Write(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset, const ZnByteBuffer& bytes,
                  ZnSmbDone done);
  // Cuts or extends the file. ErrNotSupported as above.
  ZnSmbCall SetSize(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t size, ZnSmbDone done);
  // `modified`, in the server's local time, becomes the last write time; zero leaves it to the server. The request goes
  // out even if the handle is destroyed at once.
  ZnSmbCall Close(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnTimeVal& modified, ZnSmbDone done);
  ZnSmbCall Flush(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done);
  ZnSmbCall Delete(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done);
  // `newPath` lies in the same tree.
  ZnSmbCall Rename(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnUniString& newPath, ZnSmbDone done);
  // Gives a file another name in its directory, in place of the file that has that name, if there is one.
  ZnSmbCall Replace(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnUniString& name, ZnSmbDone done);
  // `to` may lie in another tree of this connection.
  ZnSmbCall Move(ZnSmbCaller caller, const ZnSMBCFileObject& from, const ZnSMBCFileObject& to, ZnSmbDone done);
  // By path: file.attribs.
  ZnSmbCall SetAttributes(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done);
  // By fid: file.created, file.accessed, file.modified, in the server's local time and steps of two seconds.
  ZnSmbCall SetTimes(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done);
  ZnSmbCall CreateDirectory(ZnSmbCaller caller, const ZnSMBCFileObject& directory, ZnSmbDone done);
  ZnSmbCall DeleteDirectory(ZnSmbCaller caller, const ZnSMBCFileObject& directory, ZnSmbDone done);

  // ---- listings and information (all but GetDiskSpace not in the oldest dialect)

  // Lists what matches `pattern` in a directory, "." and ".." included; an entry's path is its name. The entries of
  // each reply are appended to *list, then `took` is called: it takes them out; false ends the operation with
  // ErrInternal. It may destroy the handle. No match, as far as the server says "no more files", is success.
  ZnSmbCall List(ZnSmbCaller caller, const ZnSMBCDirectoryObject& directory, const ZnUniString& pattern,
                 ZnDList<ZnSMBCFileObject>* list, std::function<bool()> took, ZnSmbDone done);
  // Of an open file by its fid, of another, or of a directory, by its path.
  ZnSmbCall SetInfo(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnSMBCFileChange& change, ZnSmbDone done);
  // Of the disk behind a connected share. Older servers tell at most a few gibibytes.
  ZnSmbCall GetDiskSpace(ZnSmbCaller caller, const ZnSMBCTreeObject& tree, ZnSMBDiskSpace* space, ZnSmbDone done);

 private:
  std::unique_ptr<ZnSmbConversation> conversation_;
};
