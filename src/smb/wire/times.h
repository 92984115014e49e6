#pragma once
// Dates and times as SMB sends them. In all of them zero means "not set", in both directions.

#include "smb/wire/smb_visitors.h"

// SMB_DATE, in the time zone of this host. (MS-CIFS 2.2.1.4.1)
struct ZnSMBCDateEncoding : ZnSmbRecord<ZnSMBCDateEncoding> {
  uint8_t day = 0;    // 1 to 31
  uint8_t month = 0;  // 1 to 12
  uint8_t year = 0;   // since 1980, up to 127
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(day, 5) && io.LowBits(month, 4) && io.LowBits(year, 7);
  }
  bool operator==(const ZnSMBCDateEncoding&) const = default;
};

struct ZnSMBCDate : ZnSMBCDateEncoding {
  // The second at which that day begins here; the zero time for a date not set.
  ZnTimeVal AsTimeVal() const;
  // The day that lies `time` after the beginning of 1970, both read off the calendar here. A year before 1980 becomes
  // 1980.
  void FromTimeVal(const ZnTimeVal& time);
  bool operator==(const ZnSMBCDate&) const = default;
};

// SMB_TIME. (MS-CIFS 2.2.1.4.2)
struct ZnSMBCTimeEncoding : ZnSmbRecord<ZnSMBCTimeEncoding> {
  uint8_t two_seconds = 0;  // seconds divided by 2
  uint8_t minutes = 0;
  uint8_t hours = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(two_seconds, 5) && io.LowBits(minutes, 6) && io.LowBits(hours, 5);
  }
  bool operator==(const ZnSMBCTimeEncoding&) const = default;
};

struct ZnSMBCTime : ZnSMBCTimeEncoding {
  // Seconds since midnight, to be added to the value of the date.
  ZnTimeVal AsTimeVal() const;
  // The time of day that lies `time` after the beginning of 1970, odd seconds rounded down.
  void FromTimeVal(const ZnTimeVal& time);
  bool operator==(const ZnSMBCTime&) const = default;
};

// 64 bits. (MS-CIFS 2.2.1.4.3)
struct ZnSMBCLongTimeEncoding : ZnSmbRecord<ZnSMBCLongTimeEncoding> {
  uint64_t value = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U64le(value);
  }
  bool operator==(const ZnSMBCLongTimeEncoding&) const = default;
};

// Units of 100 nanoseconds since 1601-01-01 UTC.
struct ZnSMBCTimeDCE : ZnSMBCLongTimeEncoding {
  // The zero time for a moment before 1970, the last second for one behind the range of ZnTimeVal.
  ZnTimeVal AsTimeVal() const;
  void FromTimeVal(const ZnTimeVal& time);
  // The same, but the beginning of 1970 is a time like any other.
  static ZnSMBCTimeDCE At(const ZnTimeVal& time);
  bool operator==(const ZnSMBCTimeDCE&) const = default;
};
