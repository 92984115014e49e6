// The life of an operation: begun, waiting for replies, over.

#include <unistd.h>

#include "smb/client/client_error.h"
#include "smb/client/smb_client.h"

using Values = ZnSMBClientValues;

namespace {

constexpr uint16_t kFirstMid = 16384;

ZnSMBCHeader NewHeader() {
  ZnSMBCHeader header;
  header.command = Values::CmdNone;
  header.long_names = true;
  header.pid = static_cast<uint16_t>(getpid());
  header.uid = static_cast<uint16_t>(geteuid());
  header.mid = kFirstMid;
  return header;
}

}  // namespace

ZnSMBClient::ZnSMBClient(ZnEventLoopBase* loop)
    : ZnNBTSession(loop, nullptr), loop_(loop), timeout_(loop, &timeoutcallback_), header_(NewHeader()) {
  SetSessionCallback(&sessioncallback_);
}

ZnSMBClient::~ZnSMBClient() { Disconnect(); }

void ZnSMBClient::Disconnect() {
  bool withdrawn = IsBusy();
  EndOperation();
  callback_ = nullptr;
  _disconnect(false);
  ForgetConversation();
  if (withdrawn && synchronous_) {
    Fail(Values::ErrDisconnect);
    loop_->ExitEventLoop(ResultFailure);
  }
}

// Ids, half-collected replies and what was negotiated are worth nothing on another connection.
void ZnSMBClient::ForgetConversation() {
  header_ = NewHeader();
  reply_ = ZnSMBCDecode();
  server_ = ZnSMBServerInfo();
  ipctree_.reset();
  trees_.clear();
  outofstep_ = false;
}

ZnSMBClient::Result ZnSMBClient::Fail(Reason reason) {
  reason_ = reason;
  return ResultFailure;
}

bool ZnSMBClient::Refuse(Reason reason) {
  reason_ = reason;
  return false;
}

ZnSMBClient::Result ZnSMBClient::Sent(Result sent) { return sent == ResultSuccess ? ResultPending : sent; }

bool ZnSMBClient::Ready(uint16_t tid) {
  if (!IsConnected() || server_.dialect == ZnSMBServerInfo::kNoDialect) return Refuse(Values::ErrNotConnected);
  if (IsBusy()) return Refuse(Values::ErrBusy);
  lastcommand_ = Values::CmdNone;
  return SetTreeContext(tid);
}

bool ZnSMBClient::SetTreeContext(uint16_t tid) {
  header_.caseless_paths = false;
  if (tid != 0) {
    auto tree = trees_.find(tid);
    if (tree == trees_.end()) return Refuse(Values::ErrBadTID);
    header_.caseless_paths = tree->second.service == Values::ServicePrinter;
  }
  header_.tid = tid;
  return true;
}

ZnSMBClient::Result ZnSMBClient::Start(OperationState state, Result sent, Completion* callback) {
  if (sent != ResultSuccess) {
    EndOperation();
    return ResultFailure;
  }
  state_ = state;
  callback_ = callback;
  return ReturnFromAPI();
}

ZnSMBClient::Result ZnSMBClient::ReturnFromAPI() {
  if (callback_) return ResultPending;
  synchronous_ = true;
  int code = loop_->EnterEventLoop();
  synchronous_ = false;
  if (IsBusy()) {  // somebody else has stopped the loop: the reply may still come, and nobody waits for it
    EndOperation();
    outofstep_ = true;
    return Fail(Values::ErrInternal);
  }
  return code == ResultSuccess ? ResultSuccess : ResultFailure;
}

void ZnSMBClient::BeginRequest(Command command) {
  reason_ = Values::ErrNone;
  errorclass_ = 0;
  errorcode_ = 0;
  ipcstatus_ = 0;
  lastcommand_ = command;
  header_.command = command;
  header_.mid = static_cast<uint16_t>(header_.mid + 2);
  header_.unicode = server_.unicode;
}

