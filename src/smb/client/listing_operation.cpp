// Listing a directory: find first, and find next until the server has no more.

#include "smb/client/transaction_operation.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

// As many as fit into a reply; a server gives fewer when it likes. Those that speak the newest dialect send replies as
// long as the buffer that we announce.
constexpr uint16_t kEntriesARound = 1000;
constexpr uint16_t kLongReply = 0xFFFF - 1024;
// A server that never comes to an end isn't listened to for ever.
constexpr size_t kMostEntries = 1000000;
constexpr std::chrono::minutes kLongestListing{10};

// "No more files": how some servers say that nothing, or nothing further, matches.
constexpr uint8_t kDosClass = 1;
constexpr uint8_t kNoMoreFiles = 18;

ZnUniString SearchName(const ZnUniString& directory, const ZnUniString& pattern) {
  return directory.EndsWith("\\") ? directory + pattern : directory + "\\" + pattern;
}

ZnSMBCFileObject FileOf(const ZnSMBCTrans2_DIRENTRY& entry, const ZnSMBCTreeObject& tree) {
  ZnSMBCFileObject file(tree, entry.filename);
  file.altname = entry.shortname;
  file.size = entry.end_of_file;
  file.attribs = entry.xattribs.attribs;
  file.created = entry.create_time.AsTimeVal();
  file.accessed = entry.last_access_time.AsTimeVal();
  file.modified = entry.last_write_time.AsTimeVal();
  return file;
}

class ListOperation : public ZnSmbTransaction {
 public:
  ListOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, const ZnSMBCDirectoryObject& directory,
                const ZnUniString& pattern, ZnDList<ZnSMBCFileObject>* list, std::function<bool()> took, ZnSmbDone done)
      : ZnSmbTransaction(conversation, caller, directory.tid, std::move(done)),
        directory_(directory),
        list_(list),
        took_(std::move(took)),
        mostdata_(conversation.IsNt() ? kLongReply : kUsualData) {
    ZnSMBCTrans2_ReqParams params(Values::Trans2FindFirst2, conversation.RequestEncoding());
    params.attribs.read_only = params.attribs.hidden = params.attribs.system = true;
    params.attribs.directory = params.attribs.archive = true;
    params.search_count = kEntriesARound;
    params.close_at_end = true;
    params.level = ZnSMBCTrans2_DIRENTRY::kLevel;
    params.filename = SearchName(directory.path, pattern);
    AskTrans2(params, ZnByteBuffer(), mostdata_);
  }

 private:
  bool Collected(const Parts& parts, const ZnSMBCHeader& reply) override {
    const bool first = !searching_;
    ZnSMBCTrans2_RespParams params(first ? Values::Trans2FindFirst2 : Values::Trans2FindNext2);
    if (!params.Read(parts.params)) return End(Values::ErrRead);
    if (first) searchid_ = params.search_id;
    searching_ = params.end_of_search == 0;
    if (IsAbandoned()) return End();
    if (!TakeEntries(params.search_count, parts.data, reply)) return End(Values::ErrRead);
    const ZnWeakRef<ZnReferable> self(this);
    const bool taken = took_();
    if (!self) return false;
    if (IsAbandoned()) return End();
    if (!taken) return End(Values::ErrInternal);
    if (ZnSteadyClock::now() - began_ > kLongestListing) return End(Values::ErrTimedOut);
    if (!searching_ || params.search_count == 0) return End();
    return AskNext();
  }

  bool Refused(const Part& part) override {
    const bool noMore = outcome_.errorclass == kDosClass && outcome_.errorcode == kNoMoreFiles;
    if (!noMore) return ZnSmbTransaction::Refused(part);
    searching_ = false;
    return End();
  }

  bool AskNext() {
    ZnSMBCTrans2_ReqParams params(Values::Trans2FindNext2, conversation()->RequestEncoding());
    params.search_id = searchid_;
    params.search_count = kEntriesARound;
    params.level = ZnSMBCTrans2_DIRENTRY::kLevel;
    params.resume_key = resumekey_;
    params.close_at_end = params.return_resume_keys = params.continue_from_last = true;
    params.filename = directory_.path;
    return AskTrans2(params, ZnByteBuffer(), mostdata_);
  }

  // Reads the entries of one reply. The distance to the next one counts only while there is a next one: in the last
  // entry servers put there what they like.
  bool TakeEntries(unsigned count, const ZnByteBuffer& data, const ZnSMBCHeader& reply) {
    const bool unicodeServer = conversation()->server.capabilities.unicode;
    const ZnEncoding shortNames = conversation()->OfServer(unicodeServer);
    const ZnEncoding names = conversation()->OfServer(unicodeServer && reply.unicode);
    size_t position = 0;
    for (unsigned i = 0; i < count; i++) {
      ZnSMBCTrans2_DIRENTRY entry(names, shortNames, ZnSMBCTrans2_DIRENTRY::kLevel, position + 1);
      ZnSmbReader in(data.Data() + position, data.Length() - position);
      if (!entry.Read(in) || entries_++ >= kMostEntries) return false;
      // A name that can't be said back to the server would lead to another file, or to none.
      if (in.TextsAreWhole()) list_->Append(FileOf(entry, directory_));
      resumekey_ = entry.file_index;
      if (i + 1 == count) break;
      // An entry that begins inside this one could make a short reply into gigabytes of names.
      if (entry.next_offset < in.Offset() || entry.next_offset > data.Length() - position) return false;
      position += entry.next_offset;
    }
    return true;
  }

  // Servers have few searches, and an open one costs until the connection ends.
  void Ending(Reason) override {
    if (!searching_ || !conversation()) return;
    ZnSMBCFindClose_ReqWords words;
    words.value = searchid_;
    Tell(Values::CmdFindClose, words, ZnSMBCNoData());
  }

  ZnSMBCDirectoryObject directory_;
  ZnDList<ZnSMBCFileObject>* list_;
  std::function<bool()> took_;
  uint16_t mostdata_;
  bool searching_ = false;  // the server has a search open for us
  uint16_t searchid_ = 0;
  uint32_t resumekey_ = 0;
  size_t entries_ = 0;  // that have come
  ZnMoment began_ = ZnSteadyClock::now();
};

}  // namespace

ZnSmbCall ZnSmbClient::List(ZnSmbCaller caller, const ZnSMBCDirectoryObject& directory, const ZnUniString& pattern,
                            ZnDList<ZnSMBCFileObject>* list, std::function<bool()> took, ZnSmbDone done) {
  return std::make_unique<ZnSmbLastingCall>(std::make_unique<ListOperation>(*conversation_, caller, directory, pattern,
                                                                            list, std::move(took), std::move(done)));
}
