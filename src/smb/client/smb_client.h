#pragma once
// An asynchronous SMB1 client: one connection to one server, one operation at a time.
//
// Every operation starts a small conversation of requests and replies on the event loop and ends by dispatching the
// callback that it was given. It answers at once
//   ResultPending   the callback will fire, once, from the event loop;
//   ResultFailure   nothing was begun and the callback won't fire; reason() tells why;
//   ResultSuccess   only without a callback (null): the call then runs the event loop itself until the operation is
//   over.
// The callback may start the next operation, call Disconnect, or delete the client.
//
// Objects and buffers that are handed over by pointer belong to the caller, and stay in use until the callback fires or
// Disconnect is called. Texts are copied. Paths run from the top of the share, with backslashes.
//
// Common failures: ErrNotConnected; ErrBusy (an operation is in flight, and goes on undisturbed); ErrBadTID (the
// object's tree isn't connected here); ErrWrite; ErrRead (a reply that can't be read or isn't the one expected);
// ErrTimedOut; ErrDisconnect; ErrSMB (the server refused: errorclass(), errorcode()).

#include <cstdint>
#include <map>
#include <optional>

#include "netbios/nbt_session.h"
#include "runtime/callback.h"
#include "runtime/event_loop.h"
#include "runtime/list.h"
#include "runtime/timer.h"
#include "smb/client/file_object.h"
#include "smb/client/operations.h"
#include "smb/client/password_fields.h"
#include "smb/client/server_info.h"
#include "smb/client/server_objects.h"
#include "smb/client/share_object.h"
#include "smb/client/transaction_parts.h"
#include "smb/client/tree_object.h"
#include "smb/wire/client_values.h"
#include "smb/wire/message.h"

struct ZnSMBCLanman_ReqParams;
struct ZnSMBCLanman_RespParams;
struct ZnSMBCNegotiate_RespWords;
struct ZnSMBCTrans2_ReqParams;

class ZnSMBClient : public ZnNBTSession {
 public:
  enum Result { ResultSuccess = 0, ResultPending = 1, ResultFailure = 2 };
  using Completion = ZnCallback<Result>;
  using Reason = ZnSMBClientValues::Reason;

  static constexpr unsigned smb_write_overhead = 48;  // bytes of a message that a write's data can't use
  static constexpr const char* pipelanman = "\\PIPE\\LANMAN";

  // The loop isn't owned and outlives the client.
  explicit ZnSMBClient(ZnEventLoopBase* loop);
  ~ZnSMBClient() override;

  // ---- settings, for the next connection
  // -----------------------------------------------------------------------------------

  // How long a reply may take, in seconds (10).
  void replytimeout(uint32_t seconds) { replytimeout_ = seconds; }
  // The domain to log on to.
  void workgroup(const ZnUniString& domain) { workgroup_ = domain; }
  // Log on to the domain that the server names instead.
  void useserverdomain(bool use) { useserverdomain_ = use; }
  // In which forms a password may go out. A logon or tree connect that would need another fails with ErrClearPassword
  // or ErrWeakLogon, and nothing is sent.
  void logonrules(const ZnSMBLogonRules& rules) { logonrules_ = rules; }
  // Of texts that aren't Unicode on the wire (code page 850).
  void encoding(ZnEncoding eightBit) { encoding_ = eightBit; }

  // ---- connection
  // ----------------------------------------------------------------------------------------------------------

  // Connects to `machine`, calls it from the NetBIOS name `localName`, negotiates, logs on and connects "IPC$". Also
  // fails with ErrConnected, ErrBind, ErrConnect, ErrNegprot. A refused logon leaves the connection open for
  // OpenSessionRetry.
  Result OpenSession(const ZnMachine& machine, const ZnUniString& localName, const ZnUniString& user,
                     const ZnUniString& password, Completion* callback);
  // Another logon on the live connection.
  Result OpenSessionRetry(const ZnUniString& user, const ZnUniString& password, Completion* callback);
  // Connects tree->share of tree->machine as tree->service; success sets the tid and the service that the server
  // reports.
  Result TreeConnect(ZnSMBCTreeObject* tree, const ZnUniString& password, Completion* callback);
  // Ends the connection without a word to the server and forgets everything that belonged to it: trees, queued
  // messages, what was negotiated. An operation in flight is withdrawn: its callback isn't called. The object is then
  // as good as new.
  void Disconnect();

  // ---- files
  // ---------------------------------------------------------------------------------------------------------------

