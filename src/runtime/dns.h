#pragma once
// Names of hosts through the host's resolver, with a cache. A look-up that isn't cached blocks the process until the
// resolver answers.

#include <cstdint>
#include <memory>

#include "runtime/dictionary.h"
#include "runtime/inet_addr.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

// Answers by name, those that a name has no address included. An entry has no age: it stays until it is dropped to keep
// the number of entries down.
class ZnDNSCache {
 public:
  struct HostEntry {
    int result = 0;    // a ZnDNS::Result
    ZnUniString name;  // the canonical one
    ZnDList<ZnUniString> aliases;
    ZnDList<ZnInetAddr> addresses;  // of port 0
    uint32_t uses = 0;              // how often the cache answered with it
  };

  // `size` is the number of entries that may stay when the cache tidies itself.
  explicit ZnDNSCache(size_t size) : size_(size) {}
  virtual ~ZnDNSCache() = default;
  ZnDNSCache(const ZnDNSCache&) = delete;
  ZnDNSCache& operator=(const ZnDNSCache&) = delete;

  // The entry of `name`, from the cache or the resolver, as it will be cached; gives its result.
  int GetHostByName(const ZnUniString& name, HostEntry& entry);
  size_t Count() const { return nameentry_.Count(); }

 protected:
  // Asks the resolver. Tests answer in its place.
  virtual HostEntry Resolve(const ZnUniString& name);

 private:
  void AddCount();
  void Expire();

  size_t size_;
  ZnDictionary<ZnUniString, HostEntry> nameentry_;
  uint32_t additions_ = 0;
};

class ZnDNS {
 public:
  enum Result {
    Success = 0,
    HostNotFound,
    TryAgain,    // the name server didn't answer; a later attempt may succeed
    NoRecovery,  // the name server refused
    NoAddress,   // the name exists without an address
    Unknown,
  };

  // Sets the cache of the process, in place of the one before, and owns it.
  static void SetCache(std::unique_ptr<ZnDNSCache> cache);
  // Appends the IPv4 addresses of a name or of an address in dotted form, their port 0. Gives Success, or another
  // Result, leaving `list` as it was. Without SetCache every look-up asks the resolver.
  static int GetAddressList(const ZnUniString& name, ZnDList<ZnInetAddr>& list);
  // The form under which a name is cached: in lower case.
  static ZnUniString Canonicalise(const ZnUniString& name);
  // The Result of an h_errno value.
  static Result herrortocode(int herror);

 private:
  static std::unique_ptr<ZnDNSCache> cache_;
};
