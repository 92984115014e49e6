// Asking for and setting what a server keeps about one file.

#include "smb/client/smb_client.h"
#include "smb/wire/trans2_sections.h"

using Values = ZnSMBClientValues;

namespace {

constexpr uint32_t kDay = 24 * 60 * 60;  // seconds

// A date of the old form, and the time of day as what lies between the beginning of that day here and `time`.
void SplitOldTime(const ZnTimeVal& time, ZnSMBCDate& date, ZnSMBCTime& timeOfDay) {
  date.FromTimeVal(time);
  uint32_t midnight = date.AsTimeVal().seconds;
  // The day of the date is that of UTC: west of it, midnight here may still be to come.
  ZnTimeVal sinceMidnight{(time.seconds >= midnight ? 0 : kDay) + time.seconds - midnight, time.microseconds};
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

void FillIn(ZnSMBCTrans2_FILEINFO& info, const ZnSMBCFileChange& change) {
  if (info.level == Values::FileInfoAttribs) {
    info.xattribs = LongAttribs(change.attribs);
    info.last_access_time = LongTime(change.accessed);
    info.last_write_time = LongTime(change.modified);
    return;
  }
  info.attribs = change.attribs.value_or(ZnSMBCFileAttributes());
  SplitOldTime(change.accessed.value_or(ZnTimeVal()), info.old_access_date, info.old_access_time);
  SplitOldTime(change.modified.value_or(ZnTimeVal()), info.old_change_date, info.old_change_time);
}

void TakeAttribs(const ZnSMBCTrans2_FILEINFO& info, ZnSMBCFileObject& file) {
  file.attribs = info.xattribs.attribs;
  file.created = info.create_time.AsTimeVal();
  file.accessed = info.last_access_time.AsTimeVal();
  file.modified = info.last_write_time.AsTimeVal();
}

void TakeOldAttribs(const ZnSMBCTrans2_FILEINFO& info, ZnSMBCFileObject& file) {
  file.attribs = info.attribs;
  file.size = info.old_size;
  file.created = info.old_create_date.AsTimeVal() + info.old_create_time.AsTimeVal();
  file.accessed = info.old_access_date.AsTimeVal() + info.old_access_time.AsTimeVal();
  file.modified = info.old_change_date.AsTimeVal() + info.old_change_time.AsTimeVal();
}

void TakeFileInfo(const ZnSMBCTrans2_FILEINFO& info, Values::FileInfoLevel level, ZnSMBCFileObject& file) {
  switch (level) {
    case Values::FileInfoOldAttribs:
      return TakeOldAttribs(info, file);
    case Values::FileInfoAttribs:
      return TakeAttribs(info, file);
    case Values::FileInfoSize:
      file.size = info.end_of_file;
      return;
    case Values::FileInfoAll:
      TakeAttribs(info, file);
      file.size = info.end_of_file;
      if (!info.filename.IsEmpty()) file.altname = info.filename;
      return;
    case Values::FileInfoName:
      file.altname = info.filename;
      return;
    case Values::FileInfoAltname:
      file.altname = info.altname;
      return;
  }
}

}  // namespace

ZnSMBClient::Result ZnSMBClient::GetFileInfo(ZnSMBCFileObject* file, Values::FileInfoLevel level,
                                             Completion* callback) {
  if (!Ready(file->tid)) return ResultFailure;
  storage_ = ZnSMBOperation::FileInfo{file, level};
  ZnSMBCTrans2_ReqParams params(Values::Trans2QueryPathInfo, RequestEncoding());
  params.level = level;
  params.filename = file->path;
  return Start(Values::StateFileInfo, SendTrans2(params, ZnByteBuffer()), callback);
}

// Names come in UTF-16 from every server that knows it, whatever was agreed on.
ZnSMBClient::Result ZnSMBClient::FileInfoReply() {
  Result result = RecvTransWithoutSetup();
  if (result != ResultSuccess) return result;
  const auto& query = Operation<ZnSMBOperation::FileInfo>();
  ZnSMBCTrans2_RespParams params(Values::Trans2QueryPathInfo);
  ZnSMBCTrans2_RespData data(Values::Trans2QueryPathInfo, query.level,
                             server_.capabilities.unicode ? ZnEncoding{ZnCodeset::Utf16Lsb} : encoding_);
  if (!params.Read(collected_.params) || !data.Read(collected_.data)) return Fail(Values::ErrRead);
  TakeFileInfo(data.fileinfo, query.level, *query.file);
  return ResultSuccess;
}

ZnSMBClient::Result ZnSMBClient::SetFileInfo(const ZnSMBCFileObject& file, const ZnSMBCFileChange& change,
                                             Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  auto command = file.isopen ? Values::Trans2SetFileInfo : Values::Trans2SetPathInfo;
  auto level = SetsLongTimes() ? Values::FileInfoAttribs : Values::FileInfoOldAttribs;
  storage_ = ZnSMBOperation::SetFileInfo{command};

  ZnSMBCTrans2_ReqParams params(command, RequestEncoding());
  params.level = level;
  params.fid = file.fid;
  params.filename = file.path;

  ZnSMBCTrans2_FILEINFO info(RequestEncoding(), level);
  FillIn(info, change);
  return Start(Values::StateSetFileInfo, SendTrans2(params, info.Pack()), callback);
}

ZnSMBClient::Result ZnSMBClient::ReplaceFile(const ZnSMBCFileObject& file, const ZnUniString& name,
                                             Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  storage_ = ZnSMBOperation::SetFileInfo{Values::Trans2SetPathInfo};
  ZnSMBCTrans2_ReqParams params(Values::Trans2SetPathInfo, RequestEncoding());
  params.level = ZnSMBCTrans2_RENAMEINFO::kLevel;
  params.filename = file.path;
  ZnSMBCTrans2_RENAMEINFO info(RequestEncoding());
  info.replace = true;
  info.name = name;
  return Start(Values::StateSetFileInfo, SendTrans2(params, info.Pack()), callback);
}

ZnSMBClient::Result ZnSMBClient::SetFileInfoReply() {
  Result result = RecvTransWithoutSetup();
  if (result != ResultSuccess) return result;
  ZnSMBCTrans2_RespParams params(Operation<ZnSMBOperation::SetFileInfo>().command);
  return params.Read(collected_.params) ? ResultSuccess : Fail(Values::ErrRead);
}
