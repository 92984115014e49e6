// Setting what a server keeps about one file.

#include "smb/client/transaction_operation.h"

using Values = ZnSMBClientValues;

namespace {

constexpr uint32_t kDay = 24 * 60 * 60;  // seconds

// A date of the old form, and the time of day as what lies between the beginning of that day here and `time`.
void SplitOldTime(const ZnTimeVal& time, ZnSMBCDate& date, ZnSMBCTime& timeOfDay) {
  date.FromTimeVal(time);
  const uint32_t midnight = date.AsTimeVal().seconds;
  // The day of the date is that of UTC: west of it, midnight here may still be to come.
  const ZnTimeVal sinceMidnight{(time.seconds >= midnight ? 0 : kDay) + time.seconds - midnight, time.microseconds};
  timeOfDay.FromTimeVal(sinceMidnight);
}

// 0 leaves the server's time.
ZnSMBCTimeDCE LongTime(const std::optional<ZnTimeVal>& time) {
  return time ? ZnSMBCTimeDCE::At(*time) : ZnSMBCTimeDCE();
}

// No bit at all would leave the server's attributes: a plain file has one of its own.
ZnSMBCFileXAttributes LongAttribs(const std::optional<ZnSMBCFileAttributes>& attribs) {
  ZnSMBCFileXAttributes encoded;
  if (!attribs) return encoded;
  encoded.attribs = *attribs;
  encoded.normal = *attribs == ZnSMBCFileAttributes();
  return encoded;
}

ZnSMBCTrans2_FILEINFO InfoOf(const ZnSMBCFileChange& change, Values::FileInfoLevel level) {
  ZnSMBCTrans2_FILEINFO info(level);
  if (level == Values::FileInfoAttribs) {
    info.xattribs = LongAttribs(change.attribs);
    info.last_access_time = LongTime(change.accessed);
    info.last_write_time = LongTime(change.modified);
    return info;
  }
  info.attribs = change.attribs.value_or(ZnSMBCFileAttributes());
  SplitOldTime(change.accessed.value_or(ZnTimeVal()), info.old_access_date, info.old_access_time);
  SplitOldTime(change.modified.value_or(ZnTimeVal()), info.old_change_date, info.old_change_time);
  return info;
}

ZnSMBCTrans2_ReqParams ParamsOf(const ZnSmbConversation& conversation, const ZnSMBCFileObject& file,
                                Values::Trans2Command command, uint16_t level) {
  ZnSMBCTrans2_ReqParams params(command, conversation.RequestEncoding());
  params.level = level;
  params.fid = file.fid;
  params.filename = file.path;
  return params;
}

}  // namespace

ZnSmbCall ZnSmbClient::SetInfo(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnSMBCFileChange& change,
                               ZnSmbDone done) {
  const auto command = file.isopen ? Values::Trans2SetFileInfo : Values::Trans2SetPathInfo;
  const auto level = SetsLongTimes() ? Values::FileInfoAttribs : Values::FileInfoOldAttribs;
  return std::make_unique<ZnSmbSettingOperation>(*conversation_, caller, file.tid, std::move(done),
                                                 ParamsOf(*conversation_, file, command, level),
                                                 InfoOf(change, level).Pack());
}

ZnSmbCall ZnSmbClient::Replace(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnUniString& name,
                               ZnSmbDone done) {
  ZnSMBCTrans2_RENAMEINFO info(nameencoding());
  info.replace = true;
  info.name = name;
  return std::make_unique<ZnSmbSettingOperation>(
      *conversation_, caller, file.tid, std::move(done),
      ParamsOf(*conversation_, file, Values::Trans2SetPathInfo, ZnSMBCTrans2_RENAMEINFO::kLevel), info.Pack());
}
