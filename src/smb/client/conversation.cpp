#include "smb/client/conversation.h"

#include <unistd.h>

#include <algorithm>

#include "smb/client/wire_operation.h"

using Values = ZnSMBClientValues;

ZnSmbConversation::ZnSmbConversation(ZnEventLoopBase* loop, ZnSmbClient::Owner* owner)
    : loop_(loop), owner_(owner), pid_(static_cast<uint16_t>(getpid())), connection_(loop, this) {}

ZnSmbConversation::~ZnSmbConversation() = default;

void ZnSmbConversation::Settings(const ZnSmbSettings& settings) {
  settings_ = settings;
  connection_.ReplyTimeout(std::chrono::seconds(settings_.replytimeout));
}

bool ZnSmbConversation::Connect(Connector* connector, const ZnMachine& own, const ZnMachine& machine) {
  Forget();
  connector_ = connector;
  return connection_.Connect(own, machine, std::chrono::seconds(settings_.replytimeout));
}

void ZnSmbConversation::Established() {
  connector_ = nullptr;
  established_ = true;
}

// Ids and what was negotiated are worth nothing on another connection.
void ZnSmbConversation::Forget() {
  connection_.Close();
  if (Connector* connector = std::exchange(connector_, nullptr)) connector->Forgotten();
  established_ = false;
  server = ZnSMBServerInfo();
  uid = 0;
  signs = false;
  trees_.clear();
  mostinflight_ = 1;
}

void ZnSmbConversation::MostInFlight(unsigned count) {
  mostinflight_ = std::clamp(count, 1U, ZnSmbConnection::kMostInFlight);
  connection_.MostInFlight(mostinflight_);
}

void ZnSmbConversation::Connected() {
  if (connector_) connector_->Connected();
}

// Either may delete this object.
void ZnSmbConversation::ConnectionLost(Reason reason) {
  established_ = false;
  if (connector_) return connector_->ConnectionLost(reason);
  owner_->ConnectionLost(reason);
}

ZnSMBCHeader ZnSmbConversation::HeaderOf(const Envelope& envelope) const {
  ZnSMBCHeader header;
  header.command = envelope.command;
  header.long_names = true;
  header.signs = signs;
  header.extended_security = server.dialect == ZnSMBServerInfo::kNoDialect || server.extendedsecurity;
  header.unicode = server.unicode;
  header.tid = envelope.tid;
  header.pid = pid_;
  header.uid = uid;
  const auto tree = trees_.find(envelope.tid);
  header.caseless_paths = tree != trees_.end() && tree->second == Values::ServicePrinter;
  return header;
}

ZnSmbExchangeId ZnSmbConversation::SendMessage(const Envelope& envelope, ZnPacket message, const ZnByteBuffer& tail,
                                               ZnSmbExchangeOwner* owner) {
  const size_t words = size_t{2} * message[ZnSMBCHeader::kSize];
  const bool fits = message.Length() + tail.Length() <= kZnSmbFramingSize + words + 0xFFFF;  // 16 bits of byte count
  return fits ? connection_.Send({envelope.command, std::move(message), tail, envelope.caller}, owner) : 0;
}

void ZnSmbConversation::Adopt(std::unique_ptr<ZnSmbWireOperation> operation) {
  operation->Abandon([this, which = operation.get()](const ZnSmbOutcome&) {
    std::erase_if(adopted_, [which](const auto& each) { return each.get() == which; });
  });
  adopted_.push_back(std::move(operation));
}
