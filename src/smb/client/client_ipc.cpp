// Questions to the server itself: transactions of the LANMAN remote API on the "IPC$" tree.

#include "smb/client/client_error.h"
#include "smb/client/lanman_text.h"
#include "smb/client/smb_client.h"
#include "smb/wire/lanman_sections.h"

using Values = ZnSMBClientValues;

namespace {

// How each question is put: the descriptors tell the server the layout of its parameters, and of the records to send
// back.
struct Question {
  Values::LanmanIPC api;
  const char* params;
  const char* records;
  uint16_t level;
  uint16_t buffer;  // bytes of records that may come back
};

constexpr Question kShares = {Values::IPCNetShareEnum, "WrLeh", "B13BWz", 1, 4096};
constexpr Question kSharesLong = {Values::IPCNetShareEnum, "WrLeh", "B128BWz", 1, 4096};
constexpr Question kServers = {Values::IPCNetServerEnum, "WrLehDz", "B16BBDz", 1, 4096};
constexpr Question kServersLong = {Values::IPCNetServerEnum, "WrLehDz", "B16BBDDz", 100, 4096};
constexpr Question kUser = {Values::IPCNetUserGetInfo, "zWrLh", "B21BzzzWDDzzDDWWzWzDWb21W", 11, 4096};
constexpr Question kTime = {Values::IPCNetRemoteTOD, "rL", "DDBBBBWWBBWB", 0, 21};

const Question& ShareQuestion(bool longNames) { return longNames ? kSharesLong : kShares; }
const Question& ServerQuestion(bool longNames) { return longNames ? kServersLong : kServers; }

ZnSMBCLanman_ReqParams ParamsOf(const Question& question, ZnEncoding encoding) {
  ZnSMBCLanman_ReqParams params(question.api, encoding);
  params.reqparams_enc = question.params;
  params.respdata_enc = question.records;
  params.level = question.level;
  params.receive_buffer = question.buffer;
  return params;
}

}  // namespace

bool ZnSMBClient::ReadyForIPC() { return ipctree_ ? Ready(ipctree_->tid) : Refuse(Values::ErrNotConnected); }

ZnSMBClient::Result ZnSMBClient::SendLanman(const ZnSMBCLanman_ReqParams& params) {
  return SendTrans(pipelanman, ZnByteBuffer(), params.Pack(), ZnSMBCLanman_ReqData(params.api).Pack());
}

// Collects the reply and reads its status.
ZnSMBClient::Result ZnSMBClient::RecvLanman(ZnSMBCLanman_RespParams& params) {
  Result result = RecvTransWithoutSetup();
  if (result != ResultSuccess) return result;
  if (!params.Read(collected_.params)) return Fail(Values::ErrRead);
  ipcstatus_ = params.status;
  return ResultSuccess;
}

// A text that a record points to; false, with the reason kept, when it leads nowhere.
bool ZnSMBClient::LanmanText(ZnUniString& text, uint32_t pointer, const ZnSMBCLanman_RespParams& params) {
  return ZnDecodeLanmanString(text, collected_.data, pointer, params.converter, encoding_) || Refuse(Values::ErrRead);
}

// ---- shares ---------------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::ListShares(ZnDList<ZnSMBCShareObject>* list, Completion* callback, bool longNames) {
  if (!ReadyForIPC()) return ResultFailure;
  storage_ = ZnSMBOperation::Shares{list, longNames};
  return Start(Values::StateListShares, SendLanman(ParamsOf(ShareQuestion(longNames), encoding_)), callback);
}

ZnSMBClient::Result ZnSMBClient::ListSharesReply() {
  ZnSMBCLanman_RespParams params(Values::IPCNetShareEnum);
  Result result = RecvLanman(params);
  if (result != ResultSuccess) return result;
  // What didn't fit isn't worth a failure: the entries that came are good.
  if (ipcstatus_ != ZnSMBClientError::NERRSuccess && ipcstatus_ != ZnSMBClientError::NERRMoreData) {
    return Fail(Values::ErrIPC);
  }
  const auto& shares = Operation<ZnSMBOperation::Shares>();
  ZnSMBCLanman_RespData data(params.api, params.entries, params.converter, ShareQuestion(shares.longNames).records);
  if (!data.Read(collected_.data)) return Fail(Values::ErrRead);
  for (const auto& record : data.shares) {
    ZnSMBCShareObject share(ipctree_->machine, ZnDecodeLanmanName(record.name, encoding_),
                            static_cast<Values::Service>(record.type));
    if (!LanmanText(share.remark, record.remark, params)) return ResultFailure;
    shares.list->Append(share);
  }
  return ResultSuccess;
}

// ---- servers --------------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::ListServers(const ZnUniString& domain, ZnDList<ZnSMBCServerObject>* list,
                                             uint32_t type, bool longNames, Completion* callback) {
  if (!ReadyForIPC()) return ResultFailure;
  ZnUniString upper = domain;
  upper.UpperCase();
  storage_ = ZnSMBOperation::Servers{list, upper, type, longNames};
  return Start(Values::StateListServers, SendListServers(), callback);
}

