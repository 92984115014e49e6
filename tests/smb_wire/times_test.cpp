#include "smb/wire/times.h"

#include <cstdlib>
#include <ctime>

#include "support/layout_check.h"

namespace {

// The host's time zone, for this test and whatever runs behind it.
void Zone(const char* name) {
  setenv("TZ", name, 1);
  tzset();
}

constexpr uint32_t k20021026 = 1035590400;  // 2002-10-26 00:00:00 UTC

TEST(SmbTimes, ADateIsTheMidnightOfThisHost) {
  const std::pair<const char*, int64_t> secondsWestInOctober[] = {
      {"America/New_York", 4 * 3600}, {"Asia/Kolkata", -19800}, {"UTC", 0}};
  ZnSMBCDate date;
  for (const auto& [zone, west] : secondsWestInOctober) {
    Zone(zone);
    EXPECT_TRUE(ZnSMBCDate().AsTimeVal().IsZero());
    date.Read(Hex("5a2d"));
    EXPECT_EQ(int64_t{date.AsTimeVal().seconds} - k20021026, west) << zone;
  }
  date.Read(Hex("9fff"));  // 31 December 2107
  EXPECT_EQ(date.AsTimeVal().seconds, 0xFFFFFFFF);
}

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
