#pragma once
// One user's SMB conversation with one machine. Commands of that machine are served one at a time: the one at the head
// of the queue walks the table of session_table.cpp, in which each step starts one call of the client, and the call's
// end takes the command to its next step.
//
// What a session keeps from one command to the next: the server's address, the connection with its logon, the connected
// shares, and the open files. All but the address go with the connection, and the next command that needs them gets
// them anew. An address goes when its time is up or a connection to it fails.

#include <span>

#include "model/command.h"
#include "model/session_base.h"
#include "model/upward.h"
#include "netbios/nbt_name_query.h"
#include "runtime/dns.h"
#include "runtime/os_stream.h"
#include "session/command_queue.h"
#include "smb/client/smb_client.h"

class ZnSMBNFSSession : public ZnSMBNFSSessionBase, protected ZnSMBClient {
 public:
  // Beyond this many waiting commands a call is dropped like a lost datagram.
  static constexpr size_t kMostWaiting = 4096;

  // `machinenode` and `host` outlive the session, which enters the host's list.
  ZnSMBNFSSession(ZnSMBNFSNode* machinenode, ZnSMBNFSSessionHost* host, const ZnSMBNFSMachineConfig& config);
  // Commands that still stand in the queue are let go, without an answer: SendErrors comes first.
  ~ZnSMBNFSSession() override;

  void Request(ZnSMBNFSCommand* command, ZnSMBNFSEnum::SessionCommand what) override;
  void RemoveCommand(ZnSMBNFSCommand* command) override;
  void SendErrors() override;
  ZnNFSEnum::Status ConvertError(const ZnSMBNFSCommand& command) const override;
  bool CleanUp() override;
  void NodeGoes(ZnSMBNFSNode& node) override { node.file->close = true; }
  bool IsConnected() const override { return ZnSMBClient::IsConnected(); }
  unsigned serverclass() const override { return serverclass_; }

  size_t QueueLength() const { return queue_.Count(); }
  // Seconds to take off a time so that it is one of the server's own clock.
  int32_t timeoffset() const { return timeoffset_; }
  // The sentence for a reason why a call failed; empty for reasons that have none.
  static ZnUniString EnglishReason(ZnSMBClientValues::Reason reason);
  // The table of the state machine, a line a row: command, status, next status, action.
  static ZnUniString TableAsString();

 protected:
  // Tests ask another port.
  virtual std::unique_ptr<ZnNBTNameQuery> MakeNameQuery();

 private:
  using Command = ZnSMBNFSCommand;
  struct Row;
  static const Row kCommonRows[];
  static const Row kRows[];
  static const Row* FindRow(ZnSMBNFSEnum::SessionCommand command, ZnSMBNFSEnum::SessionStatus status);

  // ---- the queue (session_queue.cpp) ----

  void StartNext();
  void Advance();
  void HandleCommand(Command& command);
  void Complete(Command& command);
  void AbandonCall();

  // ---- calls of the client (session_calls.cpp) ----

  void Called(Result result);
  void Callback(ZnCallback<Result>*, Result result);
  void AsynchronousEvent(Result result) override;
  void CallFailed(bool atonce);
  bool ConversationIsOver() const;
  bool MayRetry(const Command& command, bool atonce) const;
  void DropConnection();

  // ---- reports (session_errors.cpp) ----

  void Report(const ZnUniString& text);
  // The command at the head fails with `status`, and the user reads why.
  void SendError(const ZnUniString& text, ZnNFSEnum::Status status);
  void Fail();
  void NoteFailure(Command& command) const;
  ZnUniString FailureText() const;
  static void Place(const Command& command, ZnOSStream& line);

  // ---- address, connection, trees (session_address.cpp, session_connect.cpp) ----

  struct Means;
  static const Means kMeans[];
  void FindAddress(Command& command);
  std::span<const Means> MeansToTry() const;
  void TryMeans();
  void MeansTried();
  bool AskDNS();
  bool AskHost(const ZnUniString& name);
  void TakeHost(const ZnDNSAnswer& answer);
  bool AskWINS();
  bool AskBroadcast();
  bool AskByName(const ZnDList<ZnInetAddr>& whom, bool broadcast);
  void DNSLookupCB(ZnCallback<const ZnDNSAnswer&>*, const ZnDNSAnswer& answer);
  void NameLookupCB(ZnCallback<bool>*, bool found);
  void TakeAddress(const ZnInetAddr& address, ZnMoment until);
  void AddressDone();
  void ForgetAddress();

