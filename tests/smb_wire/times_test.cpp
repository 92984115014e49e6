#include "smb/wire/times.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

TEST(SmbTimes, LongTimes) {
  const std::tuple<uint64_t, ZnTimeVal, uint64_t> cases[] = {
      {0, {}, 0},
      {116444735999999999, {}, 0},
      {116444736000000019, {0, 1}, 116444736000000010},
      {126801072000000000 + 9999999, {1035633600, 999999}, 126801072009999990},
      {0xFFFFFFFFFFFFFFFF, {0xFFFFFFFF, 955161}, 159394408959551610},
  };
  for (const auto& [value, moment, back] : cases) {
    ZnSMBCTimeDCE time;
    time.value = value;
    EXPECT_EQ(time.AsTimeVal(), moment) << value;
    time.FromTimeVal(moment);
    EXPECT_EQ(time.value, back) << value;
  }
}

}  // namespace
