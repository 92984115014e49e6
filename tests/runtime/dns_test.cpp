#include "runtime/dns.h"

#include <gtest/gtest.h>
#include <netdb.h>

namespace {

// Answers without a resolver: a name of digits has that number as its address, other names have none.
class FakeResolverCache : public ZnDNSCache {
 public:
  using ZnDNSCache::ZnDNSCache;
  int asked = 0;

 protected:
  HostEntry Resolve(const ZnUniString& name) override {
    asked++;
    HostEntry entry;
    entry.name = name;
    if (name.AsUint32() == 0) entry.result = ZnDNS::HostNotFound;
    if (name.AsUint32() != 0) entry.addresses.Append(ZnInetAddr(name.AsUint32()));
    return entry;
  }
};

class Dns : public testing::Test {
 protected:
  Dns() {
    auto cache = std::make_unique<FakeResolverCache>(100);
    cache_ = cache.get();
    ZnDNS::SetCache(std::move(cache));
  }
  ~Dns() override { ZnDNS::SetCache(nullptr); }

  FakeResolverCache* cache_;
  ZnDList<ZnInetAddr> list_;
};

TEST_F(Dns, AnswersAndFailuresAreKeptWithoutRegardToCase) {
  for (const char* name : {"7Host", "7hOST"}) EXPECT_EQ(ZnDNS::GetAddressList(name, list_), ZnDNS::Success);
  for (int i = 0; i < 3; i++) EXPECT_EQ(ZnDNS::GetAddressList("nowhere", list_), ZnDNS::HostNotFound);
  EXPECT_EQ(cache_->asked, 2);
  for (uint32_t i = 8; i <= 5000; i++) ZnDNS::GetAddressList(ZnUniString::CreateFromUnsigned(i), list_);
  EXPECT_LE(cache_->Count(), 100U + 200U);
  EXPECT_EQ(list_[1].AsUint32(), 7U);
}

TEST(Resolver, KnowsTheLocalHostAndDottedAddresses) {
  ZnDNS::SetCache(nullptr);
  ZnDList<ZnInetAddr> list;
  EXPECT_EQ(ZnDNS::GetAddressList("localhost", list), ZnDNS::Success);
  EXPECT_EQ(ZnDNS::GetAddressList("10.1.2.3", list), ZnDNS::Success);
  ASSERT_EQ(list.Count(), 2U);
  EXPECT_EQ(list[0].AsString(true).AsUtf8(), "127.0.0.1:0");
  EXPECT_EQ(list[1].AsString(false).AsUtf8(), "10.1.2.3");
  // A name that would be cut at the zero isn't the name in front of it.
  EXPECT_EQ(ZnDNS::GetAddressList(ZnUniString(std::u16string(u"localhost\0x", 11)), list), ZnDNS::HostNotFound);
}

}  // namespace