  // There is a connection, and the two ends are of one mind.
  bool IsUsable() const { return ZnSMBClient::IsConnected() && !OutOfStep(); }
  void CheckConnected(Command& command);
  void CheckTreeConnected(Command& command);
  void ApplySettings();
  void ApplyTimeout();
  ZnMachine Server() const;
  ZnUniString CallingName() const;
  void ProcessConnect();
  void ProcessTreeConnect(Command& command);

  // ---- machines that can't be reached (session_reach.cpp) ----

  bool FailsAtOnce(ZnSMBNFSEnum::SessionCommand what) const;
  void FailAtOnce(Command& command);
  void NotReached();
  void Lives();
  void ProbeCB(ZnEventCallback*, ZnEvent::cbdispatch);
  void EndProbe(Command& command);

  // ---- names (session_names.cpp) ----

  bool NamesAreHeld(const Command& command);

  // ---- listings (session_listing.cpp) ----

  void GetShares(Command& command);
  void GetDirs(Command& command);
  void GetAttribs(Command& command);
  void GetEntry(Command& command);
  bool EntryIsMissing(const Command& command) const;
  void GetSpace(Command& command);
  void List(Command& command, const ZnUniString& directory, const ZnUniString& pattern);
  bool TookEntries() override;

  // ---- open files (session_files.cpp) ----

  void SetOpenMode(Command& command);
  void GetOpenFile(Command& command);
  void ProcessOpenFile(Command& command);
  void OpenDone(Command& command);
  void GetCreateFile(Command& command);
  void ProcessCreateFile(Command& command);
  void CloseNextFile(Command& command);
  void CloseEntry(Command& command);
  ZnSMBNFSFile& AddFile(const ZnSMBCFileObject& opened);
  std::unique_ptr<ZnSMBNFSFile> TakeFile(const ZnSMBNFSFile* file);
  void DropFiles();

  // ---- reading and writing (session_io.cpp) ----

  void StartRead(Command& command);
  void ReadOpened(Command& command);
  void GetRead(Command& command);
  bool ProcessRead(Command& command);
  void NextRead(Command& command);
  void StartWrite(Command& command);
  void WriteOpened(Command& command);
  void GetWrite(Command& command);
  bool ProcessWrite(Command& command);
  void NextWrite(Command& command);
  void BeginTransfer(ZnSMBNFSFile& file);
  void EndTransfer();
  void TransferFailed(Command& command);
  void OpenAgain(Command& command, bool read, bool write);
  uint16_t ChunkOf(size_t remaining) const;

  // ---- what is written and not flushed (session_flush.cpp) ----

  void FlushSoon(ZnSMBNFSFile& file);
  void FlushFirst(Command& command);
  void Flush(Command& command, ZnSMBNFSFile& file);
  ZnSMBNFSFile* NextToFlush(const Command& command) const;
  void FlushTimeout(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch);

  // ---- changes (session_changes.cpp) ----

  void GetMkdir(Command& command);
  void GetRmdir(Command& command);
  struct OtherWay;
  static const OtherWay kOtherWays[];
  static void FindEntryAgain(Command& command);
  bool GoAnotherWay(Command& command);

  // ---- removing files (session_removals.cpp) ----

  void GetRm(Command& command);
  void Doom(const ZnSMBCFileObject& file, const ZnSMBNFSNode* node);
  void RemoveDoomed(Command& command);
  bool IsReadOnly(const Command& command) const;
  void MakeWritable(Command& command);
  bool WasMadeWritable(const Command& command) const;
  void ProtectAgain(Command& command);

  // ---- renaming (session_renames.cpp) ----

  // What stands at the new name as far as the tree knows; null for nothing and for commands that rename nothing.
  static ZnSMBNFSNode* RenameTarget(const Command& command);
  void GetRename(Command& command);
  bool MayReplace(const Command& command) const;
  void Replace(Command& command);
  void MoveOrRename(Command& command);
  void Rename(Command& command);
  bool MoveIsUnknown(const Command& command) const;
  void RenameInsteadOfMove(Command& command);
  bool CannotReplace(const Command& command) const;
  void RenameInsteadOfReplace(Command& command);
  bool NameIsTaken(const Command& command) const;
  void MakeRoom(Command& command);
  bool HasMadeRoom(const Command& command) const;
  void PutBack(Command& command);
  bool RenameIsDone(const Command& command) const;
  void LeaveDoomed(Command& command);
  ZnUniString WhereItIs(const Command& command) const;

