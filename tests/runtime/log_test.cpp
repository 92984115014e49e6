#include "runtime/log.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>

namespace {

class TestLogger : public ZnLog {
 public:
  const char* const* MessageStrings() const override {
    static const char* const names[] = {"log/logging/start", "nfs/call/failure", "nfs/call/success", nullptr};
    return names;
  }
};

class Log : public ::testing::Test {
 protected:
  Log() { ZnLog::InitLogs(&logger, ""); }
  ~Log() override { ZnLog::CleanUp(); }

  TestLogger logger;
};

TEST_F(Log, FirstMatchingFilterDecides) {
  EXPECT_TRUE(ZnLog::Gen(0) && ZnLog::Gen("x", "y", "z"));
  // Filters, what holds where none matches, and what is on for numbers 0 to 3.
  const std::tuple<ZnDList<ZnUniString>, bool, std::array<bool, 4>> cases[] = {
      {{}, false, {false, false, false}},
      {{"*/*/failure"}, false, {false, true, false}},
      {{"NFS/*/*:0", "*/*/*"}, false, {true, false, false}},
      {{"*/*/*", "nfs/*/*:0"}, false, {true, true, true}},
      {{"nfs/call/failure:0", "nfs/*:x"}, false, {false, false, true}},
      {{"log/*:", ":1", ""}, true, {true, true, true}},
  };
  for (const auto& [filters, onnomatch, on] : cases) {
    ZnLog::SetupFilters(filters, onnomatch);
    for (size_t i = 0; i < on.size(); i++) EXPECT_EQ(ZnLog::Gen(i), on[i]) << i;
  }
}

}  // namespace
