#pragma once
// Finds a server's address: as configured, or by the machine's name through DNS, name servers and broadcast. It is kept
// for its time, and only until a connection to it fails.

#include <functional>
#include <memory>
#include <span>

#include "config/machine_config.h"
#include "model/upward.h"
#include "netbios/nbt_name_query.h"
#include "runtime/dns.h"
#include "runtime/os_stream.h"

class ZnAddressFinder {
 public:
  // Both outlive the finder. `done` tells whether an address is known now; it may be called from within Find.
  ZnAddressFinder(ZnSMBNFSSessionHost* host, const ZnSMBNFSMachineConfig& config, std::function<void(bool)> done)
      : host_(host), config_(config), done_(std::move(done)) {}

  void Find();
  // Gives up what is being asked; `done` isn't called.
  void Stop();
  // The machine may have moved.
  void Forget();
  // With the configured port.
  const ZnInetAddr& address() const { return address_; }
  // What was tried in vain, for the user.
  ZnUniString Tried() const { return tried_.text(); }

 private:
  struct Means;
  static const Means kMeans[];
  std::span<const Means> MeansToTry() const;
  void TryMeans();
  void MeansTried();
  bool AskDNS();
  bool AskHost(const ZnUniString& name);
  void TakeHost(const ZnDNSAnswer& answer);
  bool AskWINS();
  bool AskBroadcast();
  bool AskByName(const ZnDList<ZnInetAddr>& whom, bool broadcast);
  void DNSLookupCB(ZnCallback<const ZnDNSAnswer&>*, const ZnDNSAnswer& answer);
  void NameLookupCB(ZnCallback<bool>*, bool found);
  void TakeAddress(const ZnInetAddr& address, ZnMoment until);
  void AddressDone();

  ZnSMBNFSSessionHost* host_;
  const ZnSMBNFSMachineConfig& config_;
  std::function<void(bool)> done_;
  ZnInetAddr address_;
  bool known_ = false;
  ZnMoment until_;                             // how long the address may be relied on
  std::span<const Means> means_;               // to be tried; the first is being tried
  std::unique_ptr<ZnNBTNameQuery> namequery_;  // while a look-up goes on
  std::unique_ptr<ZnDNSQuery> dnsquery_;       // the same through DNS
  ZnUniString dnsname_;                        // the last that DNS was asked for
  ZnOSStream tried_;
  ZnSimpleCallback<bool, ZnAddressFinder> namecallback_{this, &ZnAddressFinder::NameLookupCB};
  ZnSimpleCallback<const ZnDNSAnswer&, ZnAddressFinder> dnscallback_{this, &ZnAddressFinder::DNSLookupCB};
};
