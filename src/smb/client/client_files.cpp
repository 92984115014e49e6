// Files and directories: open and close, and everything that is one request and one reply.

#include "smb/client/smb_client.h"
#include "smb/wire/file_sections.h"

using Values = ZnSMBClientValues;

namespace {

// What a search may find besides ordinary files.
ZnSMBCFileAttributes HiddenAndSystem() {
  ZnSMBCFileAttributes attribs;
  attribs.hidden = attribs.system = true;
  return attribs;
}

template <class Data>
Data PathData(ZnEncoding encoding, const ZnUniString& path) {
  Data data(encoding);
  data.path = path;
  return data;
}

// A time of day on a date, in the two fields that a request has for it.
void SplitTime(const ZnTimeVal& time, ZnSMBCDate& date, ZnSMBCTime& timeOfDay) {
  date.FromTimeVal(time);
  timeOfDay.FromTimeVal(time);
}

}  // namespace

// ---- open and close -------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::OpenFile(ZnSMBCFileObject* file, Values::Sharing sharing, bool create,
                                          Values::Openfunction existing, Completion* callback) {
  if (!Ready(file->tid)) return ResultFailure;
  if (file->isopen) return Fail(Values::ErrBadFID);
  storage_ = ZnSMBOperation::Open{file};
  bool core = server_.dialect == Values::DialectCORE;
  Result sent = core ? SendOpen(file->path, file->access, sharing) : SendOpenX(*file, sharing, create, existing);
  return Start(Values::StateOpen, sent, callback);
}

ZnSMBClient::Result ZnSMBClient::SendOpen(const ZnUniString& path, Values::Access access, Values::Sharing sharing) {
  ZnSMBCOpen_ReqWords words;
  words.access.access = access;
  words.access.sharing = sharing;
  words.attribs = HiddenAndSystem();
  words.attribs.read_only = words.attribs.volume = words.attribs.archive = true;
  return SendRequest(Values::CmdOpen, words, PathData<ZnSMBCOpen_ReqData>(RequestEncoding(), path));
}

ZnSMBClient::Result ZnSMBClient::SendOpenX(const ZnSMBCFileObject& file, Values::Sharing sharing, bool create,
                                           Values::Openfunction existing) {
  ZnSMBCOpenX_ReqWords words;
  words.access.access = file.access;
  words.access.sharing = sharing;
  words.attribs = HiddenAndSystem();
  words.attribs.directory = true;
  words.create_attribs = file.attribs;
  words.creation_time = file.modified;
  words.openfunction.action = existing;
  words.openfunction.create = create;
  return SendRequest(Values::CmdOpenX, words, PathData<ZnSMBCOpenX_ReqData>(RequestEncoding(), file.path));
}

ZnSMBClient::Result ZnSMBClient::OpenReply() { return Opened<ZnSMBCOpen_RespWords>(ZnSMBCOpen_RespWords()); }
ZnSMBClient::Result ZnSMBClient::OpenXReply() { return Opened<ZnSMBCOpenX_RespWords>(ZnSMBCOpenX_RespWords()); }

// Both replies tell the same of the file.
template <class Words>
ZnSMBClient::Result ZnSMBClient::Opened(Words words) {
  if (!ReadWords(words)) return ResultFailure;
  unsigned access = words.access & 3U;
  if (access == Values::AccessExecute) return Fail(Values::ErrBadValue);
  ZnSMBCFileObject& file = *Operation<ZnSMBOperation::Open>().file;
  file.fid = words.fid;
  file.isopen = true;
  file.access = static_cast<Values::Access>(access);
  file.attribs = words.attribs;
  file.modified = words.last_write_time;
  file.size = words.file_size;
  return ResultSuccess;
}

ZnSMBClient::Result ZnSMBClient::CloseFile(ZnSMBCFileObject* file, const ZnTimeVal& time, Completion* callback) {
  if (!Ready(file->tid)) return ResultFailure;
  Result sent = SendClose(file->fid, time);
  if (sent == ResultSuccess) file->isopen = false;
  return Start(Values::StateClose, sent, callback);
}

