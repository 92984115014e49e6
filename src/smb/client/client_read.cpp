// Reading: a piece of an open file, or a whole small file.

#include <algorithm>

#include "smb/client/smb_client.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

constexpr unsigned kReadMargin = 200;      // bytes of a message that a read's data doesn't use
constexpr uint16_t kDownloadChunk = 1000;  // bytes a request

}  // namespace

ZnSMBClient::Result ZnSMBClient::ReadFile(const ZnSMBCFileObject& file, uint16_t length, uint32_t offset,
                                          ZnByteBuffer* buffer, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  buffer->Clear();
  auto count = static_cast<uint16_t>(std::min<unsigned>(length, maxbuffersize() - kReadMargin));
  storage_ = ZnSMBOperation::Read{file.fid, length, count, offset, buffer};
  return Start(Values::StateRead, SendRead(file.fid, offset, count, length), callback);
}

ZnSMBClient::Result ZnSMBClient::SendRead(uint16_t fid, uint32_t offset, uint16_t count, uint16_t remaining) {
  ZnSMBCRead_ReqWords words;
  words.fid = fid;
  words.count = count;
  words.offset = offset;
  words.remaining = remaining;
  return SendRequest(Values::CmdRead, words, ZnSMBCNoData());
}

// Appends what a read reply brings; `count` is its size. False when words and data don't agree on it.
bool ZnSMBClient::TakeReadData(ZnByteBuffer& buffer, size_t& count) {
  ZnSMBCRead_RespWords words;
  ZnSMBCRead_RespData data;
  if (!ReadWords(words) || !ReadData(data)) return false;
  if (words.count != data.length || data.data.Length() < data.length) return Refuse(Values::ErrBadValue);
  if (data.data.Length() > data.length) data.data.SetLength(data.length);  // what stands behind is none of the file's
  count = data.length;
  if (buffer.IsEmpty()) {
    buffer = data.data;  // shared, not copied
  } else {
    buffer.Append(data.data);
  }
  return true;
}

ZnSMBClient::Result ZnSMBClient::ReadReply() {
  auto& read = Operation<ZnSMBOperation::Read>();
  size_t count = 0;
  if (!TakeReadData(*read.buffer, count)) return ResultFailure;
  if (count > read.asked) return Fail(Values::ErrBadValue);
  size_t max = maxbuffersize();
  size_t done = read.buffer->Length();
  if (done >= read.wanted || count < max || count == 0) return ResultSuccess;

  size_t missing = read.wanted - done;
  read.offset += static_cast<uint32_t>(count);
  read.asked = static_cast<uint16_t>(std::min(missing, max));
  return Sent(SendRead(read.fid, read.offset, read.asked, static_cast<uint16_t>(missing)));
}

// ---- whole files ----------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::DownloadFile(const ZnSMBCFileObject& file, ZnByteBuffer* buffer,
                                              Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  buffer->Clear();
  storage_ = ZnSMBOperation::Download{buffer};
  return Start(Values::StateDownload, SendOpen(file.path, Values::AccessRead, Values::DenyWrite), callback);
}

ZnSMBClient::Result ZnSMBClient::DownloadOpened() {
  auto& download = Operation<ZnSMBOperation::Download>();
  ZnSMBCOpen_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  if ((words.access & 3U) == Values::AccessExecute) return Fail(Values::ErrBadValue);
  download.fid = words.fid;
  download.size = words.file_size;
  return SendNextDownload();
}

ZnSMBClient::Result ZnSMBClient::DownloadReply() {
  auto& download = Operation<ZnSMBOperation::Download>();
  size_t count = 0;
  if (!TakeReadData(*download.buffer, count)) return ResultFailure;
  if (download.buffer->Length() > download.size) return Fail(Values::ErrBadValue);
  if (count == 0) return Fail(Values::ErrBadValue);  // the file has shrunk: asking on would never end
  return SendNextDownload();
}

// Sizes count in 16 bits here: the operation serves files below 64 KiB.
ZnSMBClient::Result ZnSMBClient::SendNextDownload() {
  const auto& download = Operation<ZnSMBOperation::Download>();
  auto offset = static_cast<uint32_t>(download.buffer->Length());
  auto remaining = static_cast<uint16_t>(download.size - offset);
  if (remaining == 0) return Sent(SendClose(download.fid, ZnTimeVal::now()));
  return Sent(SendRead(download.fid, offset, std::min(remaining, kDownloadChunk), remaining));
}
