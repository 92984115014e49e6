// Writing a piece of an open file, one message's worth a request.

#include <algorithm>

#include "smb/client/smb_client.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

ZnSMBClient::Result ZnSMBClient::WriteFile(const ZnSMBCFileObject& file, uint32_t offset, const ZnByteBuffer& buffer,
                                           Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  storage_ = ZnSMBOperation::Write{file.fid, offset, buffer};
  return Start(Values::StateWrite, SendNextWrite(), callback);
}

ZnSMBClient::Result ZnSMBClient::SendNextWrite() {
  auto& write = Operation<ZnSMBOperation::Write>();
  size_t remaining = write.bytes.Length() - write.done;
  size_t max = maxbuffersize() - smb_write_overhead;
  write.chunk = static_cast<uint16_t>(std::min(remaining, max));

  ZnSMBCWrite_ReqWords words;
  words.fid = write.fid;
  words.count = write.chunk;
  words.offset = write.offset;
  words.remaining = static_cast<uint16_t>(remaining);
  ZnSMBCWrite_ReqData data;
  bool whole = write.chunk == write.bytes.Length();
  data.data = whole ? ZnPacket(write.bytes) : ZnPacket(write.bytes.Data() + write.done, write.chunk);
  return SendRequest(Values::CmdWrite, words, data);
}

ZnSMBClient::Result ZnSMBClient::WriteReply() {
  auto& write = Operation<ZnSMBOperation::Write>();
  ZnSMBCWrite_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  if (words.count != write.chunk) return Fail(Values::ErrServer);
  write.offset += write.chunk;
  write.done += write.chunk;
  return write.done == write.bytes.Length() ? ResultSuccess : Sent(SendNextWrite());
}
