// Finding the server's address: as configured, or by the machine's name through DNS, name servers and broadcast. It is
// kept for its time, and only until a connection to it fails.

#include "config/server_config.h"
#include "runtime/dns.h"
#include "session/session.h"

namespace {

constexpr uint16_t kSessionServicePort = 139;
constexpr std::chrono::milliseconds kNameQueryWait{500};
constexpr int kNever = 0, kByLookOfName = 1;
// For how long an address is kept that came without a time of its own.
constexpr std::chrono::seconds kAddressKept{300};

}  // namespace

// A means of finding an address. `ask` gives true when the answer will come by a callback.
struct ZnSMBNFSSession::Means {
  const char* name;
  bool (ZnSMBNFSSession::*ask)();
};

const ZnSMBNFSSession::Means ZnSMBNFSSession::kMeans[] = {
    {"DNS", &ZnSMBNFSSession::AskDNS},
    {"WINS", &ZnSMBNFSSession::AskWINS},
    {"NetBIOS broadcasts", &ZnSMBNFSSession::AskBroadcast},
    {"DNS", &ZnSMBNFSSession::AskDNS},
};

void ZnSMBNFSSession::FindAddress(Command& command) {
  if (!answered_ && IsUsable() && HasHungUp()) DropConnection();  // while it was idle
  if (FailsAtOnce(command.sessioncommand)) return Fail();
  attempt_ = ZnSteadyClock::now();
  if (IsUsable() || (addressknown_ && ZnSteadyClock::now() < addressuntil_)) return Advance();
  addressknown_ = false;
  lookup_.Truncate();
  if (config.ipaddress == "*") {
    means_ = MeansToTry();
    return TryMeans();
  }
  means_ = {};
  if (!AskHost(config.ipaddress)) AddressDone();
}

// A name with a dot is asked for by DNS first, a plain one last; name servers and broadcast stand between.
std::span<const ZnSMBNFSSession::Means> ZnSMBNFSSession::MeansToTry() const {
  const std::span<const Means> all(kMeans);
  const bool dotted = config.machine.Search(u'.') != ZnUniString::kNotFound;
  if (config.dnslookup == kNever) return all.subspan(1, 2);
  const bool last = config.dnslookup == kByLookOfName && !dotted;
  return last ? all.subspan(1) : all.first(3);
}

// Until one has found the address, or says that it will tell later.
void ZnSMBNFSSession::TryMeans() {
  while (!addressknown_ && !means_.empty()) {
    if ((this->*means_.front().ask)()) return;
    MeansTried();
  }
  AddressDone();
}

// The user sees each means that was tried in vain.
void ZnSMBNFSSession::MeansTried() {
  const Means& tried = means_.front();
  means_ = means_.subspan(1);
  const bool nobody = tried.ask == &ZnSMBNFSSession::AskWINS && host_->serverconfig().winsservers.IsEmpty();
  if (addressknown_ || nobody) return;
  const ZnUniString& name = tried.ask == &ZnSMBNFSSession::AskDNS ? config.machine : config.nbtname;
  if (!lookup_.IsEmpty()) lookup_ << "; ";
  lookup_ << "Failed to find remote name(" << name << ") Using " << tried.name;
}

bool ZnSMBNFSSession::AskDNS() { return AskHost(config.machine); }

bool ZnSMBNFSSession::AskHost(const ZnUniString& name) {
  dnsname_ = name;
  dnsquery_ = ZnDNS::Ask(host_->eventloop(), name, &dnscallback_);
  if (!dnsquery_->IsAnswered()) return true;
  TakeHost(dnsquery_->Answer());
  return false;
}

void ZnSMBNFSSession::DNSLookupCB(ZnCallback<const ZnDNSAnswer&>*, const ZnDNSAnswer& answer) {
  TakeHost(answer);
  if (!means_.empty()) MeansTried();
  TryMeans();
}

void ZnSMBNFSSession::TakeHost(const ZnDNSAnswer& answer) {
  if (!answer.addresses.IsEmpty()) TakeAddress(answer.addresses[0], answer.until);
  dnsquery_.reset();  // and the answer with it
}

std::unique_ptr<ZnNBTNameQuery> ZnSMBNFSSession::MakeNameQuery() {
  return std::make_unique<ZnNBTNameQuery>(host_->eventloop(), 0);
}

bool ZnSMBNFSSession::AskWINS() {
  const ZnDList<ZnInetAddr>& servers = host_->serverconfig().winsservers;
  return !servers.IsEmpty() && AskByName(servers, false);
}

bool ZnSMBNFSSession::AskBroadcast() { return AskByName(ZnNBTNameQuery::BroadcastAddresses(), true); }

bool ZnSMBNFSSession::AskByName(const ZnDList<ZnInetAddr>& whom, bool broadcast) {
  namequery_ = MakeNameQuery();
  namequery_->SetDefaults(0, kNameQueryWait);
  if (namequery_->Lookup(Server(), whom, &namecallback_, -1, {}, broadcast)) return true;
  namequery_.reset();
  return false;
}

void ZnSMBNFSSession::NameLookupCB(ZnCallback<bool>*, bool found) {
  ZnDList<ZnInetAddr> addresses;
  if (found && namequery_->LookupResults(addresses)) {
    TakeAddress(addresses[0], ZnSteadyClock::now() + kAddressKept);
  }
  namequery_.reset();
  MeansTried();
  TryMeans();
}

// What was configured as the port may be no port number.
void ZnSMBNFSSession::TakeAddress(const ZnInetAddr& address, ZnMoment until) {
  addressknown_ = true;
  address_ = address;
  addressuntil_ = until;
  const bool usable = config.port > 0 && config.port <= 0xFFFF;
  address_.Port(usable ? config.port : kSessionServicePort);
}

void ZnSMBNFSSession::AddressDone() {
  if (addressknown_) return Advance();
  if (lookup_.IsEmpty()) lookup_ << "Failed to interpret IP address of server: " << config.ipaddress;
  NotReached();
  SendError(lookup_.text(), ZnNFSEnum::NFSERR_IO);
}

// The machine may have moved.
void ZnSMBNFSSession::ForgetAddress() {
  addressknown_ = false;
  if (!dnsname_.IsEmpty()) ZnDNS::Forget(dnsname_);
}
