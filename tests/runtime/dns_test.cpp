#include "runtime/dns.h"

#include <gtest/gtest.h>

#include "runtime/timer.h"
#include "support/scripted_resolver.h"
#include "support/virtual_loop.h"

namespace {

using namespace std::string_view_literals;

class Dns : public testing::Test {
 protected:
  ~Dns() override { ZnDNS::SetResolver(nullptr); }

  // Whether the name has an address, once everything that time does to it has happened.
  bool Has(const ZnUniString& name) { return !ZnDNS::Ask(&loop_, name, nullptr)->Answer().addresses.IsEmpty(); }
  void LetPass(uint32_t seconds) {
    ZnTimer timer(&loop_, &stop_);
    timer.Set(std::chrono::seconds(seconds));
    loop_.EnterEventLoop();
  }
  void Stop(ZnEventCallback*, ZnEvent::cbdispatch) { loop_.ExitEventLoop(0); }

  VirtualLoop loop_;
  ZnSimpleCallback<ZnEvent::cbdispatch, Dns> stop_{this, &Dns::Stop};
  ScriptedResolver* resolver_ = ScriptedResolver::Install();
};

TEST_F(Dns, AnswersAreKeptForTheirTimeAndFailuresForASecondAttempt) {
  const struct {
    const char* name;
    uint32_t ttl, holds;
  } cases[] = {{"pc", 1000, 300}, {"shorter", 20, 20}, {"nowhere", 1000, 5}, {"never", 0, 0}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    resolver_->ttl = std::chrono::seconds(one.ttl);
    resolver_->asked.clear();
    if (one.holds != 5) resolver_->hosts[one.name] = ZnInetAddr(1, 2, 3, 4);
    EXPECT_EQ(Has(one.name), one.holds != 5);
    ZnUniString other = one.name;
    other.UpperCase();
    if (one.holds > 0) {
      LetPass(one.holds - 1);
      EXPECT_EQ(Has(other), one.holds != 5);
    }
    EXPECT_EQ(resolver_->asked.size(), 1U);
    LetPass(2);
    Has(one.name);
    EXPECT_EQ(resolver_->asked.size(), 2U);
  }
}

TEST_F(Dns, WhatLedNowhereIsForgottenAndTheCacheStaysSmall) {
  ZnDNSCache cache;
  for (uint32_t i = 0; i < 1000; i++)
    cache.Keep(ZnUniString::CreateFromUnsigned(i), {{}, ZnSteadyClock::now() + std::chrono::seconds(100 + i)});
  EXPECT_EQ(cache.Count(), ZnDNSCache::kMostEntries);
  EXPECT_TRUE(cache.Find("999"));
  cache.Forget("999");
  EXPECT_FALSE(cache.Find("999"));
}

TEST(Resolver, KnowsTheLocalHostAndDottedAddresses) {
  ZnDNS::SetResolver(nullptr);
  ZnDList<ZnInetAddr> list;
  for (std::u16string_view name : {u"localhost"sv, u"localhost\0x"sv, u"10.1.2.3"sv})  // a zero cuts no name short
    ZnDNS::AwaitAddressList(ZnUniString(name), list);
  EXPECT_EQ(list, (ZnDList<ZnInetAddr>{ZnInetAddr::AddressLoopback(), ZnInetAddr(10, 1, 2, 3)}));
}

}  // namespace