  // ---- attributes and times (session_attributes.cpp) ----

  void GetSetAllAttribs(Command& command);
  void SetAllDone(Command& command);
  void CloseBeforeSetAttribs(Command& command);
  void GetSetAttribs(Command& command);
  void CloseWritten(Command& command);
  void StartSetTimes(Command& command);
  void SetTimesOpened(Command& command);
  void GetSetTimes(Command& command);
  void ProcessSetTimes(Command& command);
  static ZnSMBCFileAttributes AttribsToSet(const Command& command, const ZnSMBNFSTree& tree,
                                           const ZnSMBCFileAttributes& present);
  ZnTimeVal ServerLocal(const ZnTimeVal& time) const;

  // ---- clean-up (session_cleanup.cpp) ----

  bool IsQuiet() const;
  void QueueCleanUp();
  bool MarkIdleFiles();
  void DropClosingTrees();
  void CloseNextTree(Command& command);
  void EndCleanUp(Command& command);

  // Null when there is none, or not any more.
  static ZnSMBNFSTree* TreeOf(const ZnSMBNFSNode* node);
  static ZnSMBNFSTree* TreeOf(const Command& command) { return TreeOf(command.node.Get()); }
  // An object for a request: closed, without times, at the Windows form of a path of the command's share.
  static std::unique_ptr<ZnSMBCFileObject> FileObject(const ZnSMBNFSTree& tree, const ZnUniString& path);

  ZnSMBNFSSessionHost* host_;
  ZnSimpleCallback<Result, ZnSMBNFSSession> callback_{this, &ZnSMBNFSSession::Callback};
  ZnSimpleCallback<bool, ZnSMBNFSSession> namecallback_{this, &ZnSMBNFSSession::NameLookupCB};
  ZnSimpleCallback<const ZnDNSAnswer&, ZnSMBNFSSession> dnscallback_{this, &ZnSMBNFSSession::DNSLookupCB};

  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSSession> flushcallback_{this, &ZnSMBNFSSession::FlushTimeout};

  ZnTimer flushtimer_;
  ZnSMBNFSCommandQueue queue_;
  bool busy_ = false;      // the head has begun
  bool stepping_ = false;  // a step is on the stack
  bool again_ = false;     // the head is to take another step when that one is over
  bool flushing_ = false;  // every command fails
  bool cleanupqueued_ = false;

  ZnInetAddr address_;
  bool addressknown_ = false;
  ZnMoment addressuntil_;                      // how long the address may be relied on
  std::span<const Means> means_;               // to be tried; the first is being tried
  std::unique_ptr<ZnNBTNameQuery> namequery_;  // while a look-up goes on
  std::unique_ptr<ZnDNSQuery> dnsquery_;       // the same through DNS
  ZnUniString dnsname_;                        // the last that DNS was asked for
  ZnOSStream lookup_;                          // what has been tried in vain

  bool unreachable_ = false;  // calls fail at once, and probes find out when it is over
  bool suspect_ = false;      // a request wasn't answered in time
  ZnMoment attempt_;          // when the last attempt to reach the machine began
  ZnMoment lastrefused_;      // when a call last failed at once
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSSession> probecallback_{this, &ZnSMBNFSSession::ProbeCB};
  ZnTimer probetimer_;

  unsigned serverclass_ = 0;
  int32_t timeoffset_ = 0;
  bool answered_ = false;       // the connection has answered the head before
  bool nomovecommand_ = false;  // the server refuses the move command; learned once
  bool noreplace_ = false;      // nor does it replace a file in one request

  // The removal or rename in progress.
  std::optional<ZnSMBCFileObject> doomed_;  // what is to be removed: the file itself, or what a rename has replaced
  bool madewritable_ = false;               // it was read-only
  bool replacetried_ = false;

  // The read or write in progress.
  size_t done_ = 0;
  uint16_t chunk_ = 0;
  ZnWeakRef<ZnSMBNFSFile> transferred_;  // the file that is being read, written or set
  ZnByteBuffer received_;

  bool nameswithoutroom_ = false;  // the listing was ended by the tree's limit

  ZnReferable alive_;
};