  // Opens file->path with file->access. `create` makes an absent file, with file->attribs and file->modified;
  // `existing` says what becomes of one that is there (the oldest dialect opens it and makes none). Success sets fid,
  // isopen, access, attribs, size, modified. ErrBadFID when open already.
  Result OpenFile(ZnSMBCFileObject* file, ZnSMBClientValues::Sharing sharing, bool create,
                  ZnSMBClientValues::Openfunction existing, Completion* callback);
  // Reads up to `length` bytes at `offset` of an open file in one exchange; `buffer` is replaced by what came. Fewer
  // bytes mean the end of the file, or that more wouldn't fit maxbuffersize() - 200.
  Result ReadFile(const ZnSMBCFileObject& file, uint16_t length, uint32_t offset, ZnByteBuffer* buffer,
                  Completion* callback);
  // Opens, reads all of a file below 64 KiB, closes.
  Result DownloadFile(const ZnSMBCFileObject& file, ZnByteBuffer* buffer, Completion* callback);
  // Writes all bytes at `offset` of an open file; the bytes are shared, not copied. An empty buffer cuts or extends the
  // file to `offset`. ErrServer when the server took less than it was sent.
  Result WriteFile(const ZnSMBCFileObject& file, uint32_t offset, const ZnByteBuffer& buffer, Completion* callback);
  // `time` becomes the last write time; zero leaves it to the server. file->isopen is cleared as soon as the request is
  // out.
  Result CloseFile(ZnSMBCFileObject* file, const ZnTimeVal& time, Completion* callback);
  Result FlushFile(const ZnSMBCFileObject& file, Completion* callback);
  Result DeleteFile(const ZnSMBCFileObject& file, Completion* callback);
  // `newName` is a path in the same tree.
  Result RenameFile(const ZnSMBCFileObject& file, const ZnUniString& newName, Completion* callback);
  // Gives a file another name in its directory, in place of the file that has that name, if there is one. Only where
  // CanReplace().
  Result ReplaceFile(const ZnSMBCFileObject& file, const ZnUniString& name, Completion* callback);
  bool CanReplace() const { return server_.capabilities.passthrough_levels; }
  // `to` may lie in another tree of this connection.
  Result MoveFile(const ZnSMBCFileObject& from, const ZnSMBCFileObject& to, Completion* callback);
  // By path: file.attribs.
  Result SetAttributes(const ZnSMBCFileObject& file, Completion* callback);
  // By fid: file.created, file.accessed, file.modified, in steps of two seconds.
  Result SetTimes(const ZnSMBCFileObject& file, Completion* callback);
  Result CreateDir(const ZnSMBCFileObject& file, Completion* callback);
  Result DeleteDir(const ZnSMBCFileObject& file, Completion* callback);

  // ---- listings and file information (not in the oldest dialect)
  // -------------------------------------------------------------

  // Appends one object for each entry of `directory` that matches `pattern`, "." and ".." included; its path is the
  // entry's name. No match, as far as the server says "no more files", is success. Entries that came before a failure
  // stay in the list.
  Result ListDirectory(const ZnSMBCDirectoryObject& directory, ZnDList<ZnSMBCFileObject>* list,
                       const ZnUniString& pattern, Completion* callback);
  // Fills in what the level tells of file->path.
  Result GetFileInfo(ZnSMBCFileObject* file, ZnSMBClientValues::FileInfoLevel level, Completion* callback);
  // Of an open file by its fid, of another, or of a directory, by its path. With SetsLongTimes the times are UTC, in
  // units of 100 ns, and attributes are set too; else they are the server's local time, in steps of two seconds from
  // 1980 on, and a server may leave the attributes alone.
  Result SetFileInfo(const ZnSMBCFileObject& file, const ZnSMBCFileChange& change, Completion* callback);
  bool SetsLongTimes() const { return server_.dialect == ZnSMBClientValues::DialectNT; }
  // Of the disk behind a connected share, in every dialect. Older servers tell at most a few gibibytes.
  Result GetDiskSpace(const ZnSMBCTreeObject& tree, ZnSMBDiskSpace* space, Completion* callback);
  // A transaction of the caller's own; the three parts of the reply replace the out buffers.
  Result Transaction(const ZnSMBCTreeObject& tree, const ZnUniString& name, const ZnByteBuffer& setup,
                     const ZnByteBuffer& params, const ZnByteBuffer& data, ZnByteBuffer* outSetup,
                     ZnByteBuffer* outParams, ZnByteBuffer* outData, Completion* callback);

  // ---- questions to the server (LANMAN remote API); ErrIPC with ipcstatus() when it answers with an error
  // --------------------

  // `longNames` asks for names of up to 128 bytes instead of 13.
  Result ListShares(ZnDList<ZnSMBCShareObject>* list, Completion* callback, bool longNames);
  // The servers of `domain` whose type has a bit of `type`. `longNames` asks for level 100, and falls back to level 1
  // where the server doesn't know it.
  Result ListServers(const ZnUniString& domain, ZnDList<ZnSMBCServerObject>* list, uint32_t type, bool longNames,
                     Completion* callback);
  Result GetUserInfo(ZnSMBCUserObject* user, Completion* callback);
  Result GetServerTime(ZnSMBCTimeObject* time, Completion* callback);

