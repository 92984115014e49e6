#pragma once
// Transactions: one request, and a reply that may come in several messages.

#include "smb/client/wire_operation.h"
#include "smb/wire/trans2_sections.h"

class ZnSmbTransaction : public ZnSmbWireOperation {
 protected:
  using ZnSmbWireOperation::ZnSmbWireOperation;

  // A reply, collected from as many messages as the server sends it in.
  struct Parts {
    ZnByteBuffer params;
    ZnByteBuffer data;
  };

  // Bytes of data that a reply may bring, as the request asks for it. A server that announces more isn't listened to.
  static constexpr uint16_t kUsualData = 16384;

  bool AskTrans2(const ZnSMBCTrans2_ReqParams& params, const ZnByteBuffer& data, uint16_t mostData = kUsualData);
  // All of a reply is there.
  virtual bool Collected(const Parts& parts, const ZnSMBCHeader& reply) = 0;
  // What a reply other than of a transaction brings, where the operation asks in another way too.
  virtual bool AcceptedOther(const ZnSMBCDecode&) { return End(Values::ErrRead); }

 private:
  bool Accepted(const ZnSMBCDecode& reply, const Part& part) override;

  Parts collected_;
  uint16_t mostdata_ = 0;
};

// Sets something about a file; the reply tells nothing but that it was done.
class ZnSmbSettingOperation : public ZnSmbTransaction {
 public:
  ZnSmbSettingOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSmbDone done,
                        const ZnSMBCTrans2_ReqParams& params, const ZnByteBuffer& info)
      : ZnSmbTransaction(conversation, caller, tid, std::move(done)), command_(params.command) {
    AskTrans2(params, info);
  }

 private:
  bool Collected(const Parts& parts, const ZnSMBCHeader&) override {
    ZnSMBCTrans2_RespParams params(command_);
    return End(params.Read(parts.params) ? Values::ErrNone : Values::ErrRead);
  }

  Values::Trans2Command command_;
};
