#include "netbios/nbt_name_query.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "netbios/smb_encoding.h"
#include "runtime/network_interface.h"

namespace {

constexpr size_t kLongestAnswer = 600;
constexpr unsigned kSocketBuffer = 32768;

// The name that every host answers: an asterisk and zeros.
ZnMachine Wildcard() {
  const char name[ZnMachine::kNameLength] = {'*'};
  return {ZnUniString::CreateFrom(name, sizeof(name), ZnSmbEncoding::netbiosname), ZnMachine::Workstation};
}

ZnNBTNSDatagramQuestion Question(const ZnMachine& machine, ZnNBTNSType type) {
  ZnNBTNSDatagramQuestion question;
  question.name = ZnNBTName(machine);
  question.type = type;
  return question;
}

// As it stands in the request, which not every name does unchanged.
ZnNBTName NameAskedFor(const ZnPacket& request) {
  ZnNBTNSDatagram datagram;
  ZnWireReader in(request.Data(), request.Length());
  return datagram.Read(in) ? datagram.questions[0].name : ZnNBTName();
}

}  // namespace

ZnNBTNameQuery::ZnNBTNameQuery(ZnEventLoopBase* loop, uint16_t port)
    : loop_(loop), localPort_(port), timer_(loop, &timeoutCallback_) {}

ZnNBTNameQuery::~ZnNBTNameQuery() { RemoveCallbacks(); }

void ZnNBTNameQuery::SetDefaults(int retries, std::chrono::milliseconds interval) {
  defaultRetries_ = retries;
  defaultInterval_ = interval;
}

bool ZnNBTNameQuery::Lookup(const ZnMachine& machine, const ZnDList<ZnInetAddr>& addresses, QueryCallback* callback,
                            int retries, std::chrono::milliseconds interval, bool broadcast) {
  if (!Initialise(retries, interval) || addresses.IsEmpty()) return false;
  ZnNBTNSDatagram datagram;
  datagram.recursionDesired = true;
  datagram.broadcast = broadcast;
  datagram.questions.Append(Question(machine, ZnNBTNSType::NB));
  return Start(std::move(datagram), addresses, callback);
}

bool ZnNBTNameQuery::NodeStatus(const ZnMachine& machine, QueryCallback* callback, int retries,
                                std::chrono::milliseconds interval, bool broadcast) {
  if (!Initialise(retries, interval)) return false;
  const bool unnamed = machine.ShortName().IsEmpty();
  ZnNBTNSDatagram datagram;
  datagram.broadcast = broadcast;
  datagram.questions.Append(Question(unnamed ? Wildcard() : machine, ZnNBTNSType::NBStat));
  return Start(std::move(datagram), {machine.Address()}, callback);
}

bool ZnNBTNameQuery::Initialise(int retries, std::chrono::milliseconds interval) {
  RemoveCallbacks();
  callback_ = nullptr;
  datagrams_.Flush();
  retriesLeft_ = retries < 0 ? defaultRetries_ : retries;
  interval_ = interval.count() == 0 ? defaultInterval_ : interval;
  return getentropy(&transactionId_, sizeof transactionId_) == 0 && OpenSocket();
}

// With a local port of 0 the system draws one of some 28,000 for each query.
bool ZnNBTNameQuery::OpenSocket() {
  ZnInetAddr local;
  local.Port(localPort_);
  bool open = Bind(local, Datagram, false, 0, false) && SetBlocking(false) && SetBroadcast(true) &&
              (GetReceiveBufferSize() >= kSocketBuffer || SetReceiveBufferSize(kSocketBuffer)) &&
              (GetTransmitBufferSize() >= kSocketBuffer || SetTransmitBufferSize(kSocketBuffer)) && LocalAddress(local);
  if (!open) Close();
  return open;
}

bool ZnNBTNameQuery::Start(ZnNBTNSDatagram datagram, const ZnDList<ZnInetAddr>& addresses, QueryCallback* callback) {
  datagram.id = transactionId_;
  request_ = datagram.Pack();
  asked_ = NameAskedFor(request_);
  directed_ = !datagram.broadcast;
  destinations_ = addresses;
  for (ZnInetAddr& address : destinations_) address.Port(namePort_);
  if (!SendRequest()) return false;

  readRegistered_ = loop_->AddFileEvent(static_cast<unsigned>(Fd()), true, false, &readCallback_);
  if (!readRegistered_ || !StartTimer()) {
    RemoveCallbacks();
    return false;
  }
  callback_ = callback;
  return true;
}