  // ---- how the last operation ended
  // ------------------------------------------------------------------------------------------

  Reason reason() const { return reason_; }
  uint8_t errorclass() const { return errorclass_; }
  uint16_t errorcode() const { return errorcode_; }
  // Code times 256 plus class, 0 without an error: the key of ZnSMBErrorToString.
  unsigned errorkey() const { return errorcode_ * 256U + errorclass_; }
  uint32_t ipcstatus() const { return ipcstatus_; }
  // The last request; CmdNone if the operation hasn't got as far as one.
  ZnSMBClientValues::Command lastcommand() const { return lastcommand_; }
  // The reason in words for a log, several lines.
  ZnUniString ReasonAsString() const;

  // ---- the connection's state
  // --------------------------------------------------------------------------------------------------

  // The NetBIOS session stands; the logon may still be missing.
  bool IsConnected() const { return IsEstablished(); }
  bool IsBusy() const { return state_ != ZnSMBClientValues::StateSleeping; }
  const ZnSMBServerInfo& server() const { return server_; }
  // Of the names in requests.
  ZnEncoding nameencoding() const { return RequestEncoding(); }
  uint16_t maxbuffersize() const { return server_.maxbuffersize(); }
  // Requests and replies no longer match (an unreadable or late reply, a failed write, a time-out): the owner has to
  // Disconnect before the next request. Disconnect clears it.
  bool OutOfStep() const { return outofstep_; }

 protected:
  // Ends a synchronous call. Also called, with ResultFailure, when something happens while no operation runs: the
  // connection is lost, or a message arrives (OutOfStep is then set). Owners override it to hear of that; it is the
  // last thing done.
  virtual void AsynchronousEvent(Result result);
  // The entries of one more reply stand in the list of ListDirectory: owners override it to take them out as they come.
  // False ends the operation with ErrInternal.
  virtual bool TookEntries() { return true; }

 private:
  using Command = ZnSMBClientValues::Command;
  using OperationState = ZnSMBClientValues::State;

  // One row of the table of conversations: what to do, in a state, with the reply to a command. Without a row the
  // operation ends with ErrInternal; a refusal without a step of its own ends it with ErrSMB.
  struct Step {
    OperationState state;
    Command command;  // CmdNone: the connection is up
    Result (ZnSMBClient::*accepted)();
    Result (ZnSMBClient::*refused)() = nullptr;
  };
  static const Step kSteps[];
  static const Step* FindStep(OperationState state, Command command);

  // ---- the life of an operation (client_core.cpp) ----

  // Both keep the reason.
  Result Fail(Reason reason);
  bool Refuse(Reason reason);
  // What a step answers after a further request.
  static Result Sent(Result sent);
  // Whether an operation on this tree may begin; selects the tree for the requests that follow.
  bool Ready(uint16_t tid);
  bool SetTreeContext(uint16_t tid);
  // The end of every public operation: `sent` is the outcome of its first request.
  Result Start(OperationState state, Result sent, Completion* callback);
  Result ReturnFromAPI();
  void Finish(Result result);
  void EndOperation();
  void ForgetConversation();

  void EventCB(SessionCallback*, cbdispatch event);
  void TimeoutCB(ZnEventCallback*, ZnEvent::cbdispatch);
  Result HandleEvent(cbdispatch event);
  Result HandleMessage();

  // Sends a request of any section classes, under a new multiplex id, and arms the time-out of its reply.
  template <class Words, class Data>
  Result SendRequest(Command command, const Words& words, const Data& data) {
    BeginRequest(command);
    return Transmit(ZnSMBClientEncode(header_, words, data));
  }
  void BeginRequest(Command command);
  Result Transmit(const ZnPacket& message);

  // Reads a section of the last reply; false, with ErrRead, when it can't be.
  template <class Words>
  bool ReadWords(Words& words) {
    return reply_.ReadWords(words) || Refuse(ZnSMBClientValues::ErrRead);
  }
  template <class Data>
  bool ReadData(Data& data) {
    return reply_.ReadData(data) || Refuse(ZnSMBClientValues::ErrRead);
  }
  Result ReplyAccepted() { return ResultSuccess; }  // the step of every operation whose reply has nothing of interest

  // Of the strings in requests, and in replies.
  ZnEncoding RequestEncoding() const { return server_.unicode ? ZnCodeset::Utf16Lsb : encoding_; }
  ZnEncoding ReplyEncoding() const {
    return server_.unicode && reply_.header.unicode ? ZnEncoding{ZnCodeset::Utf16Lsb} : encoding_;
  }

  template <class T>
  T& Operation() {
    return std::get<T>(storage_);
  }

  // ---- negotiate and logon (client_logon.cpp), trees (client_trees.cpp) ----

