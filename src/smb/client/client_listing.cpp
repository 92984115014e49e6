// Listing a directory: find first, and find next until the server has no more.

#include "smb/client/smb_client.h"
#include "smb/wire/trans2_sections.h"

using Values = ZnSMBClientValues;

namespace {

constexpr uint16_t kEntriesARound = 20;
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

}  // namespace

ZnSMBClient::Result ZnSMBClient::ListDirectory(const ZnSMBCDirectoryObject& directory, ZnDList<ZnSMBCFileObject>* list,
                                               const ZnUniString& pattern, Completion* callback) {
  if (!Ready(directory.tid)) return ResultFailure;
  storage_ = ZnSMBOperation::Listing{directory, list};

  ZnSMBCTrans2_ReqParams params(Values::Trans2FindFirst2, RequestEncoding());
  params.attribs.read_only = params.attribs.hidden = params.attribs.system = true;
  params.attribs.directory = params.attribs.archive = true;
  params.search_count = kEntriesARound;
  params.close_at_end = true;  // servers have few searches, and an open one costs until the connection ends
  params.level = ZnSMBCTrans2_DIRENTRY::kLevel;
  params.filename = SearchName(directory.path, pattern);
  return Start(Values::StateListDirectory, SendTrans2(params, ZnByteBuffer()), callback);
}

ZnSMBClient::Result ZnSMBClient::ListDirectoryReply() {
  Result result = RecvTransWithoutSetup();
  if (result != ResultSuccess) return result;
  auto& listing = Operation<ZnSMBOperation::Listing>();
  ZnSMBCTrans2_RespParams params(listing.step);
  if (!params.Read(collected_.params)) return Fail(Values::ErrRead);
  if (TakeEntries(params.search_count) != ResultSuccess) return ResultFailure;
  if (!TookEntries()) return Fail(Values::ErrInternal);
  if (ZnSteadyClock::now() - listing.began > kLongestListing) return Fail(Values::ErrTimedOut);
  if (params.end_of_search != 0 || params.search_count == 0) return ResultSuccess;
  if (listing.step == Values::Trans2FindFirst2) listing.sid = params.search_id;
  return Sent(SendFindNext());
}

ZnSMBClient::Result ZnSMBClient::ListDirectoryRefused() {
  if (errorclass_ != kDosClass || errorcode_ != kNoMoreFiles) return ResultFailure;
  reason_ = Values::ErrNone;
  return ResultSuccess;
}

// Reads the entries of one reply. The distance to the next one counts only while there is a next one: in the last entry
// servers put there what they like.
ZnSMBClient::Result ZnSMBClient::TakeEntries(unsigned count) {
  auto& listing = Operation<ZnSMBOperation::Listing>();
  bool unicodeServer = server_.capabilities.unicode;
  ZnEncoding shortNames = unicodeServer ? ZnEncoding{ZnCodeset::Utf16Lsb} : encoding_;
  ZnEncoding names = unicodeServer && reply_.header.unicode ? ZnEncoding{ZnCodeset::Utf16Lsb} : encoding_;
  const uint8_t* bytes = collected_.data.Data();
  size_t length = collected_.data.Length();
  size_t position = 0;
  for (unsigned i = 0; i < count; i++) {
    ZnSMBCTrans2_DIRENTRY entry(names, shortNames, ZnSMBCTrans2_DIRENTRY::kLevel, position + 1);
    ZnSmbReader in(bytes + position, length - position);
    if (!entry.Read(in) || listing.entries++ >= kMostEntries) return Fail(Values::ErrRead);
    // A name that can't be said back to the server would lead to another file, or to none.
    if (in.TextsAreWhole()) listing.list->Append(FileOf(entry, listing.directory));
    listing.resumekey = entry.file_index;
    if (i + 1 == count) break;
    // An entry that begins inside this one could make a short reply into gigabytes of names.
    if (entry.next_offset < in.Offset() || entry.next_offset > length - position) return Fail(Values::ErrRead);
    position += entry.next_offset;
  }
  return ResultSuccess;
}

ZnSMBClient::Result ZnSMBClient::SendFindNext() {
  auto& listing = Operation<ZnSMBOperation::Listing>();
  listing.step = Values::Trans2FindNext2;
  ZnSMBCTrans2_ReqParams params(Values::Trans2FindNext2, RequestEncoding());
  params.search_id = listing.sid;
  params.search_count = kEntriesARound;
  params.level = ZnSMBCTrans2_DIRENTRY::kLevel;
  params.resume_key = listing.resumekey;
  params.close_at_end = params.return_resume_keys = params.continue_from_last = true;
  params.filename = listing.directory.path;
  return SendTrans2(params, ZnByteBuffer());
}
