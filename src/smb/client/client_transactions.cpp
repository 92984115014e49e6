// Transactions: one request, and a reply that may come in several messages.

#include "smb/client/smb_client.h"
#include "smb/wire/trans2_sections.h"
#include "smb/wire/transaction_sections.h"

using Values = ZnSMBClientValues;

namespace {

// What a reply may bring, as every request asks for it, in bytes. A server that announces more isn't listened to.
constexpr uint16_t kMaxParams = 10;
constexpr uint16_t kMaxData = 16384;
constexpr size_t kMaxSetup = 510;          // 255 words, as much as one message can hold
constexpr uint32_t kServerTimeout = 1000;  // milliseconds

ZnSMBCTrans_ReqWords RequestWords(const ZnByteBuffer& setup, const ZnSMBCTrans_ReqData& data) {
  ZnSMBCTrans_ReqWords words;
  words.max_param_count = kMaxParams;
  words.max_data_count = kMaxData;
  words.timeout = kServerTimeout;
  words.setup = setup;
  words.Place(data);
  return words;
}

}  // namespace

ZnSMBClient::Result ZnSMBClient::SendTrans(const ZnUniString& name, const ZnByteBuffer& setup,
                                           const ZnByteBuffer& params, const ZnByteBuffer& data) {
  ZnSMBCTrans_ReqData section(RequestEncoding());
  section.name = name;
  section.params = params;
  section.data = data;
  collected_ = ZnSMBTransactionParts();
  return SendRequest(Values::CmdTrans, RequestWords(setup, section), section);
}

// The name is empty, and in UTF-16 whatever was agreed on.
ZnSMBClient::Result ZnSMBClient::SendTrans2(const ZnSMBCTrans2_ReqParams& params, const ZnByteBuffer& data) {
  ZnSMBCWord command;
  command.value = params.command;
  ZnSMBCTrans_ReqData section(ZnCodeset::Utf16Lsb);
  section.params = params.Pack();
  section.data = data;
  collected_ = ZnSMBTransactionParts();
  return SendRequest(Values::CmdTrans2, RequestWords(command.Pack(), section), section);
}

ZnSMBClient::Result ZnSMBClient::RecvTrans() {
  ZnSMBCTranss_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  size_t start = reply_.DataStart();
  bool before =
      (words.param_count > 0 && words.param_offset < start) || (words.data_count > 0 && words.data_offset < start);
  if (before) return Fail(Values::ErrRead);
  ZnSMBCTranss_RespData data(words.param_offset - start, words.param_count, words.data_offset - start,
                             words.data_count);
  if (!ReadData(data)) return ResultFailure;

  // The displacements aren't looked at: the pieces come in order.
  collected_.setup.Append(words.setup);
  collected_.params.Append(data.params);
  collected_.data.Append(data.data);
  size_t params = collected_.params.Length();
  size_t bytes = collected_.data.Length();
  bool tooMuch = words.total_param_count > kMaxParams || words.total_data_count > kMaxData ||
                 params > words.total_param_count || bytes > words.total_data_count ||
                 collected_.setup.Length() > kMaxSetup;
  if (tooMuch) return Fail(Values::ErrRead);
  if (params == words.total_param_count && bytes == words.total_data_count) return ResultSuccess;
  if (words.param_count == 0 && words.data_count == 0) return Fail(Values::ErrRead);  // would go on for ever
  header_.command = lastcommand_;  // the next message answers the same request
  return ResultPending;
}

ZnSMBClient::Result ZnSMBClient::RecvTransWithoutSetup() {
  Result result = RecvTrans();
  if (result == ResultFailure || collected_.setup.IsEmpty()) return result;
  return Fail(Values::ErrRead);
}

ZnSMBClient::Result ZnSMBClient::Transaction(const ZnSMBCTreeObject& tree, const ZnUniString& name,
                                             const ZnByteBuffer& setup, const ZnByteBuffer& params,
                                             const ZnByteBuffer& data, ZnByteBuffer* outSetup, ZnByteBuffer* outParams,
                                             ZnByteBuffer* outData, Completion* callback) {
  if (!Ready(tree.tid)) return ResultFailure;
  storage_ = ZnSMBOperation::Transaction{outSetup, outParams, outData};
  return Start(Values::StateTransaction, SendTrans(name, setup, params, data), callback);
}

ZnSMBClient::Result ZnSMBClient::TransactionReply() {
  Result result = RecvTrans();
  if (result != ResultSuccess) return result;
  const auto& out = Operation<ZnSMBOperation::Transaction>();
  *out.setup = collected_.setup;
  *out.params = collected_.params;
  *out.data = collected_.data;
  return ResultSuccess;
}
