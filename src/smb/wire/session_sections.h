#pragma once
// Sections of the commands that set up a connection: negotiate, session setup, tree connect.

#include <array>

#include "smb/wire/common_sections.h"
#include "smb/wire/encodings.h"
#include "smb/wire/times.h"

// Negotiate, command 114 (MS-CIFS 2.2.4.52)

using ZnSMBCNegotiate_ReqWords = ZnSMBCNoWords;

struct ZnSMBCNegotiate_ReqData : ZnSmbRecord<ZnSMBCNegotiate_ReqData> {
  ZnDList<ZnSMBCDialect> dialects;
  template <class Io>
  bool Fields(Io& io) {
    return io.RecordsToEnd(dialects);
  }
  bool operator==(const ZnSMBCNegotiate_ReqData&) const = default;
};

// The dialect that was chosen decides what follows its index; for the core dialect, or no dialect at all, nothing does.
struct ZnSMBCNegotiate_RespWords : ZnSmbRecord<ZnSMBCNegotiate_RespWords> {
  uint16_t index = 0;
  bool user_level = false;
  bool encrypted_passwords = false;
  bool signing_enabled = false;
  bool signing_required = false;
  uint32_t max_buffer = 0;  // bytes
  uint16_t max_mpx = 0;
  uint16_t max_vcs = 0;
  uint32_t session_key = 0;
  uint16_t time_zone = 0;  // minutes west of UTC, two's complement
  // "Windows for Workgroups 3.1a"
  bool read_raw = false;
  bool write_raw = false;
  ZnSMBCTimeEncoding wfwgtime;
  ZnSMBCDateEncoding wfwgdate;
  // "NT LM 0.12"
  uint32_t max_raw = 0;  // bytes
  ZnSMBCCapabilities capabilities;
  uint64_t system_time = 0;
  uint8_t key_length = 0;

  template <class Io>
  bool Fields(Io& io) {
    if (!io.U16le(index)) return false;
    if (index == ZnSMBClientValues::DialectWfWg) return WfWgFields(io);
    return index != ZnSMBClientValues::DialectNT || NTFields(io);
  }
  // Security mode and raw mode take one byte each here, although later descriptions of this reply give them two.
  template <class Io>
  bool WfWgFields(Io& io) {
    return SecurityMode(io) && io.U16le(max_buffer) && io.U16le(max_mpx) && io.U16le(max_vcs) &&
           io.LowBits(read_raw, 1) && io.LowBits(write_raw, 1) && io.LowIgnored(6) && io.U32le(session_key) &&
           io.Record(wfwgtime) && io.Record(wfwgdate) && io.U16le(time_zone) && io.Reserved(4);
  }
  template <class Io>
  bool NTFields(Io& io) {
    return SecurityMode(io) && io.U16le(max_mpx) && io.U16le(max_vcs) && io.U32le(max_buffer) && io.U32le(max_raw) &&
           io.U32le(session_key) && io.Record(capabilities) && io.U64le(system_time) && io.U16le(time_zone) &&
           io.U8(key_length);
  }
  template <class Io>
  bool SecurityMode(Io& io) {
    return io.LowBits(user_level, 1) && io.LowBits(encrypted_passwords, 1) && io.LowBits(signing_enabled, 1) &&
           io.LowBits(signing_required, 1) && io.LowIgnored(4);
  }
  bool operator==(const ZnSMBCNegotiate_RespWords&) const = default;
};

// "NT LM 0.12". The domain is whatever follows the key; servers send it as UTF-16 whether or not Unicode was agreed on.
struct ZnSMBCNegotiate_RespData : ZnSmbRecord<ZnSMBCNegotiate_RespData> {
  uint8_t key_length = 0;
  ZnPacket key;
  ZnPacket oemdomain;
  explicit ZnSMBCNegotiate_RespData(uint8_t keyLength) : key_length(keyLength) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Bytes(key, key_length) && io.Rest(oemdomain);
  }
  bool operator==(const ZnSMBCNegotiate_RespData&) const = default;
};

// "NT LM 0.12" with extended security. The token may be empty; what a client needs to know of the server comes in the
// rounds of the logon. (MS-SMB 2.2.4.5.2)
struct ZnSMBCNegotiateExtended_RespData : ZnSmbRecord<ZnSMBCNegotiateExtended_RespData> {
  std::array<uint8_t, 16> guid{};  // of the server
  ZnPacket token;
  template <class Io>
  bool Fields(Io& io) {
    return io.Raw(guid.data(), guid.size()) && io.Rest(token);
  }
  bool operator==(const ZnSMBCNegotiateExtended_RespData&) const = default;
};

// "Windows for Workgroups 3.1a"
struct ZnSMBCNegotiateWfWg_RespData : ZnSmbRecord<ZnSMBCNegotiateWfWg_RespData> {
  ZnPacket key;
  template <class Io>
  bool Fields(Io& io) {
    return io.Rest(key);
  }
  bool operator==(const ZnSMBCNegotiateWfWg_RespData&) const = default;
};