ZnSMBClient::Result ZnSMBClient::SendClose(uint16_t fid, const ZnTimeVal& time) {
  ZnSMBCClose_ReqWords words;
  words.fid = fid;
  words.last_write_time = time;
  return SendRequest(Values::CmdClose, words, ZnSMBCNoData());
}

ZnSMBClient::Result ZnSMBClient::FlushFile(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  ZnSMBCFlush_ReqWords words;
  words.fid = file.fid;
  return Start(Values::StateFlush, SendRequest(Values::CmdFlush, words, ZnSMBCNoData()), callback);
}

// ---- names ----------------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::DeleteFile(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  ZnSMBCDelete_ReqWords words;
  words.attribs = HiddenAndSystem();
  const auto data = PathData<ZnSMBCPath_ReqData>(RequestEncoding(), file.path);
  return Start(Values::StateDelete, SendRequest(Values::CmdDelete, words, data), callback);
}

ZnSMBClient::Result ZnSMBClient::RenameFile(const ZnSMBCFileObject& file, const ZnUniString& newName,
                                            Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  ZnSMBCRename_ReqWords words;
  words.attribs = file.attribs;
  words.attribs.hidden = words.attribs.system = true;
  ZnSMBCRename_ReqData data(RequestEncoding());
  data.oldpath = file.path;
  data.newpath = newName;
  return Start(Values::StateRename, SendRequest(Values::CmdRename, words, data), callback);
}

ZnSMBClient::Result ZnSMBClient::MoveFile(const ZnSMBCFileObject& from, const ZnSMBCFileObject& to,
                                          Completion* callback) {
  if (!Ready(from.tid)) return ResultFailure;
  ZnSMBCMove_ReqWords words;
  words.tid2 = to.tid;
  words.openfunction.action = Values::OFFail;
  words.flags = from.attribs.directory;
  ZnSMBCMove_ReqData data(RequestEncoding());
  data.oldpath = from.path;
  data.newpath = to.path;
  return Start(Values::StateMove, SendRequest(Values::CmdMove, words, data), callback);
}

ZnSMBClient::Result ZnSMBClient::MoveReply() {
  ZnSMBCMove_RespWords words;
  return ReadWords(words) ? ResultSuccess : ResultFailure;
}

ZnSMBClient::Result ZnSMBClient::CreateDir(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  const auto data = PathData<ZnSMBCPath_ReqData>(RequestEncoding(), file.path);
  return Start(Values::StateCreateDirectory, SendRequest(Values::CmdCreateDir, ZnSMBCNoWords(), data), callback);
}

ZnSMBClient::Result ZnSMBClient::DeleteDir(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  const auto data = PathData<ZnSMBCPath_ReqData>(RequestEncoding(), file.path);
  return Start(Values::StateDeleteDirectory, SendRequest(Values::CmdDeleteDir, ZnSMBCNoWords(), data), callback);
}

// ---- attributes and times -------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::SetAttributes(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  ZnSMBCSetAttributes_ReqWords words;
  words.attribs = file.attribs;
  const auto data = PathData<ZnSMBCPath_ReqData>(RequestEncoding(), file.path);
  return Start(Values::StateSetAttributes, SendRequest(Values::CmdSetAttributes, words, data), callback);
}

ZnSMBClient::Result ZnSMBClient::SetTimes(const ZnSMBCFileObject& file, Completion* callback) {
  if (!Ready(file.tid)) return ResultFailure;
  ZnSMBCSetTimes_ReqWords words;
  words.fid = file.fid;
  SplitTime(file.created, words.createdate, words.createtime);
  SplitTime(file.accessed, words.accessdate, words.accesstime);
  SplitTime(file.modified, words.moddate, words.modtime);
  return Start(Values::StateSetTimes, SendRequest(Values::CmdSetTimes, words, ZnSMBCNoData()), callback);
}
