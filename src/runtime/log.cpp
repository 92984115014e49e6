#include "runtime/log.h"

#include <syslog.h>
#include <unistd.h>

#include "runtime/log_state.h"

ZnLog* ZnLog::the_logger = nullptr;

ZnLog::State& ZnLog::state() {
  static State state;
  return state;
}

ZnLog::State::State() { SetPid(getpid()); }

void ZnLog::State::SetPid(pid_t pid) {
  mypid = pid;
  procinfo = "(pid " + ZnUniString::CreateFromUnsigned(static_cast<uint64_t>(pid)) + ")";
}

void ZnLog::InitLogs(ZnLog* logger, const ZnUniString& directory) {
  the_logger = logger;
  state().directory = directory;
}

void ZnLog::SetProcInfo(const ZnUniString& text) { state().procinfo = text; }

const ZnUniString& ZnLog::ProcInfo() { return state().procinfo; }

void ZnLog::WriteToAll(const ZnUniString& text, int priority, bool onstderr) {
  for (const auto& output : state().outputs) {
    if (onstderr || !output->isstderr) output->Write(text, priority);
  }
}

void ZnLog::Log(const ZnUniString& text) { WriteToAll(text, LOG_INFO, true); }

void ZnLog::Error(const ZnUniString& text) {
  WriteToAll(text, LOG_ERR, true);
  Flush();
}