  Result SendNegotiate();
  Result NegotiateReply();
  void TakeNegotiateWords(const ZnSMBCNegotiate_RespWords& words);
  Result SendSessionSetup();
  Result SessionSetupReply();
  Result SendTreeConnect(const ZnSMBCTreeObject& tree, const ZnUniString& password);
  Result SendTreeConnectX(const ZnSMBCTreeObject& tree, const ZnUniString& password);
  Result ConnectIPC();
  Result IPCTreeReply();
  Result TreeConnectReply();
  Result TreeConnectXReply();
  void EnterTree(uint16_t tid, ZnSMBCTreeObject& tree);

  // ---- files (client_files.cpp, client_read.cpp, client_write.cpp) ----

  Result SendOpen(const ZnUniString& path, ZnSMBClientValues::Access access, ZnSMBClientValues::Sharing sharing);
  Result SendOpenX(const ZnSMBCFileObject& file, ZnSMBClientValues::Sharing sharing, bool create,
                   ZnSMBClientValues::Openfunction existing);
  Result OpenReply();
  Result OpenXReply();
  Result MoveReply();
  template <class Words>
  Result Opened(Words words);
  Result SendClose(uint16_t fid, const ZnTimeVal& time);
  Result SendRead(uint16_t fid, uint32_t offset, uint16_t count, uint16_t remaining);
  bool TakeReadData(ZnByteBuffer& buffer, size_t& count);
  Result ReadReply();
  Result DownloadOpened();
  Result DownloadReply();
  Result SendNextDownload();
  Result SendNextWrite();
  Result WriteReply();

  // ---- transactions (client_transactions.cpp) and what runs over them (client_listing.cpp, client_info.cpp,
  // client_space.cpp, client_ipc.cpp) ----

  Result SendTrans(const ZnUniString& name, const ZnByteBuffer& setup, const ZnByteBuffer& params,
                   const ZnByteBuffer& data);
  Result SendTrans2(const ZnSMBCTrans2_ReqParams& params, const ZnByteBuffer& data);
  // Adds a message of a reply to what was collected. ResultPending until all of it is there.
  Result RecvTrans();
  // The same, for replies that mustn't have setup words.
  Result RecvTransWithoutSetup();
  Result TransactionReply();
  Result ListDirectoryReply();
  Result ListDirectoryRefused();
  Result TakeEntries(unsigned count);
  Result SendFindNext();
  Result FileInfoReply();
  Result SetFileInfoReply();
  Result SendQueryFSInfo();
  Result FSInfoReply();
  Result FSInfoRefused();
  Result SendQueryDisk();
  Result DiskReply();
  bool ReadyForIPC();
  Result SendLanman(const ZnSMBCLanman_ReqParams& params);
  Result RecvLanman(ZnSMBCLanman_RespParams& params);
  bool LanmanText(ZnUniString& text, uint32_t pointer, const ZnSMBCLanman_RespParams& params);
  Result ListSharesReply();
  Result SendListServers();
  Result ListServersReply();
  Result UserInfoReply();
  Result ServerTimeReply();

  ZnEventLoopBase* loop_;
  ZnSimpleCallback<cbdispatch, ZnSMBClient> sessioncallback_{this, &ZnSMBClient::EventCB};
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBClient> timeoutcallback_{this, &ZnSMBClient::TimeoutCB};
  ZnTimer timeout_;

  // Settings.
  uint32_t replytimeout_ = 10;  // seconds
  ZnUniString workgroup_;
  bool useserverdomain_ = false;
  ZnSMBLogonRules logonrules_;
  ZnEncoding encoding_ = ZnCodeset::Cp850;

  // The operation in flight.
  OperationState state_ = ZnSMBClientValues::StateSleeping;
  Completion* callback_ = nullptr;  // null for a synchronous call
  bool synchronous_ = false;        // a call is running the loop
  ZnSMBOperation::Storage storage_;
  ZnSMBTransactionParts collected_;

  // How the last one ended.
  Reason reason_ = ZnSMBClientValues::ErrNone;
  Command lastcommand_ = ZnSMBClientValues::CmdNone;  // its last request
  uint8_t errorclass_ = 0;
  uint16_t errorcode_ = 0;
  uint32_t ipcstatus_ = 0;

  // The conversation. The header's command is that of the request whose reply is awaited, or CmdNone.
  ZnSMBCHeader header_;
  ZnSMBCDecode reply_;
  ZnSMBServerInfo server_;
  std::optional<ZnSMBCTreeObject> ipctree_;
  std::map<uint16_t, ZnSMBCTreeObject> trees_;  // by tid, the IPC tree included
  bool outofstep_ = false;
  bool sending_ = false;  // inside a write, where the session may tell of a lost connection
  bool lost_ = false;     // it did
};
