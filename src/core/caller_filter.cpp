#include "core/caller_filter.h"

#include <algorithm>

#include "model/log_catalogue.h"

namespace {

constexpr char kEverybody[] = "*";
constexpr unsigned kFirstFreePort = 1024;
constexpr uint32_t kLoopbackNet = 127;

// "_" or the dotted form.
bool ReadAddress(const ZnUniString& text, ZnInetAddr& address) {
  if (text != "_") return address.FromString(text, false);
  address = ZnInetAddr::AddressLoopback();
  return true;
}

}  // namespace

ZnCallerFilter::ZnCallerFilter(ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config)
    : reserved_ports_only_(config.reservedports), limit_(loop, Log104) {
  for (const ZnUniString& text : config.addresses) {
    ZnInetAddr address;
    if (text == kEverybody) {
      wildcard_ = true;
    } else if (ReadAddress(text, address)) {
      addresses_.Append(address);
    } else {
      Log403(text);
    }
  }
}

ZnInetAddr ZnCallerFilter::SocketAddress(const ZnSMBNFSServerConfig& config) {
  const auto is_elsewhere = [](const ZnUniString& text) {
    ZnInetAddr address;
    return text == kEverybody || (ReadAddress(text, address) && address.AsUint32() >> 24 != kLoopbackNet);
  };
  const bool elsewhere = std::any_of(config.addresses.begin(), config.addresses.end(), is_elsewhere);
  return elsewhere ? ZnInetAddr::AddressAny() : ZnInetAddr::AddressLoopback();
}

bool ZnCallerFilter::IsListed(const ZnInetAddr& caller) const {
  return std::any_of(addresses_.begin(), addresses_.end(),
                     [&](const ZnInetAddr& address) { return address.IsAddressEqual(caller); });
}

bool ZnCallerFilter::ServesAddress(const ZnInetAddr& caller) {
  if (IsListed(caller) != wildcard_) return true;
  if (!limit_.Admits()) return false;
  ZnUniString known;
  for (const ZnInetAddr& address : addresses_) known += (known.IsEmpty() ? "" : ", ") + address.AsString(false);
  Log102(caller, wildcard_ ? "not" : "only", known);
  return false;
}

bool ZnCallerFilter::ServesPort(const ZnInetAddr& caller) {
  if (!reserved_ports_only_ || caller.GetPort() < kFirstFreePort) return true;
  if (limit_.Admits()) Log103(caller);
  return false;
}
