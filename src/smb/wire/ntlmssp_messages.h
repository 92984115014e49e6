#pragma once
// The three tokens of an NTLM logon (MS-NLMP 2.2.1): the client's NEGOTIATE, the server's CHALLENGE, the client's
// AUTHENTICATE. Each begins with a fixed part, which says where in the token its texts and byte runs are.

#include <array>

#include "smb/wire/smb_visitors.h"

// What the two sides agree on. (MS-NLMP 2.2.2.5)
struct ZnNtlmsspFlags : ZnSmbRecord<ZnNtlmsspFlags> {
  bool unicode = false;         // texts are UTF-16
  bool request_target = false;  // the challenge shall name what the client logs on to
  bool sign = false;
  bool ntlm = false;
  bool anonymous = false;
  bool always_sign = false;
  bool extended_security = false;  // "extended session security"
  bool target_info = false;        // the challenge has a list of facts
  bool strong = false;             // keys of 128 bits
  bool key_exchange = false;       // the client draws the session's key
  template <class Io>
  bool Fields(Io& io) {
    return io.LowBits(unicode, 1) && io.LowIgnored(1) && io.LowBits(request_target, 1) && io.LowIgnored(1) &&
           io.LowBits(sign, 1) && io.LowIgnored(4) && io.LowBits(ntlm, 1) && io.LowIgnored(1) &&
           io.LowBits(anonymous, 1) && io.LowIgnored(3) && io.LowBits(always_sign, 1) && io.LowIgnored(3) &&
           io.LowBits(extended_security, 1) && io.LowIgnored(3) && io.LowBits(target_info, 1) && io.LowIgnored(5) &&
           io.LowBits(strong, 1) && io.LowBits(key_exchange, 1) && io.LowIgnored(1);
  }
  bool operator==(const ZnNtlmsspFlags&) const = default;
};

// Where a run of bytes is in its token. (MS-NLMP 2.2.1.2)
struct ZnNtlmsspPlace : ZnSmbRecord<ZnNtlmsspPlace> {
  uint16_t length = 0;
  uint16_t room = 0;
  uint32_t offset = 0;  // from the start of the token
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(length) && io.U16le(room) && io.U32le(offset);
  }
  // The bytes themselves; false when they aren't all within the token. None may be anywhere.
  bool Find(const ZnByteBuffer& token, ZnPacket& bytes) const;
  bool operator==(const ZnNtlmsspPlace&) const = default;
};

// What every token begins with.
template <uint32_t Type>
struct ZnNtlmsspKind : ZnSmbRecord<ZnNtlmsspKind<Type>> {
  template <class Io>
  bool Fields(Io& io) {
    for (const char each : {'N', 'T', 'L', 'M', 'S', 'S', 'P', '\0'}) {
      if (!io.Constant(static_cast<uint8_t>(each))) return false;
    }
    return io.Constant(Type) && io.Constant(0) && io.Constant(0) && io.Constant(0);
  }
  bool operator==(const ZnNtlmsspKind&) const = default;
};

// It names neither domain nor workstation. (MS-NLMP 2.2.1.1)
struct ZnNtlmsspNegotiate : ZnSmbRecord<ZnNtlmsspNegotiate> {
  ZnNtlmsspKind<1> kind;
  ZnNtlmsspFlags flags;
  ZnNtlmsspPlace domain;
  ZnNtlmsspPlace workstation;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(kind) && io.Record(flags) && io.Record(domain) && io.Record(workstation);
  }
  bool operator==(const ZnNtlmsspNegotiate&) const = default;
};

// The fixed part. The list of facts is there if the flags say so. (MS-NLMP 2.2.1.2)
struct ZnNtlmsspChallenge : ZnSmbRecord<ZnNtlmsspChallenge> {
  ZnNtlmsspKind<2> kind;
  ZnNtlmsspPlace target;  // the server's name, or its domain's
  ZnNtlmsspFlags flags;
  ZnPacket challenge;  // 8 bytes
  ZnNtlmsspPlace targetinfo;
  template <class Io>
  bool Fields(Io& io) {
    return io.Record(kind) && io.Record(target) && io.Record(flags) && io.Fixed(challenge, 8) &&
           (!flags.target_info || (io.Reserved(8) && io.Record(targetinfo)));
  }
  bool operator==(const ZnNtlmsspChallenge&) const = default;
};

// The fixed part of AUTHENTICATE. (MS-NLMP 2.2.1.3)
struct ZnNtlmsspAuthenticate : ZnSmbRecord<ZnNtlmsspAuthenticate> {
  enum Part { LmResponse, NtResponse, Domain, User, Workstation, SessionKey, kParts };

  ZnNtlmsspKind<3> kind;
  std::array<ZnNtlmsspPlace, kParts> places;
  ZnNtlmsspFlags flags;
  template <class Io>
  bool Fields(Io& io) {
    if (!io.Record(kind)) return false;
    for (auto& place : places) {
      if (!io.Record(place)) return false;
    }
    return io.Record(flags);
  }
  bool operator==(const ZnNtlmsspAuthenticate&) const = default;

  // The whole token: the parts one behind the other, and the places that lead to them.
  static ZnPacket Token(const ZnNtlmsspFlags& flags, const std::array<ZnByteBuffer, kParts>& parts);
};
using ZnNtlmsspParts = std::array<ZnByteBuffer, ZnNtlmsspAuthenticate::kParts>;

// A fact of a challenge's list, whose last one is kEnd. (MS-NLMP 2.2.2.1)
struct ZnNtlmsspFact : ZnSmbRecord<ZnNtlmsspFact> {
  enum Id : uint16_t { kEnd = 0, kTime = 7 };

  uint16_t id = kEnd;
  uint16_t length = 0;
  ZnPacket value;
  template <class Io>
  bool Fields(Io& io) {
    return io.U16le(id) && io.U16le(length) && io.Bytes(value, length);
  }
  bool operator==(const ZnNtlmsspFact&) const = default;
};
