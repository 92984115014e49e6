// Reading an open file.

#include <cstring>

#include "smb/client/transfer.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

class ReadOperation : public ZnSmbTransfer {
 public:
  ReadOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset,
                size_t length, ZnByteBuffer* buffer, ZnSmbDone done)
      : ZnSmbTransfer(conversation, caller, file.tid, std::move(done), Reachable(conversation.server, offset, length),
                      PieceOf(conversation)),
        fid_(file.fid),
        offset_(offset),
        old_(ZnSmbPieces::GoInOldRequest(conversation, offset, length)),
        buffer_(buffer) {
    buffer_->Clear();
    Begin();
  }

 private:
  struct Bytes {
    const uint8_t* at = nullptr;
    size_t length = 0;
  };

  // Behind what requests can name there is nothing to be had.
  static size_t Reachable(const ZnSMBServerInfo& server, uint64_t offset, size_t length) {
    const uint64_t most = ZnSmbPieces::LargestFile(server);
    return offset < most ? static_cast<size_t>(std::min<uint64_t>(length, most - offset)) : 0;
  }

  // A reply of that size fits the buffer that we announce (connect_operation.cpp). If it didn't, servers would cut it,
  // and that would look like the end of the file.
  static size_t PieceOf(const ZnSmbConversation& conversation) {
    const bool large = conversation.IsNt() && conversation.server.capabilities.large_readx;
    return large ? ZnSmbPieces::kLarge : ZnSmbPieces::FittingBuffer(conversation.server);
  }

  void AskFor(const Part& part) override {
    const uint64_t at = offset_ + part.position;
    old_ ? AskOld(at, part) : AskNew(at, part);
  }

  void AskNew(uint64_t at, const Part& part) {
    ZnSMBCReadX_ReqWords words;
    words.fid = fid_;
    words.count = static_cast<uint16_t>(part.length);
    words.offset = static_cast<uint32_t>(at);
    words.high_offset = static_cast<uint32_t>(at >> 32);
    Ask(Values::CmdReadX, words, ZnSMBCNoData(), ZnByteBuffer(), part);
  }

  void AskOld(uint64_t at, const Part& part) {
    ZnSMBCRead_ReqWords words;
    words.fid = fid_;
    words.count = static_cast<uint16_t>(part.length);
    words.offset = static_cast<uint32_t>(at);
    words.remaining = static_cast<uint16_t>(std::min<size_t>(end() - part.position, 0xFFFF));
    Ask(Values::CmdRead, words, ZnSMBCNoData(), ZnByteBuffer(), part);
  }

  Reason TakeReply(const ZnSMBCDecode& reply, const Part& part) override {
    Bytes bytes;
    const Reason reason = old_ ? FindOld(reply, bytes) : FindNew(reply, bytes);
    if (reason != Values::ErrNone) return reason;
    if (bytes.length > part.length) return Values::ErrBadValue;
    if (bytes.length < part.length) EndsAt(part.position + bytes.length);
    Place(bytes, part.position);
    return Values::ErrNone;
  }

  static Reason FindNew(const ZnSMBCDecode& reply, Bytes& bytes) {
    ZnSMBCReadX_RespWords words;
    if (!reply.ReadWords(words)) return Values::ErrRead;
    bytes.length = words.length | size_t{words.high_length} << 16;
    if (bytes.length == 0) return Values::ErrNone;  // the place means nothing then
    ZnSmbReader in = reply.Data();
    if (words.data_offset < reply.DataStart() || !in.Reserved(words.data_offset - reply.DataStart())) {
      return Values::ErrRead;
    }
    bytes.at = in.Where();
    return bytes.length > in.Remaining() ? Values::ErrBadValue : Values::ErrNone;
  }

  static Reason FindOld(const ZnSMBCDecode& reply, Bytes& bytes) {
    ZnSMBCRead_RespWords words;
    ZnSMBCFileBlock block;
    ZnSmbReader in = reply.Data();
    if (!reply.ReadWords(words) || !block.Read(in)) return Values::ErrRead;
    bytes = {in.Where(), block.length};
    return words.count != block.length || block.length > in.Remaining() ? Values::ErrBadValue : Values::ErrNone;
  }

  // Pieces come in any order.
  void Place(const Bytes& bytes, size_t position) {
    if (bytes.length == 0) return;
    if (data_.IsNull()) data_.Reserve(end());
    if (position == data_.Length()) return data_.Append(bytes.at, bytes.length);
    if (data_.Length() < position + bytes.length) data_.SetLength(position + bytes.length);
    memcpy(data_.Writable() + position, bytes.at, bytes.length);
  }

  void Complete() override {
    if (data_.Length() > end()) data_.SetLength(end());
    *buffer_ = std::move(data_);
  }

  uint16_t fid_;
  uint64_t offset_;
  bool old_;  // the request that is used
  ZnByteBuffer* buffer_;
  ZnByteBuffer data_;
};

}  // namespace

ZnSmbCall ZnSmbClient::Read(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset, size_t length,
                            ZnByteBuffer* buffer, ZnSmbDone done) {
  return std::make_unique<ReadOperation>(*conversation_, caller, file, offset, length, buffer, std::move(done));
}
