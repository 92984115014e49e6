// Writing an open file, and giving it a size.

#include "smb/client/transaction_operation.h"
#include "smb/client/transfer.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

class WriteOperation : public ZnSmbTransfer {
 public:
  WriteOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset,
                 const ZnByteBuffer& bytes, ZnSmbDone done)
      : ZnSmbTransfer(conversation, caller, file.tid, std::move(done), bytes.Length(), PieceOf(conversation)),
        fid_(file.fid),
        offset_(offset),
        old_(ZnSmbPieces::GoInOldRequest(conversation, offset, bytes.Length())),
        bytes_(bytes) {
    const uint64_t most = ZnSmbPieces::LargestFile(conversation.server);
    if (offset > most || bytes.Length() > most - offset) EndSoon(Values::ErrNotSupported);
    Begin();
  }

 private:
  // A signed message has to fit into the server's buffer whatever else it offers. (MS-SMB 3.2.4.13)
  static size_t PieceOf(const ZnSmbConversation& conversation) {
    const bool large = conversation.IsNt() && conversation.server.capabilities.large_writex && !conversation.signs;
    return large ? ZnSmbPieces::kLarge : ZnSmbPieces::FittingBuffer(conversation.server);
  }

  void AskFor(const Part& part) override {
    const uint64_t at = offset_ + part.position;
    const bool whole = part.length == bytes_.Length();
    const ZnByteBuffer bytes = whole ? bytes_ : ZnByteBuffer(bytes_.Data() + part.position, part.length);
    const auto remaining = static_cast<uint16_t>(std::min<size_t>(bytes_.Length() - part.position, 0xFFFF));
    old_ ? AskOld(at, bytes, remaining, part) : AskNew(at, bytes, remaining, part);
  }

  void AskNew(uint64_t at, const ZnByteBuffer& bytes, uint16_t remaining, const Part& part) {
    ZnSMBCWriteX_ReqWords words;
    words.fid = fid_;
    words.offset = static_cast<uint32_t>(at);
    words.high_offset = static_cast<uint32_t>(at >> 32);
    words.remaining = remaining;
    words.length = static_cast<uint16_t>(part.length);
    Ask(Values::CmdWriteX, words, ZnSMBCWriteX_ReqPad(), bytes, part);
  }

  void AskOld(uint64_t at, const ZnByteBuffer& bytes, uint16_t remaining, const Part& part) {
    ZnSMBCWrite_ReqWords words;
    words.fid = fid_;
    words.count = static_cast<uint16_t>(part.length);
    words.offset = static_cast<uint32_t>(at);
    words.remaining = remaining;
    ZnSMBCFileBlock block;
    block.length = words.count;
    Ask(Values::CmdWrite, words, block, bytes, part);
  }

  Reason TakeReply(const ZnSMBCDecode& reply, const Part& part) override {
    size_t taken = 0;
    if (old_) {
      ZnSMBCWrite_RespWords words;
      if (!reply.ReadWords(words)) return Values::ErrRead;
      taken = words.count;
    } else {
      ZnSMBCWriteX_RespWords words;
      if (!reply.ReadWords(words)) return Values::ErrRead;
      taken = words.count | size_t{words.high_count} << 16;
    }
    return taken == part.length ? Values::ErrNone : Values::ErrServer;
  }

  uint16_t fid_;
  uint64_t offset_;
  bool old_;  // the request that is used
  ZnByteBuffer bytes_;
};

Values::Reason NothingWritten(const ZnSMBCDecode& reply) {
  ZnSMBCWrite_RespWords words;
  if (!reply.ReadWords(words)) return Values::ErrRead;
  return words.count == 0 ? Values::ErrNone : Values::ErrServer;
}

}  // namespace

ZnSmbCall ZnSmbClient::Write(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t offset,
                             const ZnByteBuffer& bytes, ZnSmbDone done) {
  return std::make_unique<WriteOperation>(*conversation_, caller, file, offset, bytes, std::move(done));
}

// In the old way, a write of nothing makes its offset the file's size; where there are larger files, it is information
// about the file.
ZnSmbCall ZnSmbClient::SetSize(ZnSmbCaller caller, const ZnSMBCFileObject& file, uint64_t size, ZnSmbDone done) {
  if (size > ZnSmbPieces::LargestFile(conversation_->server)) {
    return Write(caller, file, size, ZnByteBuffer(), std::move(done));  // fails as that does
  }
  if (conversation_->server.capabilities.large_files) {
    ZnSMBCTrans2_ReqParams params(Values::Trans2SetFileInfo, nameencoding());
    params.fid = file.fid;
    params.level = ZnSMBCTrans2_ENDOFFILE::kLevel;
    ZnSMBCTrans2_ENDOFFILE info;
    info.end_of_file = size;
    return std::make_unique<ZnSmbSettingOperation>(*conversation_, caller, file.tid, std::move(done), params,
                                                   info.Pack());
  }
  ZnSMBCWrite_ReqWords words;
  words.fid = file.fid;
  words.offset = static_cast<uint32_t>(size);
  return std::make_unique<ZnSmbPlainOperation>(*conversation_, caller, file.tid, std::move(done), Values::CmdWrite,
                                               words, ZnSMBCFileBlock(), &NothingWritten);
}