ZnSMBClient::Result ZnSMBClient::SendListServers() {
  const auto& servers = Operation<ZnSMBOperation::Servers>();
  ZnSMBCLanman_ReqParams params = ParamsOf(ServerQuestion(servers.longNames), encoding_);
  params.server_type = servers.type;
  params.domain = servers.domain;
  return SendLanman(params);
}

ZnSMBClient::Result ZnSMBClient::ListServersReply() {
  ZnSMBCLanman_RespParams params(Values::IPCNetServerEnum);
  Result result = RecvLanman(params);
  if (result != ResultSuccess) return result;
  auto& servers = Operation<ZnSMBOperation::Servers>();
  bool levelUnknown =
      ipcstatus_ == ZnSMBClientError::NERRNotSupported || ipcstatus_ == ZnSMBClientError::NERRInvalidLevel;
  if (servers.longNames && levelUnknown) {
    servers.longNames = false;
    return Sent(SendListServers());
  }
  if (ipcstatus_ != ZnSMBClientError::NERRSuccess) return Fail(Values::ErrIPC);
  ZnSMBCLanman_RespData data(params.api, params.entries, params.converter, ServerQuestion(servers.longNames).records);
  if (!data.Read(collected_.data)) return Fail(Values::ErrRead);
  for (const auto& record : data.servers) {
    ZnSMBCServerObject server;
    server.name = ZnDecodeLanmanName(record.name, encoding_);
    server.major = record.major;
    server.minor = record.minor;
    server.type = record.type;
    if (!LanmanText(server.comment, record.comment, params)) return ResultFailure;
    servers.list->Append(server);
  }
  return ResultSuccess;
}

// ---- a user ---------------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::GetUserInfo(ZnSMBCUserObject* user, Completion* callback) {
  if (!ReadyForIPC()) return ResultFailure;
  storage_ = ZnSMBOperation::User{user};
  ZnSMBCLanman_ReqParams params = ParamsOf(kUser, encoding_);
  params.user_name = user->name;
  return Start(Values::StateUserInfo, SendLanman(params), callback);
}

ZnSMBClient::Result ZnSMBClient::UserInfoReply() {
  ZnSMBCLanman_RespParams params(Values::IPCNetUserGetInfo);
  Result result = RecvLanman(params);
  if (result != ResultSuccess) return result;
  if (ipcstatus_ != ZnSMBClientError::NERRSuccess) return Fail(Values::ErrIPC);
  ZnSMBCLanman_RespData data(params.api, 1, params.converter, kUser.records);
  if (!data.Read(collected_.data)) return Fail(Values::ErrRead);

  const ZnSMBCLanman_USERINFO& record = data.users[0];
  ZnSMBCUserObject user;
  user.name = ZnDecodeLanmanName(record.name, encoding_);
  user.privilege = static_cast<Values::Privilege>(record.privilege);
  user.authflags = record.operator_rights;
  user.passwordage = record.password_age;
  user.lastlogon = record.last_logon;
  user.lastlogoff = record.last_logoff;
  user.badpasswords = record.bad_passwords;
  user.logons = record.logons;
  user.countrycode = record.country_code;
  user.codepage = record.code_page;
  user.maxstorage = record.max_storage;
  bool texts = LanmanText(user.comment, record.comment_at, params) &&
               LanmanText(user.usercomment, record.user_comment_at, params) &&
               LanmanText(user.fullname, record.full_name_at, params) &&
               LanmanText(user.homedir, record.home_directory_at, params) &&
               LanmanText(user.logonserver, record.logon_server_at, params) &&
               LanmanText(user.workstations, record.workstations_at, params);
  if (!texts) return ResultFailure;
  *Operation<ZnSMBOperation::User>().user = user;
  return ResultSuccess;
}

// ---- the clock ------------------------------------------------------------------------------------------------------

ZnSMBClient::Result ZnSMBClient::GetServerTime(ZnSMBCTimeObject* time, Completion* callback) {
  if (!ReadyForIPC()) return ResultFailure;
  storage_ = ZnSMBOperation::Clock{time};
  return Start(Values::StateTime, SendLanman(ParamsOf(kTime, encoding_)), callback);
}

ZnSMBClient::Result ZnSMBClient::ServerTimeReply() {
  ZnSMBCLanman_RespParams params(Values::IPCNetRemoteTOD);
  Result result = RecvLanman(params);
  if (result != ResultSuccess) return result;
  if (ipcstatus_ != ZnSMBClientError::NERRSuccess) return Fail(Values::ErrIPC);
  ZnSMBCLanman_RespData data(params.api, 1, params.converter, kTime.records);
  if (!data.Read(collected_.data)) return Fail(Values::ErrRead);

  const ZnSMBCLanman_TOD& record = data.times[0];
  ZnSMBCTimeObject& time = *Operation<ZnSMBOperation::Clock>().time;
  time.time = record.seconds_since_1970;
  time.uptime = record.uptime;
  time.hours = record.hours;
  time.minutes = record.minutes;
  time.seconds = record.seconds;
  time.hundredths = record.hundredths;
  time.timezone = static_cast<int16_t>(record.time_zone);
  time.interval = record.clock_interval;
  time.day = record.day;
  time.month = record.month;
  time.year = record.year;
  time.weekday = record.weekday;
  return ResultSuccess;
}
