#include "smb/client/client.h"

#include "smb/client/conversation.h"
#include "smb/client/wire_operation.h"

ZnSmbClient::ZnSmbClient(ZnEventLoopBase* loop, Owner* owner)
    : conversation_(std::make_unique<ZnSmbConversation>(loop, owner)) {}

ZnSmbClient::~ZnSmbClient() = default;

void ZnSmbClient::Settings(const ZnSmbSettings& settings) { conversation_->Settings(settings); }
void ZnSmbClient::Disconnect() { conversation_->Forget(); }
bool ZnSmbClient::IsConnected() const { return conversation_->IsEstablished(); }
bool ZnSmbClient::HasHungUp() const { return conversation_->connection().HasHungUp(); }
const ZnSMBServerInfo& ZnSmbClient::server() const { return conversation_->server; }
const ZnUnixError& ZnSmbClient::Error() const { return conversation_->connection().Error(); }
ZnEncoding ZnSmbClient::nameencoding() const { return conversation_->RequestEncoding(); }
bool ZnSmbClient::CanReplace() const { return conversation_->server.capabilities.passthrough_levels; }
bool ZnSmbClient::SetsLongTimes() const { return conversation_->IsNt(); }
