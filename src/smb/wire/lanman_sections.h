#pragma once
// Remote administration: what travels as parameters and data of CmdTrans on "\PIPE\LANMAN". A record's layout is told
// by its descriptor: W 2 bytes, D 4 bytes, B 1 byte, a number behind B that many bytes, z a pointer of 4 bytes of which
// the low 16 bits count, less the reply's converter, from the start of the data. (MS-RAP 2.5)

#include "smb/wire/common_sections.h"
#include "smb/wire/encodings.h"

// `api` decides which members stand on the wire.
struct ZnSMBCLanman_ReqParams : ZnSmbRecord<ZnSMBCLanman_ReqParams> {
  ZnSMBClientValues::LanmanIPC api;
  ZnEncoding encoding;        // of names; the descriptors are always 8-bit
  ZnUniString reqparams_enc;  // descriptor of the parameters
  ZnUniString respdata_enc;   // descriptor of the records to come
  uint16_t level = 0;
  uint16_t receive_buffer = 0;  // bytes
  uint32_t server_type = 0;
  ZnUniString domain;
  ZnUniString user_name;
  ZnUniString queue_name;
  ZnUniString further_text;
  uint16_t job_id = 0;
  uint16_t parameter_number = 0;

  ZnSMBCLanman_ReqParams(ZnSMBClientValues::LanmanIPC number, ZnEncoding strings) : api(number), encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(api) && io.Ansi(reqparams_enc) && io.Ansi(respdata_enc) && Arguments(io);
  }
  template <class Io>
  bool Arguments(Io& io) {
    switch (api) {
      case ZnSMBClientValues::IPCNetShareEnum:
        return LevelAndBuffer(io);
      case ZnSMBClientValues::IPCNetUserGetInfo:
        return io.StringAt(user_name, encoding, 1) && LevelAndBuffer(io);
      case ZnSMBClientValues::IPCDOSPrintGetInfo:
        return io.StringAt(queue_name, encoding, 1) && LevelAndBuffer(io) && io.StringAt(further_text, encoding, 1);
      case ZnSMBClientValues::IPCDOSPrintJobDel:
      case ZnSMBClientValues::IPCDOSPrintJobPause:
      case ZnSMBClientValues::IPCDOSPrintJobContinue:
        return io.U16le(job_id);
      case ZnSMBClientValues::IPCNetRemoteTOD:
        return io.U16le(receive_buffer);
      case ZnSMBClientValues::IPCNetServerEnum:
        return LevelAndBuffer(io) && io.U32le(server_type) && io.StringAt(domain, encoding, 1);
      case ZnSMBClientValues::IPCDOSPrintJobSetInfo:
        return io.U16le(job_id) && io.U16le(level) && io.U16le(parameter_number);
    }
    return io.Fail();
  }
  template <class Io>
  bool LevelAndBuffer(Io& io) {
    return io.U16le(level) && io.U16le(receive_buffer);
  }
  bool operator==(const ZnSMBCLanman_ReqParams&) const = default;
};

// Empty but for IPCDOSPrintJobSetInfo, which carries the value to set.
struct ZnSMBCLanman_ReqData : ZnSmbRecord<ZnSMBCLanman_ReqData> {
  ZnSMBClientValues::LanmanIPC api;
  ZnPacket value;
  explicit ZnSMBCLanman_ReqData(ZnSMBClientValues::LanmanIPC number) : api(number) {}
  template <class Io>
  bool Fields(Io& io) {
    return api != ZnSMBClientValues::IPCDOSPrintJobSetInfo || io.Rest(value);
  }
  bool operator==(const ZnSMBCLanman_ReqData&) const = default;
};

struct ZnSMBCLanman_RespParams : ZnSmbRecord<ZnSMBCLanman_RespParams> {
  ZnSMBClientValues::LanmanIPC api;
  uint16_t status = 0;
  uint16_t converter = 0;
  uint16_t entries = 0;  // enumerations: records in the data, and how many there are in all
  uint16_t total_entries = 0;
  uint16_t total_size = 0;  // IPCNetUserGetInfo
  explicit ZnSMBCLanman_RespParams(ZnSMBClientValues::LanmanIPC number) : api(number) {}
  template <class Io>
  bool Fields(Io& io) {
    if (!io.U16le(status) || !io.U16le(converter)) return false;
    if (status != 0 && io.AtEnd()) return true;  // some servers put nothing behind a refusal
    switch (api) {
      case ZnSMBClientValues::IPCNetShareEnum:
      case ZnSMBClientValues::IPCNetServerEnum:
      case ZnSMBClientValues::IPCDOSPrintGetInfo:
        return io.U16le(entries) && io.U16le(total_entries);
      case ZnSMBClientValues::IPCNetUserGetInfo:
        return io.U16le(total_size);
      default:
        return true;
    }
  }
  bool operator==(const ZnSMBCLanman_RespParams&) const = default;
};

