#include "runtime/dns.h"

#include <netdb.h>

#include <algorithm>

#include "runtime/dns_resolver.h"
#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"

namespace {

struct State {
  std::unique_ptr<ZnDNSResolver> resolver;
  ZnDNSCache cache;
};

State& TheState() {
  static State state{std::make_unique<ZnHostResolver>(), {}};
  return state;
}

ZnUniString Canonical(ZnUniString name) {
  name.LowerCase();
  return name;
}

}  // namespace

void ZnDNSQuery::TakeAnswer(const ZnUniString& name, ZnDList<ZnInetAddr> addresses, std::chrono::seconds ttl) {
  const auto kept = addresses.IsEmpty() ? ZnDNSCache::kFailureKept : std::min(ttl, ZnDNSCache::kLongest);
  answer_ = ZnDNSAnswer{std::move(addresses), ZnSteadyClock::now() + kept};
  TheState().cache.Keep(name, *answer_);
}

const ZnDNSAnswer* ZnDNSCache::Find(const ZnUniString& name) {
  const ZnDNSAnswer* answer = entries_.Find(Canonical(name));
  return answer && ZnSteadyClock::now() < answer->until ? answer : nullptr;
}

void ZnDNSCache::Keep(const ZnUniString& name, const ZnDNSAnswer& answer) {
  Forget(name);
  if (entries_.Count() >= kMostEntries) MakeRoom();
  entries_.Insert(Canonical(name), answer);
}

void ZnDNSCache::Forget(const ZnUniString& name) { entries_.Remove(Canonical(name)); }

void ZnDNSCache::MakeRoom() {
  const auto first = std::min_element(entries_.begin(), entries_.end(),
                                      [](const auto& a, const auto& b) { return a.value.until < b.value.until; });
  const ZnUniString name = first->key;
  entries_.Remove(name);
}

std::unique_ptr<ZnDNSQuery> ZnDNS::Ask(ZnEventLoopBase* loop, const ZnUniString& name, ZnDNSQuery::Callback* callback) {
  State& state = TheState();
  if (const ZnDNSAnswer* kept = state.cache.Find(name)) return std::make_unique<ZnDNSQuery>(*kept);
  return state.resolver->Ask(loop, name, callback);
}

void ZnDNS::Forget(const ZnUniString& name) { TheState().cache.Forget(name); }

void ZnDNS::AwaitAddressList(const ZnUniString& name, ZnDList<ZnInetAddr>& list) {
  const auto hostname = ZnHostText(name, ZnSysEncoding::dnsname, ZnSysEncoding::dnsnameopt);
  addrinfo hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (!hostname || getaddrinfo(ZnCStringOf(*hostname), nullptr, &hints, &found) != 0) return;
  for (const addrinfo* one = found; one; one = one->ai_next) {
    list.Append(ZnInetAddr(reinterpret_cast<const sockaddr_in*>(one->ai_addr)->sin_addr));
  }
  freeaddrinfo(found);
}

void ZnDNS::SetResolver(std::unique_ptr<ZnDNSResolver> resolver) {
  if (!resolver) resolver = std::make_unique<ZnHostResolver>();
  TheState() = State{std::move(resolver), {}};
}
