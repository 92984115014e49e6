#pragma once
// The host's resolver, by c-ares: name servers, search list and order of look-ups from the host's configuration, and
// /etc/hosts. The configuration is read for each question, since hosts move between networks.

#include "runtime/dns.h"

class ZnHostResolver : public ZnDNSResolver {
 public:
  // A question that nobody answers fails after ten seconds.
  std::unique_ptr<ZnDNSQuery> Ask(ZnEventLoopBase* loop, const ZnUniString& name,
                                  ZnDNSQuery::Callback* callback) override;
};
