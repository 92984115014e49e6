#include "runtime/inet_addr.h"

#include <gtest/gtest.h>

#include "runtime/network_interface.h"

namespace {

TEST(InetAddr, FromString) {
  // A null pointer stands for a refusal.
  const std::tuple<const char*, bool, const char*> cases[] = {
      {"1.2.3.4", false, "1.2.3.4:7"},      {"*", false, "0.0.0.0:7"},
      {"1.2.3.4:139", true, "1.2.3.4:139"}, {"1.2.3.4 behind", false, "1.2.3.4:7"},
      {"1.2.3.4:0", true, "1.2.3.4:7"},     {"1.2.3.256", false, nullptr},
      {"1.2.3.4", true, nullptr},           {"1.2.3.4:65536", true, nullptr},
      {"1.2.3.-1", false, nullptr},
  };
  for (const auto& [text, withport, result] : cases) {
    ZnInetAddr address(9, 9, 9, 9);
    address.Port(7);
    EXPECT_EQ(address.FromString(text, withport), result != nullptr) << text;
    EXPECT_EQ(address.AsString(true), result ? result : "9.9.9.9:7") << text;
  }
}

}  // namespace
