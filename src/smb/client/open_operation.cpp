// Opening a file and closing it.

#include "smb/client/path_data.h"
#include "smb/client/wire_operation.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

// ---- what a mode means in the newest request

constexpr uint32_t kReading = 0x00120089;  // data and attributes (MS-SMB 2.2.1.4.1)
constexpr uint32_t kWriting = 0x00120116;
constexpr uint32_t kShareReading = 1;
constexpr uint32_t kShareWriting = 2;
constexpr uint32_t kNoDirectory = 0x40;
constexpr uint32_t kImpersonation = 2;

constexpr uint32_t kAccess[] = {kReading, kWriting, kReading | kWriting, kReading};

constexpr uint32_t kSharing[] = {kShareReading | kShareWriting,  // DenyCompat
                                 0,                              // DenyAll
                                 kShareReading,                  // DenyWrite
                                 kShareWriting,                  // DenyRead
                                 kShareReading | kShareWriting};

// By `create` and `existing`. (MS-CIFS 2.2.4.64.1)
constexpr uint32_t kDisposition[2][3] = {
    {1, 1, 4},  // a file that is there is opened, or cut
    {2, 3, 5},  // makes one that isn't there, alone or besides
};

class OpenOperation : public ZnSmbWireOperation {
 public:
  OpenOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, ZnSMBCFileObject* file, const ZnSmbOpenMode& mode,
                ZnSmbDone done)
      : ZnSmbWireOperation(conversation, caller, file->tid, std::move(done)), file_(file), access_(mode.access) {
    if (file->isopen) EndSoon(Values::ErrBadFID);
    if (conversation.IsCore()) {
      AskCore(mode);
    } else if (conversation.IsNt() && conversation.server.capabilities.nt_commands) {
      AskNt(mode);
    } else {
      AskX(mode);
    }
  }

 private:
  void AskCore(const ZnSmbOpenMode& mode) {
    ZnSMBCOpen_ReqWords words;
    words.access.access = mode.access;
    words.access.sharing = mode.sharing;
    words.attribs = ZnSmbHiddenAndSystem();
    words.attribs.read_only = words.attribs.volume = words.attribs.archive = true;
    Ask(Values::CmdOpen, words, ZnSmbPathData<ZnSMBCOpen_ReqData>(*conversation(), file_->path));
  }

  void AskX(const ZnSmbOpenMode& mode) {
    ZnSMBCOpenX_ReqWords words;
    words.access.access = mode.access;
    words.access.sharing = mode.sharing;
    words.attribs = ZnSmbHiddenAndSystem();
    words.attribs.directory = true;
    words.create_attribs = file_->attribs;
    words.creation_time = file_->modified;
    words.openfunction.action = mode.existing;
    words.openfunction.create = mode.create;
    Ask(Values::CmdOpenX, words, ZnSmbPathData<ZnSMBCOpenX_ReqData>(*conversation(), file_->path));
  }

  void AskNt(const ZnSmbOpenMode& mode) {
    ZnSMBCNTCreateX_ReqWords words;
    words.name_length = static_cast<uint16_t>(ZnSmbTextSize(file_->path, conversation()->RequestEncoding()));
    words.desired_access = kAccess[mode.access];
    words.xattribs.attribs = file_->attribs;
    words.share_access = kSharing[mode.sharing];
    words.disposition = kDisposition[mode.create ? 1 : 0][mode.existing];
    words.options = kNoDirectory;
    words.impersonation = kImpersonation;
    Ask(Values::CmdNTCreateX, words, ZnSmbPathData<ZnSMBCNTCreateX_ReqData>(*conversation(), file_->path));
  }

  bool Accepted(const ZnSMBCDecode& reply, const Part&) override {
    switch (reply.header.command) {
      case Values::CmdNTCreateX:
        return OpenedNt(reply);
      case Values::CmdOpenX:
        return Opened<ZnSMBCOpenX_RespWords>(reply);
      default:
        return Opened<ZnSMBCOpen_RespWords>(reply);
    }
  }

  // Both older replies tell the same of the file.
  template <class Words>
  bool Opened(const ZnSMBCDecode& reply) {
    Words words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    const unsigned access = words.access & 3U;
    if (access == Values::AccessExecute) return End(Values::ErrBadValue);
    access_ = static_cast<Values::Access>(access);
    return Opened(words.fid, words.attribs, words.file_size, {}, {}, {});
  }

  bool OpenedNt(const ZnSMBCDecode& reply) {
    ZnSMBCNTCreateX_RespWords words;
    if (!reply.ReadWords(words)) return End(Values::ErrRead);
    return Opened(words.fid, words.xattribs.attribs, words.end_of_file, words.creation_time.AsTimeVal(),
                  words.last_access_time.AsTimeVal(), words.last_write_time.AsTimeVal());
  }

  bool Opened(uint16_t fid, const ZnSMBCFileAttributes& attribs, uint64_t size, const ZnTimeVal& created,
              const ZnTimeVal& accessed, const ZnTimeVal& modified) {
    if (IsAbandoned()) {
      ZnSMBCClose_ReqWords words;
      words.fid = fid;
      Tell(Values::CmdClose, words, ZnSMBCNoData());
      return End();
    }
    file_->fid = fid;
    file_->isopen = true;
    file_->access = access_;
    file_->attribs = attribs;
    file_->size = size;
    file_->created = created;
    file_->accessed = accessed;
    file_->modified = modified;
    return End();
  }

  ZnSMBCFileObject* file_;
  Values::Access access_;
};

}  // namespace

ZnSmbCall ZnSmbClient::Open(ZnSmbCaller caller, ZnSMBCFileObject* file, const ZnSmbOpenMode& mode, ZnSmbDone done) {
  return std::make_unique<ZnSmbLastingCall>(
      std::make_unique<OpenOperation>(*conversation_, caller, file, mode, std::move(done)));
}

ZnSmbCall ZnSmbClient::Close(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnTimeVal& modified,
                             ZnSmbDone done) {
  ZnSMBCClose_ReqWords words;
  words.fid = file.fid;
  words.last_write_time = modified;
  return std::make_unique<ZnSmbLastingCall>(std::make_unique<ZnSmbPlainOperation>(
      *conversation_, caller, file.tid, std::move(done), Values::CmdClose, words, ZnSMBCNoData()));
}
