#pragma once
// Packets of the NetBIOS name service (RFC 1002 section 4.2).

#include <array>

#include "netbios/nbt_fields.h"
#include "netbios/nbt_name.h"

// Types of questions and resource records.
enum class ZnNBTNSType : uint16_t { A = 1, NS = 2, Null = 10, NB = 32, NBStat = 33 };

inline constexpr uint16_t kNBTNSClassInternet = 1;

struct ZnNBTNSDatagramQuestion : ZnRecord<ZnNBTNSDatagramQuestion> {
  ZnNBTName name;
  ZnNBTNSType type = ZnNBTNSType::NB;
  uint16_t questionClass = kNBTNSClassInternet;

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(name) && io.U16be(type) && io.U16be(questionClass);
  }
  bool operator==(const ZnNBTNSDatagramQuestion&) const = default;
};

// One address of a name, as a name query answers it.
struct ZnNBTNSDatagramAddress : ZnRecord<ZnNBTNSDatagramAddress> {
  static constexpr size_t kSize = 6;

  bool group = false;
  uint8_t ownerType = 0;  // 0 broadcast, 1 point to point, 2 mixed
  ZnInetAddr address;

  template <class Io>
  bool Fields(Io& io) {
    return io.HighBits(group, 1) && io.HighBits(ownerType, 2) && io.HighIgnored(13) &&
           ZnNBTFields::Address(io, address);
  }
  bool operator==(const ZnNBTNSDatagramAddress&) const = default;
};

// An address without flags, as hosts with several of them are answered.
struct ZnNBTNSDatagramPlainAddress : ZnRecord<ZnNBTNSDatagramPlainAddress> {
  static constexpr size_t kSize = 4;

  ZnInetAddr address;

  template <class Io>
  bool Fields(Io& io) {
    return ZnNBTFields::Address(io, address);
  }
  bool operator==(const ZnNBTNSDatagramPlainAddress&) const = default;
};

// One name of a host, as a node status answers it.
struct ZnNBTNSDatagramNode : ZnRecord<ZnNBTNSDatagramNode> {
  std::array<uint8_t, ZnMachine::kNameLength> name = {};  // ends at a zero byte, if there is one; padded with blanks
  uint8_t type = 0;
  bool group = false;
  uint8_t ownerType = 0;
  bool deregistering = false;
  bool conflict = false;
  bool active = false;
  bool permanent = false;

  // Name and type as a machine; no address.
  ZnMachine Machine() const;

  template <class Io>
  bool Fields(Io& io) {
    return io.Raw(name.data(), name.size()) && io.U8(type) && io.HighBits(group, 1) && io.HighBits(ownerType, 2) &&
           io.HighBits(deregistering, 1) && io.HighBits(conflict, 1) && io.HighBits(active, 1) &&
           io.HighBits(permanent, 1) && io.HighIgnored(9);
  }
  bool operator==(const ZnNBTNSDatagramNode&) const = default;
};

// A resource record. Which of the lists and names behind the lifetime are there depends on the type.
struct ZnNBTNSDatagramResource : ZnRecord<ZnNBTNSDatagramResource> {
  ZnNBTName name;
  ZnNBTNSType type = ZnNBTNSType::NB;
  uint16_t resourceClass = kNBTNSClassInternet;
  uint32_t ttl = 0;  // seconds

  ZnInetAddr address;                                      // A
  ZnNBTName nsdname;                                       // NS
  ZnStructList<ZnNBTNSDatagramAddress> addresses;          // NB
  ZnStructList<ZnNBTNSDatagramPlainAddress> mh_addresses;  // NB, when the data isn't a run of the former
  ZnStructList<ZnNBTNSDatagramNode> nodelist;              // NBStat
  ZnPacket statistics;                                     // NBStat, as they came

  template <class Io>
  bool Fields(Io& io) {
    return io.Record(name) && io.U16be(type) && io.U16be(resourceClass) && io.U32be(ttl) && SizedData(io);
  }
  bool operator==(const ZnNBTNSDatagramResource&) const = default;

 private:
  // The data with its length in front, which bounds what may be read.
  bool SizedData(ZnWireReader& io);
  bool SizedData(ZnWireWriter& io);
  bool ReadAddresses(ZnWireReader& data);

  template <class Io>
  bool Data(Io& io) {
    switch (type) {
      case ZnNBTNSType::A:
        return ZnNBTFields::Address(io, address);
      case ZnNBTNSType::NS:
        return io.Record(nsdname);
      case ZnNBTNSType::NB:
        return AddressData(io);
      case ZnNBTNSType::NBStat:
        return NodeData(io);
      default:
        return true;  // nothing of it is kept
    }
  }

  template <class Io>
  bool AddressData(Io& io) {
    if constexpr (Io::kReading) {
      return ReadAddresses(io);
    } else {
      return addresses.Write(io) && mh_addresses.Write(io);
    }
  }

  template <class Io>
  bool NodeData(Io& io) {
    auto count = static_cast<uint8_t>(nodelist.Count());
    return io.U8(count) && ZnNBTFields::List(io, nodelist, count) && io.Rest(statistics);
  }
};

struct ZnNBTNSDatagram : ZnRecord<ZnNBTNSDatagram> {
  uint16_t id = 0;
  bool response = false;
  uint8_t opcode = 0;  // 0 is a query
  bool authoritative = false;
  bool truncated = false;
  bool recursionDesired = false;
  bool recursionAvailable = false;
  bool broadcast = false;
  uint8_t rcode = 0;
  ZnStructList<ZnNBTNSDatagramQuestion> questions;
  ZnStructList<ZnNBTNSDatagramResource> answers;
  ZnStructList<ZnNBTNSDatagramResource> authorities;
  ZnStructList<ZnNBTNSDatagramResource> additionals;

  // What a name of this packet means: a pointer stands for the name of the first question.
  const ZnNBTName& Resolve(const ZnNBTName& name) const {
    return name.pointer && !questions.IsEmpty() ? questions[0].name : name;
  }

  template <class Io>
  bool Fields(Io& io) {
    auto questionCount = static_cast<uint16_t>(questions.Count());
    auto answerCount = static_cast<uint16_t>(answers.Count());
    auto authorityCount = static_cast<uint16_t>(authorities.Count());
    auto additionalCount = static_cast<uint16_t>(additionals.Count());
    return io.U16be(id) && io.HighBits(response, 1) && io.HighBits(opcode, 4) && io.HighBits(authoritative, 1) &&
           io.HighBits(truncated, 1) && io.HighBits(recursionDesired, 1) && io.HighBits(recursionAvailable, 1) &&
           io.HighIgnored(2) && io.HighBits(broadcast, 1) && io.HighBits(rcode, 4) && io.U16be(questionCount) &&
           io.U16be(answerCount) && io.U16be(authorityCount) && io.U16be(additionalCount) &&
           ZnNBTFields::List(io, questions, questionCount) && ZnNBTFields::List(io, answers, answerCount) &&
           ZnNBTFields::List(io, authorities, authorityCount) && ZnNBTFields::List(io, additionals, additionalCount);
  }
  bool operator==(const ZnNBTNSDatagram&) const = default;
};
