// Connecting the shares of a server.

#include "smb/client/client_utils.h"
#include "smb/client/password_fields.h"
#include "smb/client/smb_client.h"
#include "smb/wire/session_sections.h"

using Values = ZnSMBClientValues;

ZnSMBClient::Result ZnSMBClient::TreeConnect(ZnSMBCTreeObject* tree, const ZnUniString& password,
                                             Completion* callback) {
  if (!Ready(0)) return ResultFailure;
  storage_ = ZnSMBOperation::TreeConnect{tree};
  bool core = server_.dialect == Values::DialectCORE;
  Result sent = core ? SendTreeConnect(*tree, password) : SendTreeConnectX(*tree, password);
  return Start(Values::StateTreeConnect, sent, callback);
}

// The password travels in clear text: the oldest dialect knows nothing else.
ZnSMBClient::Result ZnSMBClient::SendTreeConnect(const ZnSMBCTreeObject& tree, const ZnUniString& password) {
  ZnSMBCTreeConnect_ReqData data(RequestEncoding());
  if (!ZnSMBClientUtils::EncodeUNC(tree.machine.ShortName(), tree.share, "", data.path)) {
    return Fail(Values::ErrInternal);
  }
  if (Reason refused = ZnSMBRefusalToSend(password, server_, logonrules_)) return Fail(refused);
  data.password = password;
  data.password.MarkSecret();
  data.service = ZnSMBCTreeObject::ServiceString(tree.service);
  return SendRequest(Values::CmdTreeConnect, ZnSMBCNoWords(), data);
}

ZnSMBClient::Result ZnSMBClient::SendTreeConnectX(const ZnSMBCTreeObject& tree, const ZnUniString& password) {
  ZnSMBCTreeConnectX_ReqData data(RequestEncoding());
  if (!ZnSMBClientUtils::EncodeUNC(tree.machine.ShortName(), tree.share, "", data.path)) {
    return Fail(Values::ErrInternal);
  }
  if (server_.dialect == Values::DialectCORE) return Fail(Values::ErrNotSupported);
  if (server_.securitylevel == Values::SecLevelShare) {
    if (Reason refused = ZnSMBRefusalToSend(password, server_, logonrules_)) return Fail(refused);
  }
  data.password = ZnSMBTreePassword(password, server_, logonrules_);
  data.service = ZnSMBCTreeObject::ServiceString(tree.service);
  ZnSMBCTreeConnectX_ReqWords words;
  words.password_length = static_cast<uint16_t>(data.password.Length());
  return SendRequest(Values::CmdTreeConnectX, words, data);
}

ZnSMBClient::Result ZnSMBClient::TreeConnectReply() {
  ZnSMBCTreeConnect_RespWords words;
  if (!ReadWords(words)) return ResultFailure;
  EnterTree(words.tid, *Operation<ZnSMBOperation::TreeConnect>().tree);
  return ResultSuccess;
}

ZnSMBClient::Result ZnSMBClient::TreeConnectXReply() {
  ZnSMBCTreeConnectX_RespWords words(reply_.wordcount);
  ZnSMBCTreeConnectX_RespData data(ReplyEncoding());
  if (!ReadWords(words) || !ReadData(data)) return ResultFailure;
  ZnSMBCTreeObject& tree = *Operation<ZnSMBOperation::TreeConnect>().tree;
  tree.service = ZnSMBCTreeObject::ServiceType(data.service);
  EnterTree(reply_.header.tid, tree);
  return ResultSuccess;
}

void ZnSMBClient::EnterTree(uint16_t tid, ZnSMBCTreeObject& tree) {
  tree.tid = tid;
  trees_.insert({tid, tree});  // an entry that is there stays
}
