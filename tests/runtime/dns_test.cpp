#include "runtime/dns.h"

#include <gtest/gtest.h>

#include "support/driven_loop.h"
#include "support/scripted_resolver.h"
#include "support/virtual_loop.h"

namespace {

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

class Resolver : public testing::Test, public ZnCallback<const ZnDNSAnswer&> {
 protected:
  void Dispatch(const ZnDNSAnswer& answer) override {
    answer_ = answer;
    query_.reset();
  }
  ZnDList<ZnInetAddr> Ask(const ZnUniString& name) {
    answer_.reset();
    query_ = ZnDNS::Ask(&loop_, name, this);
    if (query_->IsAnswered()) return query_->Answer().addresses;
    EXPECT_TRUE(loop_.RunUntil([&] { return answer_.has_value(); }, 12000));
    return answer_ ? answer_->addresses : ZnDList<ZnInetAddr>();
  }

  DrivenLoop loop_;
  std::unique_ptr<ZnDNSQuery> query_;
  std::optional<ZnDNSAnswer> answer_;
};

TEST_F(Resolver, KnowsTheLocalHostAndDottedAddresses) {
  ZnDNS::SetResolver(nullptr);
  EXPECT_EQ(Ask("localhost"), (ZnDList<ZnInetAddr>{ZnInetAddr::AddressLoopback()}));
  EXPECT_EQ(Ask("10.1.2.3"), (ZnDList<ZnInetAddr>{ZnInetAddr(10, 1, 2, 3)}));
  // A name that would be cut at the zero isn't the name in front of it.
  EXPECT_TRUE(Ask(ZnUniString(std::u16string(u"localhost\0x", 11))).IsEmpty());
  ZnDList<ZnInetAddr> list;
  ZnDNS::AwaitAddressList("localhost", list);
  ZnDNS::AwaitAddressList(ZnUniString(std::u16string(u"localhost\0x", 11)), list);
  EXPECT_EQ(list, (ZnDList<ZnInetAddr>{ZnInetAddr::AddressLoopback()}));
}

}  // namespace
