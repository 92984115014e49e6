#pragma once
// The process as its host sees it: the signals that it catches, and the user in whose name it
// acts.

#include <sys/types.h>

#include <array>
#include <csignal>
#include <vector>

#include "runtime/event_loop.h"
#include "runtime/unix_error.h"

class ZnUnixUser;

class ZnProcess {
 public:
  ZnProcess() = default;
  ZnProcess(const ZnProcess&) = delete;
  ZnProcess& operator=(const ZnProcess&) = delete;
  virtual ~ZnProcess() = default;

  // From here on signal `number` is kept, whether a loop runs or not, and `callback` is called from the next
  // ProcessSignals; one signal may have several callbacks, called in the order of their registration. Not owned; must
  // outlive the process object. Gives true.
  virtual bool CatchSignal(int number, ZnEventCallback* callback) = 0;
  // Dispatches the signals that came since the last call, lowest number first, each number once. 1 if there was any,
  // else 0.
  virtual int ProcessSignals() = 0;
  // Is readable while a signal waits for ProcessSignals; -1 if the host has no descriptor left. For poll only.
  virtual int WakeDescriptor() = 0;

  // Take on the effective user, group and supplementary groups of a user; process-wide, so the caller goes back by
  // BecomeRoot before it returns to the event loop. False if the user doesn't exist or the host refuses: UidError then
  // tells why, and the identity may stand between the two until the next BecomeRoot. `user` loses those of its groups
  // that are too many for the host.
  virtual bool BecomeUser(ZnUnixUser& user) = 0;
  virtual bool BecomeRoot() = 0;
  // The user "nobody", or "nouser" where there is none.
  virtual bool BecomeNobody() = 0;
  virtual const ZnUnixError& UidError() const = 0;
};

// The handler only notes the number and writes a byte into a pipe that the event loop polls along with its descriptors:
// a signal that comes between the look at the caught ones and poll thus ends that poll instead of waiting for the next
// event. The pipe is made when the loop first asks for it: one made before the fork would be shared with the parent,
// whose signals would keep a loop awake that finds none.
class ZnUnixProcess : public ZnProcess {
 public:
  ZnUnixProcess();
  ~ZnUnixProcess() override;

  bool CatchSignal(int number, ZnEventCallback* callback) override;
  int ProcessSignals() override;
  int WakeDescriptor() override;

  bool BecomeUser(ZnUnixUser& user) override;
  bool BecomeRoot() override;
  bool BecomeNobody() override;
  const ZnUnixError& UidError() const override { return uid_error_; }

  // Whether the host may keep an image of this process's memory, passwords included, when it comes to a bad end, and
  // let others of its user look into it. Holds over changes of identity and for children; no is what holds from the
  // first call, or change of identity, on.
  static void AllowCoreDumps(bool allow);
  // Where a fault of the program itself is noted besides standard error; -1 for nowhere. The current log's descriptor.
  static void SetFaultLog(int fd);

 protected:
  // The system calls of an identity change; 0, or -1 with errno.
  virtual int SetEffectiveUid(uid_t uid);
  virtual int SetEffectiveGid(gid_t gid);
  virtual int SetGroups(const std::vector<gid_t>& groups);

 private:
  struct ZnEventSignal {
    ZnEventCallback* callback;
    int number;
  };
  static constexpr int kSignals = 65;  // Linux numbers its signals from 1 to 64

  static void had_a_signal(int number, siginfo_t* info, void* context);
  static void Install(int number);
  void NoteSignal(int number);
  void OpenWakePipe();
  void Wake();

  bool ChangeUid(uid_t uid);
  bool ChangeGid(gid_t gid);
  bool FixGroups(ZnUnixUser& user);
  // The host gives up what AllowCoreDumps has set whenever the identity changes.
  static void KeepCoreDumps();
  // Record what failed; give false.
  bool UserLookupFailed(const ZnUniString& names);
  bool SetUidError(const char* call, const ZnUniString& argument);

  static bool core_dumps;

  std::vector<ZnEventSignal> signals_;
  std::array<volatile sig_atomic_t, kSignals> caught_{};
  volatile sig_atomic_t caught_count_ = 0;
  int wake_read_ = -1;
  int wake_write_ = -1;

  uid_t effective_uid_;  // as last set
  gid_t effective_gid_;
  bool identity_failed_ = false;  // the two above can't be relied on
  ZnUnixError uid_error_;
};

// The one object that signals are noted in: a handler has no other way to reach it.
extern ZnUnixProcess* the_current_process;