// Session setup, command 115 (MS-CIFS 2.2.4.53)

struct ZnSMBCSessionSetupX_ReqWords : ZnSmbRecord<ZnSMBCSessionSetupX_ReqWords> {
  ZnSMBClientValues::Dialect dialect;
  ZnSMBCNoChainedCommand cc;
  uint16_t max_buffer = 0;
  uint16_t max_mpx = 0;
  uint16_t vc_number = 0;
  uint32_t session_key = 0;
  uint16_t password_length = 0;
  uint16_t ntpassword_length = 0;
  ZnSMBCCapabilities capabilities;
  explicit ZnSMBCSessionSetupX_ReqWords(ZnSMBClientValues::Dialect chosen) : dialect(chosen) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(max_buffer) && io.U16le(max_mpx) && io.U16le(vc_number) && io.U32le(session_key) &&
           io.U16le(password_length) &&
           (dialect == ZnSMBClientValues::DialectNT
                ? io.U16le(ntpassword_length) && io.Reserved(4) && io.Record(capabilities)
                : io.Reserved(4));
  }
  bool operator==(const ZnSMBCSessionSetupX_ReqWords&) const = default;
};

// The lengths serve reading only: they stand in the words.
struct ZnSMBCSessionSetupX_ReqData : ZnSmbRecord<ZnSMBCSessionSetupX_ReqData> {
  ZnSMBClientValues::Dialect dialect;
  ZnEncoding encoding;
  uint16_t password_length;
  uint16_t ntpassword_length;
  ZnPacket password;
  ZnPacket ntpassword;  // "NT LM 0.12" only
  ZnUniString name;
  ZnUniString domain;
  ZnUniString nativeos;
  ZnUniString nativelanman;
  ZnSMBCSessionSetupX_ReqData(ZnSMBClientValues::Dialect chosen, ZnEncoding strings, uint16_t passwordLength = 0,
                              uint16_t ntpasswordLength = 0)
      : dialect(chosen), encoding(strings), password_length(passwordLength), ntpassword_length(ntpasswordLength) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Bytes(password, password_length) &&
           (dialect != ZnSMBClientValues::DialectNT || io.Bytes(ntpassword, ntpassword_length)) &&
           io.String(name, encoding) && io.String(domain, encoding) && io.String(nativeos, encoding) &&
           io.String(nativelanman, encoding);
  }
  bool operator==(const ZnSMBCSessionSetupX_ReqData&) const = default;
};

struct ZnSMBCSessionSetupX_RespWords : ZnSmbRecord<ZnSMBCSessionSetupX_RespWords> {
  ZnSMBCNoChainedCommand cc;
  bool guest = false;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.LowBits(guest, 1) && io.LowIgnored(15);
  }
  bool operator==(const ZnSMBCSessionSetupX_RespWords&) const = default;
};

struct ZnSMBCSessionSetupX_RespData : ZnSmbRecord<ZnSMBCSessionSetupX_RespData> {
  ZnEncoding encoding;
  ZnUniString nativeos;
  ZnUniString nativelanman;
  ZnUniString domain;
  explicit ZnSMBCSessionSetupX_RespData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.String(nativeos, encoding) && io.String(nativelanman, encoding) && io.String(domain, encoding);
  }
  bool operator==(const ZnSMBCSessionSetupX_RespData&) const = default;
};

// Session setup with extended security, command 115: one round of a logon, of which each carries a token. The server
// answers all but the last with a status (ZnSMBCHeader::WantsMore) and gives the uid with the first. (MS-SMB 2.2.4.6)

struct ZnSMBCSessionSetupExtended_ReqWords : ZnSmbRecord<ZnSMBCSessionSetupExtended_ReqWords> {
  ZnSMBCNoChainedCommand cc;
  uint16_t max_buffer = 0;
  uint16_t max_mpx = 0;
  uint16_t vc_number = 0;
  uint32_t session_key = 0;
  uint16_t token_length = 0;
  ZnSMBCCapabilities capabilities;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.U16le(max_buffer) && io.U16le(max_mpx) && io.U16le(vc_number) && io.U32le(session_key) &&
           io.U16le(token_length) && io.Reserved(4) && io.Record(capabilities);
  }
  bool operator==(const ZnSMBCSessionSetupExtended_ReqWords&) const = default;
};