ZnSMBClient::Result ZnSMBClient::Transmit(const ZnPacket& message) {
  size_t words = size_t{2} * message[ZnSMBCHeader::kSize];
  bool fits = message.Length() <= kZnSmbFramingSize + words + 0xFFFF;  // the byte count has 16 bits
  sending_ = true;
  lost_ = false;
  bool written = fits && WriteMessage(message);
  sending_ = false;
  if (!written || lost_) {
    outofstep_ = true;
    return Fail(Values::ErrWrite);
  }
  timeout_.Set(std::chrono::seconds(replytimeout_));
  return ResultSuccess;
}

void ZnSMBClient::TimeoutCB(ZnEventCallback*, ZnEvent::cbdispatch) { EventCB(nullptr, SessionTimedOut); }

void ZnSMBClient::EventCB(SessionCallback*, cbdispatch event) {
  if (sending_) {  // a write has found the connection broken: whoever is sending ends the operation
    lost_ = true;
    return;
  }
  if (synchronous_ && !IsBusy()) {  // the call is over but hasn't returned yet: its result and reason stand
    outofstep_ = outofstep_ || event == SessionMessage;
    ReadMessage();
    return;
  }
  Result result = HandleEvent(event);
  if (result != ResultPending) Finish(result);
}

ZnSMBClient::Result ZnSMBClient::HandleEvent(cbdispatch event) {
  switch (event) {
    case SessionDisconnected:
      return Fail(WasEstablished() ? Values::ErrDisconnect : Values::ErrConnect);
    case SessionTimedOut:
      return Fail(Values::ErrTimedOut);
    case SessionMessage:
      return HandleMessage();
    case SessionConnected:
      break;
  }
  const Step* step = FindStep(state_, header_.command);
  return step ? (this->*step->accepted)() : Fail(Values::ErrInternal);
}

// The message is taken out of the queue whatever it is: left there, it would shift every later reply by one.
ZnSMBClient::Result ZnSMBClient::HandleMessage() {
  reply_.Read(ReadMessage());
  const Step* step = FindStep(state_, header_.command);
  if (!step) {
    outofstep_ = true;
    return Fail(Values::ErrInternal);
  }
  const ZnSMBCHeader& header = reply_.header;
  bool expected = reply_.valid && header.command == header_.command && header.mid == header_.mid;
  if (!expected) return Fail(Values::ErrRead);

  header_.command = Values::CmdNone;
  errorclass_ = header.error_class;
  errorcode_ = header.error_code;
  if (errorclass_ == 0) return (this->*step->accepted)();
  Fail(Values::ErrSMB);
  return step->refused ? (this->*step->refused)() : ResultFailure;
}

void ZnSMBClient::Finish(Result result) {
  bool unreadable = reason_ == Values::ErrRead || reason_ == Values::ErrWrite || reason_ == Values::ErrTimedOut;
  if (result == ResultFailure && unreadable) outofstep_ = true;
  EndOperation();
  Completion* callback = callback_;
  callback_ = nullptr;
  // Either may delete this client.
  if (callback) {
    callback->Dispatch(result);
  } else {
    AsynchronousEvent(result);
  }
}

void ZnSMBClient::EndOperation() {
  state_ = Values::StateSleeping;
  header_.command = Values::CmdNone;
  timeout_.Cancel();
  storage_ = std::monostate();
  collected_ = ZnSMBTransactionParts();
}

void ZnSMBClient::AsynchronousEvent(Result result) {
  if (synchronous_) loop_->ExitEventLoop(result);
}

ZnUniString ZnSMBClient::ReasonAsString() const {
  ZnUniString text = "Error: " + ZnUniString(Values::CommandString(lastcommand_)) + ":\n - ";
  text += Values::ReasonString(reason_);
  if (reason_ == Values::ErrSMB) {
    text += "\n" + ZnSMBClientError::CoherentSMBError(static_cast<ZnSMBClientError::SMBError>(errorcode_));
  } else if (reason_ == Values::ErrIPC) {
    text += "\n" + ZnSMBClientError::CoherentIPCError(static_cast<ZnSMBClientError::IPCError>(ipcstatus_));
  }
  return text;
}
