#pragma once
// The conversation with a machine: its address, the connection and the logon, which are fetched once while all who need
// them wait. And machines that can't be reached: only the first call waits for that to turn out; from then on calls
// fail at once, and the conversation itself tries again until it stands.

#include "config/machine_config.h"
#include "model/upward.h"
#include "runtime/timer.h"
#include "session/address_finder.h"
#include "session/reports.h"
#include "session/wait_list.h"
#include "smb/client/client.h"

class ZnConversation {
 public:
  // Why the last attempt to begin one failed, for all who waited for it.
  struct Failure {
    ZnSMBNFSEnum::SessionStatus step = ZnSMBNFSEnum::SSTConnect;
    ZnUniString text;
    ZnSmbOutcome outcome;
    bool told = false;  // one of them has told the user
  };

  // All of these outlive the conversation. `over` is called when a connection has ended, however.
  ZnConversation(ZnSMBNFSSessionHost* host, const ZnSMBNFSMachineConfig& config, ZnSmbClient& client,
                 ZnSessionReports& reports, ZnWakeups& wakeups, std::function<void()> over);

  bool Stands() const { return client_.IsConnected(); }
  // A machine that is known not to answer: who asks now is refused.
  bool FailsAtOnce();
  // A server that hung up while nothing was asked is noticed.
  void LookWhetherItStands();
  // Waits until a conversation stands, or failed to come about: failure() says why. Begins one if need be.
  ZnWaitPlace Enter(ZnSmbDone done);
  Failure& failure() { return failure_; }

  // The connection has ended by itself.
  void Lost(ZnSMBClientValues::Reason reason);
  // Ends it, and what is under way for a new one with it.
  void End();
  // Nobody has an interest any more: a machine that can't be reached is forgotten to be that.
  void Flush();

  // Known while it stands, and afterwards of the last.
  unsigned serverclass() const { return serverclass_; }
  int32_t timeoffset() const { return timeoffset_; }

 private:
  void Try();
  void AddressFound(bool found);
  void Connect();
  void Connected(const ZnSmbOutcome& told);
  void Fails(ZnSMBNFSEnum::SessionStatus step, const ZnUniString& text, const ZnSmbOutcome& outcome);
  void ApplySettings();
  ZnUniString CallingName() const;
  void NotReached();
  void Lives();
  void ProbeCB(ZnEventCallback*, ZnEvent::cbdispatch);

  const ZnSMBNFSMachineConfig& config_;
  ZnSmbClient& client_;
  ZnSessionReports& reports_;
  std::function<void()> over_;
  ZnAddressFinder finder_;
  ZnWaitList waiting_;
  ZnSmbCall connecting_;
  bool trying_ = false;
  Failure failure_;
  unsigned serverclass_ = 0;
  int32_t timeoffset_ = 0;

  bool unreachable_ = false;  // calls fail at once, and probes find out when it is over
  bool suspect_ = false;      // a request wasn't answered in time
  ZnMoment attempt_;          // when the last attempt to reach the machine began
  ZnMoment lastrefused_;      // when a call last failed at once
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnConversation> probecallback_{this, &ZnConversation::ProbeCB};
  ZnTimer probetimer_;
};