// The length serves reading only: it stands in the words.
struct ZnSMBCSessionSetupExtended_ReqData : ZnSmbRecord<ZnSMBCSessionSetupExtended_ReqData> {
  ZnEncoding encoding;
  uint16_t token_length;
  ZnPacket token;
  ZnUniString nativeos;
  ZnUniString nativelanman;
  explicit ZnSMBCSessionSetupExtended_ReqData(ZnEncoding strings, uint16_t tokenLength = 0)
      : encoding(strings), token_length(tokenLength) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Bytes(token, token_length) && io.String(nativeos, encoding) && io.String(nativelanman, encoding);
  }
  bool operator==(const ZnSMBCSessionSetupExtended_ReqData&) const = default;
};

struct ZnSMBCSessionSetupExtended_RespWords : ZnSmbRecord<ZnSMBCSessionSetupExtended_RespWords> {
  ZnSMBCNoChainedCommand cc;
  bool guest = false;
  uint16_t token_length = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.LowBits(guest, 1) && io.LowIgnored(15) && io.U16le(token_length);
  }
  bool operator==(const ZnSMBCSessionSetupExtended_RespWords&) const = default;
};

struct ZnSMBCSessionSetupExtended_RespData : ZnSmbRecord<ZnSMBCSessionSetupExtended_RespData> {
  ZnEncoding encoding;
  uint16_t token_length;
  ZnPacket token;
  ZnUniString nativeos;
  ZnUniString nativelanman;
  ZnUniString domain;  // not sent by all
  ZnSMBCSessionSetupExtended_RespData(ZnEncoding strings, uint16_t tokenLength)
      : encoding(strings), token_length(tokenLength) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Bytes(token, token_length) && io.String(nativeos, encoding) && io.String(nativelanman, encoding) &&
           io.String(domain, encoding);
  }
  bool operator==(const ZnSMBCSessionSetupExtended_RespData&) const = default;
};

// Tree connect, command 112 (MS-CIFS 2.2.4.50)

struct ZnSMBCTreeConnect_ReqData : ZnSmbRecord<ZnSMBCTreeConnect_ReqData> {
  ZnEncoding encoding;
  ZnUniString path;
  ZnUniString password;
  ZnUniString service;
  explicit ZnSMBCTreeConnect_ReqData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Path(path, encoding) && io.Path(password, encoding) && io.Constant(4) && io.Ansi(service);
  }
  bool operator==(const ZnSMBCTreeConnect_ReqData&) const = default;
};

struct ZnSMBCTreeConnect_RespWords : ZnSmbRecord<ZnSMBCTreeConnect_RespWords> {
  uint16_t max_transmit = 0;
  uint16_t tid = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(max_transmit) && io.U16le(tid);
  }
  bool operator==(const ZnSMBCTreeConnect_RespWords&) const = default;
};

// Tree connect, command 117 (MS-CIFS 2.2.4.55)

struct ZnSMBCTreeConnectX_ReqWords : ZnSmbRecord<ZnSMBCTreeConnectX_ReqWords> {
  ZnSMBCNoChainedCommand cc;
  bool disconnect = false;  // the tree that the header names, first
  uint16_t password_length = 0;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && io.LowBits(disconnect, 1) && io.LowIgnored(15) && io.U16le(password_length);
  }
  bool operator==(const ZnSMBCTreeConnectX_ReqWords&) const = default;
};

// The length serves reading only: it stands in the words.
struct ZnSMBCTreeConnectX_ReqData : ZnSmbRecord<ZnSMBCTreeConnectX_ReqData> {
  ZnEncoding encoding;
  uint16_t password_length;
  ZnPacket password;
  ZnUniString path;
  ZnUniString service;
  explicit ZnSMBCTreeConnectX_ReqData(ZnEncoding strings, uint16_t passwordLength = 0)
      : encoding(strings), password_length(passwordLength) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Bytes(password, password_length) && io.String(path, encoding) && io.Ansi(service);
  }
  bool operator==(const ZnSMBCTreeConnectX_ReqData&) const = default;
};

// Older servers send two words, without the optional support; some newer ones more than three.
struct ZnSMBCTreeConnectX_RespWords : ZnSmbRecord<ZnSMBCTreeConnectX_RespWords> {
  uint8_t wordcount;
  ZnSMBCNoChainedCommand cc;
  bool optional_support = false;
  explicit ZnSMBCTreeConnectX_RespWords(uint8_t replyWordcount) : wordcount(replyWordcount) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(cc) && (wordcount <= 2 || (io.LowBits(optional_support, 1) && io.LowIgnored(15)));
  }
  bool operator==(const ZnSMBCTreeConnectX_RespWords&) const = default;
};

struct ZnSMBCTreeConnectX_RespData : ZnSmbRecord<ZnSMBCTreeConnectX_RespData> {
  ZnEncoding encoding;
  ZnUniString service;
  ZnUniString nativefs;
  explicit ZnSMBCTreeConnectX_RespData(ZnEncoding strings) : encoding(strings) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.Ansi(service) && io.String(nativefs, encoding);
  }
  bool operator==(const ZnSMBCTreeConnectX_RespData&) const = default;
};