// "B13BWz"
struct ZnSMBCLanman_SHAREINFO : ZnSmbRecord<ZnSMBCLanman_SHAREINFO> {
  size_t name_size;  // of the field, in bytes
  ZnPacket name;     // ends at its first zero byte
  uint16_t type = 0;
  uint32_t remark = 0;
  explicit ZnSMBCLanman_SHAREINFO(size_t nameSize = 13) : name_size(nameSize) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Fixed(name, name_size) && io.Reserved(1) && io.U16le(type) && io.U32le(remark);
  }
  bool operator==(const ZnSMBCLanman_SHAREINFO&) const = default;
};

// "B128BWz"
struct ZnSMBCLanman_SHAREINFOL : ZnSMBCLanman_SHAREINFO {
  ZnSMBCLanman_SHAREINFOL() : ZnSMBCLanman_SHAREINFO(128) {}
  bool operator==(const ZnSMBCLanman_SHAREINFOL&) const = default;
};

// "B16BBDz"; at level 100 "B16BBDDz"
struct ZnSMBCLanman_SERVERINFO : ZnSmbRecord<ZnSMBCLanman_SERVERINFO> {
  bool level100;
  ZnPacket name;  // 16 bytes; ends at its first zero byte
  uint8_t major = 0;
  uint8_t minor = 0;
  uint32_t type = 0;
  uint32_t second = 0;  // level 100 only
  uint32_t comment = 0;
  explicit ZnSMBCLanman_SERVERINFO(bool atLevel100 = false) : level100(atLevel100) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Fixed(name, 16) && io.U8(major) && io.U8(minor) && io.U32le(type) && (!level100 || io.U32le(second)) &&
           io.U32le(comment);
  }
  bool operator==(const ZnSMBCLanman_SERVERINFO&) const = default;
};

// "DDBBBBWWBBWB"
struct ZnSMBCLanman_TOD : ZnSmbRecord<ZnSMBCLanman_TOD> {
  uint32_t seconds_since_1970 = 0;
  uint32_t uptime = 0;  // milliseconds
  uint8_t hours = 0;
  uint8_t minutes = 0;
  uint8_t seconds = 0;
  uint8_t hundredths = 0;
  uint16_t time_zone = 0;  // minutes west of UTC, two's complement
  uint16_t clock_interval = 0;
  uint8_t day = 0;
  uint8_t month = 0;
  uint16_t year = 0;
  uint8_t weekday = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U32le(seconds_since_1970) && io.U32le(uptime) && io.U8(hours) && io.U8(minutes) && io.U8(seconds) &&
           io.U8(hundredths) && io.U16le(time_zone) && io.U16le(clock_interval) && io.U8(day) && io.U8(month) &&
           io.U16le(year) && io.U8(weekday);
  }
  bool operator==(const ZnSMBCLanman_TOD&) const = default;
};

// "B21BzzzWDDzzDDWWzWzDWb21W". Members ending in _at are pointers.
struct ZnSMBCLanman_USERINFO : ZnSmbRecord<ZnSMBCLanman_USERINFO> {
  ZnPacket name;  // 21 bytes; ends at its first zero byte
  uint32_t comment_at = 0;
  uint32_t user_comment_at = 0;
  uint32_t full_name_at = 0;
  uint16_t privilege = 0;  // a ZnSMBClientValues::Privilege
  uint32_t operator_rights = 0;
  uint32_t password_age = 0;  // seconds
  uint32_t home_directory_at = 0;
  uint32_t parameters_at = 0;
  uint32_t last_logon = 0;   // seconds since 1970
  uint32_t last_logoff = 0;  // seconds since 1970
  uint16_t bad_passwords = 0;
  uint16_t logons = 0;
  uint32_t logon_server_at = 0;
  uint16_t country_code = 0;
  uint32_t workstations_at = 0;
  uint32_t max_storage = 0;
  uint16_t units_per_week = 0;
  ZnPacket logon_hours;  // 21 bytes
  uint16_t code_page = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Fixed(name, 21) && io.Reserved(1) && io.U32le(comment_at) && io.U32le(user_comment_at) &&
           io.U32le(full_name_at) && io.U16le(privilege) && io.U32le(operator_rights) && io.U32le(password_age) &&
           io.U32le(home_directory_at) && io.U32le(parameters_at) && io.U32le(last_logon) && io.U32le(last_logoff) &&
           io.U16le(bad_passwords) && io.U16le(logons) && io.U32le(logon_server_at) && io.U16le(country_code) &&
           io.U32le(workstations_at) && io.U32le(max_storage) && io.U16le(units_per_week) &&
           io.Fixed(logon_hours, 21) && io.U16le(code_page);
  }
  bool operator==(const ZnSMBCLanman_USERINFO&) const = default;
};

