// Finding the server's address: as configured, or by the machine's name through DNS, name servers and broadcast. Once
// found it stays for the life of the session.

#include "config/server_config.h"
#include "runtime/dns.h"
#include "session/session.h"

namespace {

constexpr uint16_t kSessionServicePort = 139;
constexpr std::chrono::milliseconds kNameQueryWait{500};
constexpr int kNever = 0, kByLookOfName = 1;

}  // namespace

void ZnSMBNFSSession::FindAddress(Command&) { GetAddress(0); }

// A name with a dot is asked for by DNS first, a plain one last; name servers and broadcast stand between. The stages
// are: 0 from the start, 1 after the name servers, 2 after broadcast.
void ZnSMBNFSSession::GetAddress(unsigned stage) {
  if (stage == 0) {
    if (addressknown_) return Advance();
    lookup_.Truncate();
    if (config.ipaddress != "*") {
      ResolveConfigured();
      return AddressDone();
    }
    if (DNSFirst()) AskDNS();
    if (!addressknown_ && AskWINS()) return;
  }
  if (stage <= 1 && !addressknown_) {
    if (!host_->serverconfig().winsservers.IsEmpty()) NotFound(config.nbtname, "WINS");
    if (AskBroadcast()) return;
  }
  if (!addressknown_) {
    NotFound(config.nbtname, "NetBIOS broadcasts");
    if (config.dnslookup == kByLookOfName && !DNSFirst()) AskDNS();
  }
  AddressDone();
}

void ZnSMBNFSSession::ResolveConfigured() {
  ZnDList<ZnInetAddr> addresses;
  addressknown_ = ZnDNS::GetAddressList(config.ipaddress, addresses) == ZnDNS::Success;
  if (addressknown_) {
    address_ = addresses[0];
  } else {
    lookup_ << "Failed to interpret IP address of server: " << config.ipaddress;
  }
}

bool ZnSMBNFSSession::DNSFirst() const {
  if (config.dnslookup == kNever) return false;
  bool dotted = config.machine.Search(u'.') != ZnUniString::kNotFound;
  return config.dnslookup != kByLookOfName || dotted;
}

// Holds the loop up until the host's resolver has answered.
void ZnSMBNFSSession::AskDNS() {
  ZnDList<ZnInetAddr> addresses;
  addressknown_ = ZnDNS::GetAddressList(config.machine, addresses) == ZnDNS::Success;
  if (addressknown_) {
    address_ = addresses[0];
  } else {
    NotFound(config.machine, "DNS");
  }
}

std::unique_ptr<ZnNBTNameQuery> ZnSMBNFSSession::MakeNameQuery() {
  return std::make_unique<ZnNBTNameQuery>(host_->eventloop(), 0);
}

// These two give true when the answer will come by a callback.
bool ZnSMBNFSSession::AskWINS() {
  namequery_ = MakeNameQuery();
  namequery_->SetDefaults(0, kNameQueryWait);
  const ZnDList<ZnInetAddr>& servers = host_->serverconfig().winsservers;
  return !servers.IsEmpty() && namequery_->Lookup(Server(), servers, &winscallback_, -1, {}, false);
}

bool ZnSMBNFSSession::AskBroadcast() {
  if (namequery_->Lookup(Server(), ZnNBTNameQuery::BroadcastAddresses(), &bcastcallback_, -1, {}, true)) {
    return true;
  }
  namequery_.reset();
  return false;
}

void ZnSMBNFSSession::WinsLookupCB(ZnCallback<bool>*, bool found) {
  if (found) TakeResults();
  if (addressknown_) namequery_.reset();
  GetAddress(1);
}

void ZnSMBNFSSession::BcastLookupCB(ZnCallback<bool>*, bool found) {
  if (found) TakeResults();
  namequery_.reset();
  GetAddress(2);
}

void ZnSMBNFSSession::TakeResults() {
  ZnDList<ZnInetAddr> addresses;
  addressknown_ = namequery_->LookupResults(addresses);
  if (addressknown_) address_ = addresses[0];
}

// The user sees each means that was tried.
void ZnSMBNFSSession::NotFound(const ZnUniString& name, const char* means) {
  if (!lookup_.IsEmpty()) lookup_ << "; ";
  lookup_ << "Failed to find remote name(" << name << ") Using " << means;
}

// What was configured as the port may be no port number.
void ZnSMBNFSSession::AddressDone() {
  if (!addressknown_) return SendError(lookup_.text(), ZnNFSEnum::NFSERR_IO);
  bool usable = config.port > 0 && config.port <= 0xFFFF;
  address_.Port(usable ? config.port : kSessionServicePort);
  Advance();
}
