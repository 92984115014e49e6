// haldenmapd <profile> <log dir>: the life of the daemon, in order.

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/smbnfs_config.h"
#include "core/fork_gate.h"
#include "core/server.h"
#include "model/log_catalogue.h"
#include "rpc/xdr.h"
#include "runtime/poll_event_loop.h"
#include "runtime/sys_encoding.h"
#include "runtime/unix_process.h"
#include "runtime/user_database.h"

namespace {

enum ExitCode {
  kStopped = 0,
  kCannotStart = 1,
  kNoSecurity = 2
};  // others: a fatal signal's number, or the loop's code

MyLogger mylog;

// --- Steps of the start ---

[[noreturn]] void WrongArguments(const char* program) {
  fprintf(stderr, "%s: %s\n", program, "Wrong number of arguments provided");
  fprintf(stderr, "%s\n", "Usage: haldenmapd <profile> <log dir>");
  exit(kCannotStart);
}

void IgnoreSignals() {
  for (const int number : {SIGHUP, SIGPIPE, SIGTTOU, SIGTTIN, SIGTSTP, SIGXFSZ}) signal(number, SIG_IGN);
}

ZnUniString FromShell(const char* argument) {
  return ZnUniString::CreateFrom(argument, strlen(argument), ZnSysEncoding::shell, ZnSysEncoding::shellopt);
}

void OpenLog(const char* program, const char* name, bool withpid, bool untilfork) {
  if (ZnLog::AddLogFile(name, withpid, untilfork, ZnSysEncoding::shell) == ZnLog::Success) return;
  fprintf(stderr, "%s: no log: %s\n", program, strerror(errno));
  exit(kCannotStart);
}

void NameProcessInLog() { ZnLog::SetProcInfo("cl" + ZnUniString::CreateFromUnsigned(static_cast<uint64_t>(getpid()))); }

// `error` is empty for success.
void ExitUnlessInitialised(const ZnUniString& error) {
  if (error.IsEmpty()) return;
  Log007(error);
  exit(kCannotStart);
}

// `error` is empty for success.
void ExitUnlessStarted(const ZnUniString& error) {
  if (error.IsEmpty()) return;
  Log010(error);
  exit(kCannotStart);
}

// Gives the parent's place to a child, which goes on from here. A daemon that can't fork goes on in the foreground.
void Fork(ZnForkGate& gate) {
  ZnLog::AboutToFork();
  if (fork() <= 0) return;
  ZnLog::Flush();
  exit(gate.AwaitChild() ? kStopped : kCannotStart);
}

// --- The end ---

// Leaves the loop and all that hangs on it alive: what is in flight is abandoned, not ended.
[[noreturn]] void Stop(int code) {
  if (code == kStopped) {
    ZnSMBNFSConfig::CleanUp();
    Log003();
  } else {
    Log006(code);
  }
  ZnLog::Flush();
  ZnLog::RemoveHaldenEmptyErrorLogFile("cl", "", ".log", getpid());
  exit(code);
}

}  // namespace

int main(int argc, char** argv) {
  const char* const program = argc > 0 ? argv[0] : "haldenmapd";
  if (argc != 3) WrongArguments(program);
  IgnoreSignals();
  ZnUnixProcess::AllowCoreDumps(false);  // until the profile, with its passwords, is read
  const ZnUniString profile = FromShell(argv[1]);
  const ZnUniString logdir = FromShell(argv[2]);

  // Until there is a daemon, whoever starts it sees on standard error what the log gets.
  ZnLog::InitLogs(&mylog, logdir);
  OpenLog(program, "clerr", false, true);
  OpenLog(program, "<stderr>", false, true);
  NameProcessInLog();

  ExitUnlessInitialised(ZnSMBNFSConfig::Initialise(profile, "", "", false));
  for (const ZnUniString& warning : ZnSMBNFSConfig::Warnings()) Log407(warning);
  ZnSMBNFSServerConfig config;
  ExitUnlessInitialised(ZnSMBNFSConfig::LoadServer(config));
  ZnUnixProcess::AllowCoreDumps(config.coredumps);
  ZnRPCString::rpcenc = config.rpcencoding;
  tzset();
  if (!ZnUserGroupDatabase::InitialiseSecurity()) {
    Log008();
    exit(kNoSecurity);
  }
  ZnUserCache::InitialiseCache(config.usercachemode);
  fclose(stdin);

  ZnUnixProcess process;
  the_current_process = &process;
  ZnEventLoop loop(&process);
  ZnSMBNFSServer server(&process, &loop, config);
  ExitUnlessStarted(server.error());

  ZnForkGate gate;
  Fork(gate);
  ZnLog::HaveForked();
  OpenLog(program, "cl", true, false);
  NameProcessInLog();
  setsid();
  Log001();
  gate.Open();
  Stop(loop.EnterEventLoop());
}
