#include "netbios/nbt_session.h"

#include <cerrno>

#include "netbios/smb_encoding.h"

ZnNBTSession::ZnNBTSession(ZnEventLoopBase* loop, SessionCallback* callback)
    : loop_(loop),
      callback_(callback),
      timeoutTimer_(loop, &timeoutCallback_),
      keepAliveTimer_(loop, &keepAliveCallback_) {}

ZnNBTSession::~ZnNBTSession() { _disconnect(false); }

bool ZnNBTSession::Bind(const ZnMachine& machine) {
  _disconnect(false);
  own_ = machine;
  return Bind(own_.Address(), Stream, false, 0, false);
}

bool ZnNBTSession::Connect(const ZnMachine& machine) {
  retargets_ = 0;
  return StartConversation(machine);
}

bool ZnNBTSession::StartConversation(const ZnMachine& machine) {
  _disconnect(false);
  destination_ = machine;
  wasEstablished_ = leftUnacknowledged_ = false;
  conversation_++;
  if (!IsOpen() && !Bind(own_)) return false;
  if (StartRequest()) return true;
  Abandon();
  return false;
}

// Begins the connection and queues the session request, which goes out when the connection stands. The called name
// comes first.
bool ZnNBTSession::StartRequest() {
  if (!SetBlocking(false) || !SetDelay(true)) return false;
  if (!Connect(destination_.Address()) && Error().Code() != EINPROGRESS) return false;
  if (!AddReadCB()) return false;
  const ZnUniString names = destination_.EncodeRFC883() + own_.EncodeRFC883();
  if (!QueuePacket(names.AsEncoding(ZnSmbEncoding::netbiosname), RequestPacket) || !AddWriteCB()) return false;
  state_ = SessionRequestQueued;
  return timeoutTimer_.Set(timeout_);
}

void ZnNBTSession::_disconnect(bool notify) {
  if (state_ == SessionClosed) return;
  Abandon();
  if (notify) Tell(SessionDisconnected);
}

// Back to the state of a new object, but for what the owner has set.
void ZnNBTSession::Abandon() {
  leftUnacknowledged_ = !outgoing_.empty() || Unacknowledged() > 0;
  RemoveReadCB();
  RemoveWriteCB();
  timeoutTimer_.Cancel();
  keepAliveTimer_.Cancel();
  incoming_.clear();
  outgoing_.clear();
  writeOffset_ = 0;
  ForgetPacket();
  ahead_ = {};
  aheadKept_.Clear();
  state_ = SessionClosed;
  Close();
}

// The owner may do anything in there: nothing of this object is touched behind a call of this.
void ZnNBTSession::Tell(cbdispatch event) {
  if (callback_) callback_->Dispatch(event);
}

bool ZnNBTSession::AddReadCB() {
  readRegistered_ = readRegistered_ || loop_->AddFileEvent(static_cast<unsigned>(Fd()), true, false, &readCallback_);
  return readRegistered_;
}

bool ZnNBTSession::AddWriteCB() {
  writeRegistered_ = writeRegistered_ || loop_->AddFileEvent(static_cast<unsigned>(Fd()), false, true, &writeCallback_);
  return writeRegistered_;
}

void ZnNBTSession::RemoveReadCB() {
  if (readRegistered_) loop_->RemoveFileEvent(static_cast<unsigned>(Fd()), true, false, &readCallback_);
  readRegistered_ = false;
}

void ZnNBTSession::RemoveWriteCB() {
  if (writeRegistered_) loop_->RemoveFileEvent(static_cast<unsigned>(Fd()), false, true, &writeCallback_);
  writeRegistered_ = false;
}

void ZnNBTSession::Timeout_CB(ZnEventCallback*, ZnEvent::cbdispatch) {
  const ZnWeakRef<ZnReferable> alive(&alive_);
  const unsigned conversation = conversation_;
  Tell(SessionTimedOut);
  if (alive && conversation == conversation_) _disconnect(true);
}

void ZnNBTSession::Keepalive_CB(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (KeepAlive()) StartKeepAlive();
}

// Should the loop refuse the timer, the session goes without keepalives: the other end closes it when it likes.
void ZnNBTSession::StartKeepAlive() { keepAliveTimer_.Set(keepAliveInterval_); }
