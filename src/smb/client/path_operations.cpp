// Files and directories: everything that is one request and one reply.

#include "smb/client/path_data.h"
#include "smb/client/wire_operation.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

// A time of day on a date, in the two fields that a request has for it.
void SplitTime(const ZnTimeVal& time, ZnSMBCDate& date, ZnSMBCTime& timeOfDay) {
  date.FromTimeVal(time);
  timeOfDay.FromTimeVal(time);
}

Values::Reason MoveReply(const ZnSMBCDecode& reply) {
  ZnSMBCMove_RespWords words;
  return reply.ReadWords(words) ? Values::ErrNone : Values::ErrRead;
}

template <class... Rest>
ZnSmbCall Plain(ZnSmbConversation& conversation, ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone& done,
                const Rest&... rest) {
  return std::make_unique<ZnSmbPlainOperation>(conversation, caller, file.tid, std::move(done), rest...);
}

}  // namespace

ZnSmbCall ZnSmbClient::Flush(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done) {
  ZnSMBCFlush_ReqWords words;
  words.fid = file.fid;
  return Plain(*conversation_, caller, file, done, Values::CmdFlush, words, ZnSMBCNoData());
}

ZnSmbCall ZnSmbClient::Delete(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done) {
  ZnSMBCDelete_ReqWords words;
  words.attribs = ZnSmbHiddenAndSystem();
  const auto data = ZnSmbPathData<ZnSMBCPath_ReqData>(*conversation_, file.path);
  return Plain(*conversation_, caller, file, done, Values::CmdDelete, words, data);
}

ZnSmbCall ZnSmbClient::Rename(ZnSmbCaller caller, const ZnSMBCFileObject& file, const ZnUniString& newPath,
                              ZnSmbDone done) {
  ZnSMBCRename_ReqWords words;
  words.attribs = file.attribs;
  words.attribs.hidden = words.attribs.system = true;
  ZnSMBCRename_ReqData data(nameencoding());
  data.oldpath = file.path;
  data.newpath = newPath;
  return Plain(*conversation_, caller, file, done, Values::CmdRename, words, data);
}

ZnSmbCall ZnSmbClient::Move(ZnSmbCaller caller, const ZnSMBCFileObject& from, const ZnSMBCFileObject& to,
                            ZnSmbDone done) {
  ZnSMBCMove_ReqWords words;
  words.tid2 = to.tid;
  words.openfunction.action = Values::OFFail;
  words.flags = from.attribs.directory;
  ZnSMBCMove_ReqData data(nameencoding());
  data.oldpath = from.path;
  data.newpath = to.path;
  return Plain(*conversation_, caller, from, done, Values::CmdMove, words, data, &MoveReply);
}

ZnSmbCall ZnSmbClient::CreateDirectory(ZnSmbCaller caller, const ZnSMBCFileObject& directory, ZnSmbDone done) {
  const auto data = ZnSmbPathData<ZnSMBCPath_ReqData>(*conversation_, directory.path);
  return Plain(*conversation_, caller, directory, done, Values::CmdCreateDir, ZnSMBCNoWords(), data);
}

ZnSmbCall ZnSmbClient::DeleteDirectory(ZnSmbCaller caller, const ZnSMBCFileObject& directory, ZnSmbDone done) {
  const auto data = ZnSmbPathData<ZnSMBCPath_ReqData>(*conversation_, directory.path);
  return Plain(*conversation_, caller, directory, done, Values::CmdDeleteDir, ZnSMBCNoWords(), data);
}

ZnSmbCall ZnSmbClient::SetAttributes(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done) {
  ZnSMBCSetAttributes_ReqWords words;
  words.attribs = file.attribs;
  const auto data = ZnSmbPathData<ZnSMBCPath_ReqData>(*conversation_, file.path);
  return Plain(*conversation_, caller, file, done, Values::CmdSetAttributes, words, data);
}

ZnSmbCall ZnSmbClient::SetTimes(ZnSmbCaller caller, const ZnSMBCFileObject& file, ZnSmbDone done) {
  ZnSMBCSetTimes_ReqWords words;
  words.fid = file.fid;
  SplitTime(file.created, words.createdate, words.createtime);
  SplitTime(file.accessed, words.accessdate, words.accesstime);
  SplitTime(file.modified, words.moddate, words.modtime);
  return Plain(*conversation_, caller, file, done, Values::CmdSetTimes, words, ZnSMBCNoData());
}