// A print job: "WB21BB16B10zWWzDDz"
struct ZnSMBCLanman_PRJINFO : ZnSmbRecord<ZnSMBCLanman_PRJINFO> {
  uint16_t job_id = 0;
  ZnPacket user_name;    // 21 bytes
  ZnPacket notify_name;  // 16 bytes
  ZnPacket data_type;    // 10 bytes
  uint32_t parameters_at = 0;
  uint16_t position = 0;
  uint16_t status = 0;  // a ZnSMBClientValues::SpoolFileStatus
  uint32_t status_text_at = 0;
  uint32_t submitted = 0;  // seconds since 1970
  uint32_t size = 0;       // bytes
  uint32_t comment_at = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(job_id) && io.Fixed(user_name, 21) && io.Reserved(1) && io.Fixed(notify_name, 16) &&
           io.Fixed(data_type, 10) && io.U32le(parameters_at) && io.U16le(position) && io.U16le(status) &&
           io.U32le(status_text_at) && io.U32le(submitted) && io.U32le(size) && io.U32le(comment_at);
  }
  bool operator==(const ZnSMBCLanman_PRJINFO&) const = default;
};

// A print queue: "B13BWWWzzzzzWN", followed by its jobs
struct ZnSMBCLanman_PRQINFO : ZnSmbRecord<ZnSMBCLanman_PRQINFO> {
  ZnPacket name;  // 13 bytes
  uint16_t priority = 0;
  uint16_t start_time = 0;  // minutes after midnight
  uint16_t until_time = 0;
  uint32_t separator_at = 0;
  uint32_t processor_at = 0;
  uint32_t destinations_at = 0;
  uint32_t parameters_at = 0;
  uint32_t comment_at = 0;
  uint16_t status = 0;  // a ZnSMBClientValues::PrinterStatus
  ZnDList<ZnSMBCLanman_PRJINFO> jobs;
  template <class Io>
  bool Fields(Io& io) {
    auto jobCount = static_cast<uint16_t>(jobs.Count());
    return io.Fixed(name, 13) && io.Reserved(1) && io.U16le(priority) && io.U16le(start_time) && io.U16le(until_time) &&
           io.U32le(separator_at) && io.U32le(processor_at) && io.U32le(destinations_at) && io.U32le(parameters_at) &&
           io.U32le(comment_at) && io.U16le(status) && io.U16le(jobCount) &&
           io.Records(jobs, jobCount, ZnSMBCLanman_PRJINFO());
  }
  bool operator==(const ZnSMBCLanman_PRQINFO&) const = default;
};

// The records of a reply: `count` of the kind that API and descriptor tell. A record cut short makes the whole invalid.
struct ZnSMBCLanman_RespData : ZnSmbRecord<ZnSMBCLanman_RespData> {
  ZnSMBClientValues::LanmanIPC api;
  uint16_t count;
  uint16_t converter;
  ZnUniString descriptor;
  ZnDList<ZnSMBCLanman_SHAREINFO> shares;
  ZnDList<ZnSMBCLanman_SERVERINFO> servers;
  ZnDList<ZnSMBCLanman_USERINFO> users;
  ZnDList<ZnSMBCLanman_TOD> times;
  ZnDList<ZnSMBCLanman_PRQINFO> queues;

  ZnSMBCLanman_RespData(ZnSMBClientValues::LanmanIPC number, uint16_t records, uint16_t offsetBase,
                        const ZnUniString& layout)
      : api(number), count(records), converter(offsetBase), descriptor(layout) {}
  template <class Io>
  bool Fields(Io& io) {
    switch (api) {
      case ZnSMBClientValues::IPCNetShareEnum:
        return io.Records(shares, count, ZnSMBCLanman_SHAREINFO(descriptor == "B128BWz" ? 128 : 13));
      case ZnSMBClientValues::IPCNetServerEnum:
        return io.Records(servers, count, ZnSMBCLanman_SERVERINFO(descriptor == "B16BBDDz"));
      case ZnSMBClientValues::IPCNetUserGetInfo:
        return io.Records(users, count, ZnSMBCLanman_USERINFO());
      case ZnSMBClientValues::IPCNetRemoteTOD:
        return io.Records(times, count, ZnSMBCLanman_TOD());
      case ZnSMBClientValues::IPCDOSPrintGetInfo:
        return io.Records(queues, count, ZnSMBCLanman_PRQINFO());
      default:
        return true;
    }
  }
  bool operator==(const ZnSMBCLanman_RespData&) const = default;
};
