// Connecting the shares of a server.

#include "smb/client/tree_connect.h"
#include "smb/client/wire_operation.h"

using Values = ZnSMBClientValues;

ZnUniString ZnSmbPathOf(const ZnSMBCTreeObject& tree) {
  const bool named = !tree.machine.ShortName().IsEmpty() && !tree.share.IsEmpty();
  return named ? tree.UNCShare() : ZnUniString();
}

ZnSmbTreeConnect::ZnSmbTreeConnect(const ZnSmbConversation& conversation, const ZnSMBCTreeObject& tree,
                                   const ZnUniString& password)
    : data(conversation.RequestEncoding()) {
  const ZnSMBServerInfo& server = conversation.server;
  const ZnSMBLogonRules& rules = conversation.settings().rules;
  data.path = ZnSmbPathOf(tree);
  if (server.securitylevel == Values::SecLevelShare) reason = ZnSMBRefusalToSend(password, server, rules);
  if (data.path.IsEmpty()) reason = Values::ErrInternal;
  if (reason != Values::ErrNone) return;
  data.password = ZnSMBTreePassword(password, server, rules);
  data.service = ZnSMBCTreeObject::ServiceString(tree.service);
  words.password_length = static_cast<uint16_t>(data.password.Length());
}

bool ZnSmbReadTreeConnect(const ZnSmbConversation& conversation, const ZnSMBCDecode& reply, ZnSMBCTreeObject& tree) {
  ZnSMBCTreeConnectX_RespWords words(reply.wordcount);
  ZnSMBCTreeConnectX_RespData data(conversation.ReplyEncoding(reply.header));
  if (!reply.ReadWords(words) || !reply.ReadData(data)) return false;
  tree.service = ZnSMBCTreeObject::ServiceType(data.service);
  tree.tid = reply.header.tid;
  return true;
}

namespace {

class TreeOperation : public ZnSmbWireOperation {
 public:
  TreeOperation(ZnSmbConversation& conversation, ZnSMBCTreeObject* tree, const ZnUniString& password, ZnSmbDone done)
      : ZnSmbWireOperation(conversation, 0, 0, std::move(done)), tree_(tree) {
    conversation.IsCore() ? AskCore(password) : AskX(password);
  }

 private:
  void AskX(const ZnUniString& password) {
    const ZnSmbTreeConnect request(*conversation(), *tree_, password);
    if (request.reason != Values::ErrNone) {
      EndSoon(request.reason);
    } else {
      Ask(Values::CmdTreeConnectX, request.words, request.data);
    }
  }

  // The password travels in clear text: the oldest dialect knows nothing else.
  void AskCore(const ZnUniString& password) {
    ZnSMBCTreeConnect_ReqData data(conversation()->RequestEncoding());
    data.path = ZnSmbPathOf(*tree_);
    if (data.path.IsEmpty()) EndSoon(Values::ErrInternal);
    const Reason refused = ZnSMBRefusalToSend(password, conversation()->server, conversation()->settings().rules);
    if (refused != Values::ErrNone) EndSoon(refused);
    data.password = password;
    data.password.MarkSecret();
    data.service = ZnSMBCTreeObject::ServiceString(tree_->service);
    Ask(Values::CmdTreeConnect, ZnSMBCNoWords(), data);
  }

  bool Accepted(const ZnSMBCDecode& reply, const Part&) override {
    ZnSMBCTreeObject connected = *tree_;
    ZnSMBCTreeConnect_RespWords words;
    if (!conversation()->IsCore()) {
      if (!ZnSmbReadTreeConnect(*conversation(), reply, connected)) return End(Values::ErrRead);
    } else if (reply.ReadWords(words)) {
      connected.tid = words.tid;
    } else {
      return End(Values::ErrRead);
    }
    *tree_ = connected;
    conversation()->EnterTree(connected);
    return End();
  }

  ZnSMBCTreeObject* tree_;
};

}  // namespace

ZnSmbCall ZnSmbClient::TreeConnect(ZnSMBCTreeObject* tree, const ZnUniString& password, ZnSmbDone done) {
  return std::make_unique<TreeOperation>(*conversation_, tree, password, std::move(done));
}
