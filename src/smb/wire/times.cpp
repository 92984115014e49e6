#include "smb/wire/times.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace {

constexpr int kFirstYear = 80;  // the year 1980 as struct tm counts
constexpr uint64_t kUnitsTo1970 = 116444736000000000;
constexpr uint64_t kUnitsASecond = 10000000;
constexpr uint64_t kLastSecond = std::numeric_limits<uint32_t>::max();

// The calendar fields that lie `time` after the beginning of 1970 on this host's calendar.
tm Normalised(const ZnTimeVal& time) {
  tm fields = {};
  fields.tm_mday = 1;
  fields.tm_year = 70;
  fields.tm_min = static_cast<int>(time.seconds / 60);
  fields.tm_sec = static_cast<int>(time.seconds % 60);
  fields.tm_isdst = -1;
  mktime(&fields);
  return fields;
}

}  // namespace

ZnTimeVal ZnSMBCDate::AsTimeVal() const {
  if (day == 0 && month == 0 && year == 0) return {};
  tm fields = {};
  fields.tm_mday = day;
  fields.tm_mon = month - 1;
  fields.tm_year = year + kFirstYear;
  fields.tm_isdst = -1;
  auto seconds = static_cast<uint64_t>(std::max<int64_t>(mktime(&fields), 0));
  return {static_cast<uint32_t>(std::min(seconds, kLastSecond)), 0};
}

void ZnSMBCDate::FromTimeVal(const ZnTimeVal& time) {
  day = month = year = 0;
  if (time.IsZero()) return;
  tm fields = Normalised(time);
  day = static_cast<uint8_t>(fields.tm_mday);
  month = static_cast<uint8_t>(fields.tm_mon + 1);
  year = static_cast<uint8_t>(std::max(fields.tm_year - kFirstYear, 0));
}

ZnTimeVal ZnSMBCTime::AsTimeVal() const { return {hours * 3600U + minutes * 60U + two_seconds * 2U, 0}; }

void ZnSMBCTime::FromTimeVal(const ZnTimeVal& time) {
  two_seconds = minutes = hours = 0;
  if (time.IsZero()) return;
  tm fields = Normalised(time);
  two_seconds = static_cast<uint8_t>(fields.tm_sec / 2);
  minutes = static_cast<uint8_t>(fields.tm_min);
  hours = static_cast<uint8_t>(fields.tm_hour);
}

ZnTimeVal ZnSMBCTimeDCE::AsTimeVal() const {
  if (value < kUnitsTo1970) return {};
  uint64_t units = value - kUnitsTo1970;
  uint64_t seconds = std::min(units / kUnitsASecond, kLastSecond);
  return {static_cast<uint32_t>(seconds), static_cast<uint32_t>(units / 10 % 1000000)};
}

void ZnSMBCTimeDCE::FromTimeVal(const ZnTimeVal& time) { value = time.IsZero() ? 0 : At(time).value; }

ZnSMBCTimeDCE ZnSMBCTimeDCE::At(const ZnTimeVal& time) {
  ZnSMBCTimeDCE encoded;
  encoded.value = time.seconds * kUnitsASecond + kUnitsTo1970 + time.microseconds * uint64_t{10};
  return encoded;
}