bool ZnNBTNameQuery::SendRequest() {
  return std::all_of(destinations_.begin(), destinations_.end(), [this](const ZnInetAddr& address) {
    size_t sent = 0;
    return WriteMessage(request_.Data(), request_.Length(), sent, address) == IoStatus::Complete;
  });
}

void ZnNBTNameQuery::TimeoutCB(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (retriesLeft_ == 0 || !SendRequest() || !StartTimer()) {
    Finish(false);
    return;
  }
  retriesLeft_--;
}

// Whoever answers first decides where a user's password goes, and any process can send a datagram here. So only a
// response to this very question counts, and of a directed query only one from where it was sent to; a broadcast's may
// come from anybody. Anything else leaves the query running.
void ZnNBTNameQuery::ReadCB(ZnEventCallback*, ZnEvent::cbdispatch) {
  uint8_t buffer[kLongestAnswer];
  size_t length = sizeof(buffer);
  ZnInetAddr from;
  IoStatus status = ReadMessage(buffer, sizeof(buffer), length, from);
  if (status != IoStatus::Partial && status != IoStatus::Complete) return;

  ZnNBTNSDatagram answer;
  ZnWireReader in(buffer, length);
  if (!answer.Read(in) || !answer.response || answer.id != transactionId_) return;
  if (directed_ && std::find(destinations_.begin(), destinations_.end(), from) == destinations_.end()) return;
  if (std::none_of(answer.answers.begin(), answer.answers.end(), [&](auto& one) { return IsAsked(answer, one); }))
    return;
  datagrams_.Append(std::move(answer));
  Finish(true);
}

bool ZnNBTNameQuery::IsAsked(const ZnNBTNSDatagram& datagram, const ZnNBTNSDatagramResource& answer) const {
  return datagram.Resolve(answer.name) == asked_;
}

// The owner may delete this object: nothing of it is touched behind the call.
void ZnNBTNameQuery::Finish(bool found) {
  RemoveCallbacks();
  QueryCallback* callback = std::exchange(callback_, nullptr);
  if (callback) callback->Dispatch(found);
}

void ZnNBTNameQuery::RemoveCallbacks() {
  timer_.Cancel();
  if (readRegistered_) loop_->RemoveFileEvent(static_cast<unsigned>(Fd()), true, false, &readCallback_);
  readRegistered_ = false;
}

bool ZnNBTNameQuery::LookupResults(ZnDList<ZnInetAddr>& list) const {
  const size_t before = list.Count();
  for (const ZnNBTNSDatagram& datagram : datagrams_) {
    for (const ZnNBTNSDatagramResource& answer : datagram.answers) {
      if (!IsAsked(datagram, answer)) continue;
      for (const auto& one : answer.addresses) list.Append(one.address);
      for (const auto& one : answer.mh_addresses) list.Append(one.address);
    }
  }
  return list.Count() > before;
}

bool ZnNBTNameQuery::NodeStatusResults(ZnDList<ZnMachine>& list) const {
  const size_t before = list.Count();
  for (const ZnNBTNSDatagram& datagram : datagrams_) {
    for (const ZnNBTNSDatagramResource& answer : datagram.answers) {
      for (const ZnNBTNSDatagramNode& node : answer.nodelist) list.Append(node.Machine());
    }
  }
  return list.Count() > before;
}

ZnDList<ZnInetAddr> ZnNBTNameQuery::BroadcastAddresses() {
  ZnDList<ZnInetAddr> addresses;
  const ZnDList<ZnNetworkInterface>* interfaces = nullptr;
  ZnGetNetworkInterfaces(true, interfaces);  // hosts move between networks
  for (const ZnNetworkInterface& one : *interfaces) {
    if (one.IsUp() && one.IsBroadcastValid()) addresses.Append(one.broadcast);
  }
  return addresses;
}
