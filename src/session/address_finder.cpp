#include "session/address_finder.h"

#include "config/server_config.h"

namespace {

constexpr uint16_t kSessionServicePort = 139;
constexpr std::chrono::milliseconds kNameQueryWait{500};
constexpr int kNever = 0, kByLookOfName = 1;
// For how long an address is kept that came without a time of its own.
constexpr std::chrono::seconds kAddressKept{300};

}  // namespace

// A means of finding an address. `ask` gives true when the answer will come by a callback.
struct ZnAddressFinder::Means {
  const char* name;
  bool (ZnAddressFinder::*ask)();
};

const ZnAddressFinder::Means ZnAddressFinder::kMeans[] = {
    {"DNS", &ZnAddressFinder::AskDNS},
    {"WINS", &ZnAddressFinder::AskWINS},
    {"NetBIOS broadcasts", &ZnAddressFinder::AskBroadcast},
    {"DNS", &ZnAddressFinder::AskDNS},
};

void ZnAddressFinder::Find() {
  if (known_ && ZnSteadyClock::now() < until_) return done_(true);
  known_ = false;
  tried_.Truncate();
  if (config_.ipaddress == "*") {
    means_ = MeansToTry();
    return TryMeans();
  }
  means_ = {};
  if (!AskHost(config_.ipaddress)) AddressDone();
}

void ZnAddressFinder::Stop() {
  namequery_.reset();
  dnsquery_.reset();
}

void ZnAddressFinder::Forget() {
  known_ = false;
  if (!dnsname_.IsEmpty()) ZnDNS::Forget(dnsname_);
}

// A name with a dot is asked for by DNS first, a plain one last; name servers and broadcast stand between.
std::span<const ZnAddressFinder::Means> ZnAddressFinder::MeansToTry() const {
  const std::span<const Means> all(kMeans);
  const bool dotted = config_.machine.Search(u'.') != ZnUniString::kNotFound;
  if (config_.dnslookup == kNever) return all.subspan(1, 2);
  const bool last = config_.dnslookup == kByLookOfName && !dotted;
  return last ? all.subspan(1) : all.first(3);
}

// Until one has found the address, or says that it will tell later.
void ZnAddressFinder::TryMeans() {
  while (!known_ && !means_.empty()) {
    if ((this->*means_.front().ask)()) return;
    MeansTried();
  }
  AddressDone();
}

// The user sees each means that was tried in vain.
void ZnAddressFinder::MeansTried() {
  const Means& tried = means_.front();
  means_ = means_.subspan(1);
  const bool nobody = tried.ask == &ZnAddressFinder::AskWINS && host_->serverconfig().winsservers.IsEmpty();
  if (known_ || nobody) return;
  const ZnUniString& name = tried.ask == &ZnAddressFinder::AskDNS ? config_.machine : config_.nbtname;
  if (!tried_.IsEmpty()) tried_ << "; ";
  tried_ << "Failed to find remote name(" << name << ") Using " << tried.name;
}

bool ZnAddressFinder::AskDNS() { return AskHost(config_.machine); }

bool ZnAddressFinder::AskHost(const ZnUniString& name) {
  dnsname_ = name;
  dnsquery_ = ZnDNS::Ask(host_->eventloop(), name, &dnscallback_);
  if (!dnsquery_->IsAnswered()) return true;
  TakeHost(dnsquery_->Answer());
  return false;
}

void ZnAddressFinder::DNSLookupCB(ZnCallback<const ZnDNSAnswer&>*, const ZnDNSAnswer& answer) {
  TakeHost(answer);
  if (!means_.empty()) MeansTried();
  TryMeans();
}

void ZnAddressFinder::TakeHost(const ZnDNSAnswer& answer) {
  if (!answer.addresses.IsEmpty()) TakeAddress(answer.addresses[0], answer.until);
  dnsquery_.reset();  // and the answer with it
}

bool ZnAddressFinder::AskWINS() {
  const ZnDList<ZnInetAddr>& servers = host_->serverconfig().winsservers;
  return !servers.IsEmpty() && AskByName(servers, false);
}

bool ZnAddressFinder::AskBroadcast() { return AskByName(ZnNBTNameQuery::BroadcastAddresses(), true); }

bool ZnAddressFinder::AskByName(const ZnDList<ZnInetAddr>& whom, bool broadcast) {
  namequery_ = std::make_unique<ZnNBTNameQuery>(host_->eventloop(), 0);
  namequery_->SetDefaults(0, kNameQueryWait);
  const ZnMachine wanted(config_.nbtname, ZnMachine::Server);
  if (namequery_->Lookup(wanted, whom, &namecallback_, -1, {}, broadcast)) return true;
  namequery_.reset();
  return false;
}

void ZnAddressFinder::NameLookupCB(ZnCallback<bool>*, bool found) {
  ZnDList<ZnInetAddr> addresses;
  if (found && namequery_->LookupResults(addresses)) {
    TakeAddress(addresses[0], ZnSteadyClock::now() + kAddressKept);
  }
  namequery_.reset();
  MeansTried();
  TryMeans();
}

// What was configured as the port may be no port number.
void ZnAddressFinder::TakeAddress(const ZnInetAddr& address, ZnMoment until) {
  known_ = true;
  address_ = address;
  until_ = until;
  const bool usable = config_.port > 0 && config_.port <= 0xFFFF;
  address_.Port(usable ? config_.port : kSessionServicePort);
}

void ZnAddressFinder::AddressDone() {
  if (!known_ && tried_.IsEmpty()) tried_ << "Failed to interpret IP address of server: " << config_.ipaddress;
  done_(known_);
}
