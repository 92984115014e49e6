#include "runtime/dns.h"

#include <netdb.h>

#include <cstdlib>
#include <cstring>

#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"

namespace {

constexpr uint32_t kAdditionsBetweenExpiries = 200;

ZnUniString FromResolver(const char* name) {
  return ZnUniString::CreateFrom(name, strlen(name), ZnSysEncoding::dnsname, ZnSysEncoding::dnsnameopt);
}

ZnDNSCache::HostEntry Convert(const hostent& host) {
  ZnDNSCache::HostEntry entry;
  entry.name = FromResolver(host.h_name);
  for (char** alias = host.h_aliases; *alias; alias++) entry.aliases.Append(FromResolver(*alias));
  for (char** bytes = host.h_addr_list; *bytes; bytes++) {
    in_addr address;
    memcpy(&address, *bytes, sizeof address);
    entry.addresses.Append(ZnInetAddr(address));
  }
  return entry;
}

ZnDNSCache::HostEntry Failed(int result) {
  ZnDNSCache::HostEntry entry;
  entry.result = result;
  return entry;
}

}  // namespace

ZnDNSCache::HostEntry ZnDNSCache::Resolve(const ZnUniString& name) {
  auto hostname = ZnHostText(name, ZnSysEncoding::dnsname, ZnSysEncoding::dnsnameopt);
  if (!hostname) return Failed(ZnDNS::HostNotFound);
  const hostent* host = gethostbyname(ZnCStringOf(*hostname));
  if (!host) return Failed(ZnDNS::herrortocode(h_errno));
  if (host->h_addrtype != AF_INET || host->h_length != sizeof(in_addr)) return Failed(ZnDNS::NoAddress);
  return Convert(*host);
}

int ZnDNSCache::GetHostByName(const ZnUniString& name, HostEntry& entry) {
  ZnUniString key = ZnDNS::Canonicalise(name);
  if (HostEntry* cached = nameentry_.Find(key)) {
    cached->uses++;
    entry = *cached;
    return entry.result;
  }
  entry = Resolve(name);
  nameentry_.Insert(key, entry);
  AddCount();
  return entry.result;
}

void ZnDNSCache::AddCount() {
  if (++additions_ % kAdditionsBetweenExpiries == 0) Expire();
}

// Entries go by chance, from a random place of the table on and around its end: none has an age to go by.
void ZnDNSCache::Expire() {
  size_t bucket = static_cast<size_t>(rand()) % nameentry_.BucketCount();
  ZnDictionary<ZnUniString, HostEntry>::Iterator position(&nameentry_, bucket);
  while (nameentry_.Count() > size_) {
    if (position == nameentry_.end()) position = nameentry_.begin();
    ZnUniString dying = position->key;
    ++position;
    nameentry_.Remove(dying);
  }
}

std::unique_ptr<ZnDNSCache> ZnDNS::cache_;

void ZnDNS::SetCache(std::unique_ptr<ZnDNSCache> cache) { cache_ = std::move(cache); }

int ZnDNS::GetAddressList(const ZnUniString& name, ZnDList<ZnInetAddr>& list) {
  ZnDNSCache::HostEntry entry;
  int result = cache_ ? cache_->GetHostByName(name, entry) : ZnDNSCache(0).GetHostByName(name, entry);
  if (result != Success) return result;
  for (const ZnInetAddr& address : entry.addresses) list.Append(address);
  return Success;
}

ZnUniString ZnDNS::Canonicalise(const ZnUniString& name) {
  ZnUniString canonical = name;
  canonical.LowerCase();
  return canonical;
}

ZnDNS::Result ZnDNS::herrortocode(int herror) {
  switch (herror) {
    case 0:
      return Success;
    case HOST_NOT_FOUND:
      return HostNotFound;
    case TRY_AGAIN:
      return TryAgain;
    case NO_RECOVERY:
      return NoRecovery;
    case NO_DATA:
      return NoAddress;
    default:
      return Unknown;
  }
}
