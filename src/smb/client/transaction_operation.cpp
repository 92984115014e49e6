#include "smb/client/transaction_operation.h"

#include "smb/wire/transaction_sections.h"

namespace {

constexpr uint16_t kMaxParams = 10;
constexpr uint32_t kServerTimeout = 1000;  // milliseconds

// Pieces come in order. What a reply consists of alone isn't copied.
void AppendTo(ZnByteBuffer& all, const ZnByteBuffer& piece) {
  if (all.IsEmpty()) {
    all = piece;
  } else {
    all.Append(piece);
  }
}

}  // namespace

// The name is empty, and in UTF-16 whatever was agreed on.
bool ZnSmbTransaction::AskTrans2(const ZnSMBCTrans2_ReqParams& params, const ZnByteBuffer& data, uint16_t mostData) {
  ZnSMBCTrans_ReqData section(ZnCodeset::Utf16Lsb);
  section.params = params.Pack();
  section.data = data;
  ZnSMBCWord command;
  command.value = params.command;
  ZnSMBCTrans_ReqWords words;
  words.max_param_count = kMaxParams;
  words.max_data_count = mostdata_ = mostData;
  words.timeout = kServerTimeout;
  words.setup = command.Pack();
  words.Place(section);
  collected_ = Parts();
  return Ask(Values::CmdTrans2, words, section);
}

bool ZnSmbTransaction::Accepted(const ZnSMBCDecode& reply, const Part&) {
  if (reply.header.command != Values::CmdTrans2) return AcceptedOther(reply);
  ZnSMBCTranss_RespWords words;
  if (!reply.ReadWords(words) || !words.setup.IsEmpty()) return End(Values::ErrRead);
  const size_t start = reply.DataStart();
  const bool before =
      (words.param_count > 0 && words.param_offset < start) || (words.data_count > 0 && words.data_offset < start);
  ZnSMBCTranss_RespData data(words.param_offset - start, words.param_count, words.data_offset - start,
                             words.data_count);
  if (before || !reply.ReadData(data)) return End(Values::ErrRead);

  // The displacements aren't looked at: the pieces come in order.
  AppendTo(collected_.params, data.params);
  AppendTo(collected_.data, data.data);
  const size_t params = collected_.params.Length();
  const size_t bytes = collected_.data.Length();
  const bool tooMuch = words.total_param_count > kMaxParams || words.total_data_count > mostdata_ ||
                       params > words.total_param_count || bytes > words.total_data_count;
  if (tooMuch) return End(Values::ErrRead);
  if (params == words.total_param_count && bytes == words.total_data_count) {
    return Collected(std::exchange(collected_, {}), reply.header);
  }
  if (words.param_count == 0 && words.data_count == 0) return End(Values::ErrRead);  // would go on for ever
  return true;
}
