#pragma once
// Logging on: session setups, from the strongest form of a password down to the weakest that is allowed, or with tokens
// in as many rounds as they take; and what comes of it, the user's id and the key that signs messages.

#include <optional>

#include "smb/client/logon_ladder.h"
#include "smb/client/ntlmssp.h"
#include "smb/client/wire_operation.h"

class ZnSmbLogonOperation : public ZnSmbWireOperation {
 protected:
  ZnSmbLogonOperation(ZnSmbConversation& conversation, const ZnUniString& user, const ZnUniString& password,
                      ZnSmbDone done);

  // After negotiate. LoggedOn is called if the server lets us in; else the operation ends.
  bool LogOn();
  virtual bool LoggedOn() = 0;
  bool Accepted(const ZnSMBCDecode& reply, const Part& part) override;

 private:
  bool IsRefusal(const ZnSMBCHeader& reply) const override;
  bool Refused(const Part& part) override;
  bool SendSessionSetup();
  bool SendFields();
  bool FieldsAnswered(const ZnSMBCDecode& reply);
  bool SendToken(const ZnPacket& token);
  bool TokenAnswered(const ZnSMBCDecode& reply);
  bool AnswerChallenge(uint16_t uid, const ZnPacket& challenge);
  template <class Words>
  void SetLimits(Words& words) const;
  bool LetIn(const ZnSMBCDecode& reply, bool guest, const ZnUniString& nativeOs);
  Reason StartSigning(const ZnSMBCDecode& reply);

  ZnSmbCredentials who_;
  std::optional<ZnSmbLogonLadder> ladder_;
  std::optional<ZnNtlmssp> tokens_;
  bool answered_ = false;  // the challenge of the tokens
  ZnByteBuffer key_;       // to sign with
};
