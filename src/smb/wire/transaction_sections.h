#pragma once
// Sections of the transaction command 50. Parameter and data blocks stand in the data
// section at an odd distance from its start, which is an even position of the message.
// (MS-CIFS 2.2.4.46)

#include "smb/wire/common_sections.h"
#include "smb/wire/message.h"

// The data section of a request. The counts serve reading only: they stand in the words.
struct ZnSMBCTrans_ReqData : ZnSmbRecord<ZnSMBCTrans_ReqData> {
  ZnEncoding encoding;
  uint16_t param_count;
  uint16_t data_count;
  ZnUniString name;
  ZnPacket params;
  ZnPacket data;
  explicit ZnSMBCTrans_ReqData(ZnEncoding strings, uint16_t paramCount = 0, uint16_t dataCount = 0)
      : encoding(strings), param_count(paramCount), data_count(dataCount) {}
  template <class Io>
  bool Fields(Io& io) {
    return io.String(name, encoding) && io.PadToOdd() && io.Bytes(params, param_count) && io.PadToOdd() &&
           io.Bytes(data, data_count);
  }
  // Distance of each block from the start of the section.
  size_t ParamsOffset() const {
    ZnSmbWriter counter;
    counter.String(name, encoding);
    return counter.Offset() | 1;
  }
  size_t DataOffset() const { return (ParamsOffset() + params.Length()) | 1; }
  bool operator==(const ZnSMBCTrans_ReqData&) const = default;
};

// The words of a request.
struct ZnSMBCTrans_ReqWords : ZnSmbRecord<ZnSMBCTrans_ReqWords> {
  uint16_t total_param_count = 0;
  uint16_t total_data_count = 0;
  uint16_t max_param_count = 0;  // bytes that may come back
  uint16_t max_data_count = 0;
  uint8_t max_setup_count = 0;
  bool disconnect = false;
  bool no_response = false;
  uint32_t timeout = 0;  // milliseconds
  uint16_t param_count = 0;
  uint16_t param_offset = 0;  // from the start of the message
  uint16_t data_count = 0;
  uint16_t data_offset = 0;
  ZnPacket setup;  // the setup words as bytes
  template <class Io>
  bool Fields(Io& io) {
    auto setupCount = static_cast<uint8_t>(setup.Length() / 2);
    return io.U16le(total_param_count) && io.U16le(total_data_count) && io.U16le(max_param_count) &&
           io.U16le(max_data_count) && io.U8(max_setup_count) && io.Reserved(1) && io.LowBits(disconnect, 1) &&
           io.LowBits(no_response, 1) && io.LowIgnored(14) && io.U32le(timeout) && io.Reserved(2) &&
           io.U16le(param_count) && io.U16le(param_offset) && io.U16le(data_count) && io.U16le(data_offset) &&
           io.U8(setupCount) && io.Reserved(1) && io.Bytes(setup, size_t{2} * setupCount);
  }
  // Counts and offsets for a request whose blocks are all in this message. `setup` has its final size. An empty block
  // keeps offset 0.
  void Place(const ZnSMBCTrans_ReqData& section) {
    size_t start = kZnSmbFramingSize + HowBig();
    total_param_count = param_count = static_cast<uint16_t>(section.params.Length());
    total_data_count = data_count = static_cast<uint16_t>(section.data.Length());
    param_offset = param_count > 0 ? static_cast<uint16_t>(start + section.ParamsOffset()) : uint16_t{0};
    data_offset = data_count > 0 ? static_cast<uint16_t>(start + section.DataOffset()) : uint16_t{0};
  }
  bool operator==(const ZnSMBCTrans_ReqWords&) const = default;
};

// The words of every reply. One reply may come in several messages. (MS-CIFS 2.2.4.46.2)
struct ZnSMBCTranss_RespWords : ZnSmbRecord<ZnSMBCTranss_RespWords> {
  uint16_t total_param_count = 0;
  uint16_t total_data_count = 0;
  uint16_t param_count = 0;   // in this message
  uint16_t param_offset = 0;  // from the start of the message
  uint16_t param_displacement = 0;
  uint16_t data_count = 0;
  uint16_t data_offset = 0;
  uint16_t data_displacement = 0;
  ZnPacket setup;  // the setup words as bytes
  template <class Io>
  bool Fields(Io& io) {
    auto setupCount = static_cast<uint8_t>(setup.Length() / 2);
    return io.U16le(total_param_count) && io.U16le(total_data_count) && io.Reserved(2) && io.U16le(param_count) &&
           io.U16le(param_offset) && io.U16le(param_displacement) && io.U16le(data_count) && io.U16le(data_offset) &&
           io.U16le(data_displacement) && io.U8(setupCount) && io.Reserved(1) &&
           io.Bytes(setup, size_t{2} * setupCount);
  }
  bool operator==(const ZnSMBCTranss_RespWords&) const = default;
};

// The blocks of a reply, found by what the words say of them. `first_pad` is the distance of
// the parameters from the start of the section, `data_start` that of the data. Blocks that overlap or lie outside are
// refused.
struct ZnSMBCTranss_RespData : ZnSmbRecord<ZnSMBCTranss_RespData> {
  size_t first_pad;
  uint16_t param_count;
  size_t data_start;
  uint16_t data_count;
  ZnPacket params;
  ZnPacket data;
  ZnSMBCTranss_RespData(size_t firstPad, uint16_t paramCount, size_t dataStart, uint16_t dataCount)
      : first_pad(firstPad), param_count(paramCount), data_start(dataStart), data_count(dataCount) {}
  template <class Io>
  bool Fields(Io& io) {
    return (param_count == 0 || (io.PadTo(first_pad) && io.Bytes(params, param_count))) &&
           (data_count == 0 || (io.PadTo(data_start) && io.Bytes(data, data_count)));
  }
  bool operator==(const ZnSMBCTranss_RespData&) const = default;
};
