#pragma once
// The process-wide logger. A message has a name of three parts, component/subsystem/severity, and a list of filters
// decides once for each name whether it is written. A ready line goes to every destination: files, standard error,
// syslog. Numbered messages also have a structured form for files that ask for it. Files may carry the process number
// in their names; they follow a fork. What can't be written is lost: nothing waits for a log.

#include <sys/types.h>

#include "runtime/list.h"
#include "runtime/sys_encoding.h"
#include "runtime/uni_string.h"

class ZnLog : public ZnSysEncoding {
 public:
  enum Result { Success, Failure };

  ZnLog() = default;
  ZnLog(const ZnLog&) = delete;
  ZnLog& operator=(const ZnLog&) = delete;
  // The names of the numbered messages, each "a/b/c", in the order of the numbers from 0, ended by a null pointer.
  virtual const char* const* MessageStrings() const = 0;
  virtual ~ZnLog() = default;

  static ZnLog* the_logger;

  // `logger` becomes the logger; not owned. Log files are below `directory`, unless their names begin with "/".
  static void InitLogs(ZnLog* logger, const ZnUniString& directory);
  // Back to the state before InitLogs.
  static void CleanUp();

  // --- Destinations (log_outputs.cpp) ---

  // Adds a destination: "<stderr>", "<syslog>", or the file `name`, with `withpid` the process number, and ".log". Text
  // is written in `encoding`. One with `untilfork` serves only until a file without it is added. A file that can't be
  // opened is reported on standard error and in the log; then Failure, and errno says why.
  static Result AddLogFile(const ZnUniString& name, bool withpid, bool untilfork, ZnEncoding encoding);
  // Adds the file of `directory` and `prefix`, the process number, and `suffix`.
  static Result AddHaldenLogFile(const ZnUniString& directory, const ZnUniString& prefix, const ZnUniString& suffix,
                                 ZnEncoding encoding);
  // Removes that file of the process `pid` if it is empty. Failure if it isn't there.
  static Result RemoveHaldenEmptyErrorLogFile(const ZnUniString& directory, const ZnUniString& prefix,
                                              const ZnUniString& suffix, pid_t pid);
  static void Flush();
  // Opens all files again by their names, after these have been given to others. Failure if one couldn't be opened: it
  // goes on where it was.
  static Result ReOpen();
  // To be called around fork; HaveForked in the child, where files with the process number in their names are opened
  // anew, and ProcInfo is set anew.
  static void AboutToFork();
  static void HaveForked();

  // How the process is named in a line: "(pid 123)" until it is set.
  static void SetProcInfo(const ZnUniString& text);
  static const ZnUniString& ProcInfo();

  // --- Filters (log_filters.cpp) ---

  // Installs patterns for names: "*" and "?" are wildcards, case is ignored, the first that matches counts. One that
  // ends in ":0" turns off what it matches. Names that none matches are on or off by `onnomatch`. `table` stands in for
  // MessageStrings.
  static void SetupFilters(const ZnDList<ZnUniString>& list, bool onnomatch, const char* const* table = nullptr);
  // Whether a message is to be written. All are, before SetupFilters.
  static bool Gen(size_t number);
  static bool Gen(const ZnUniString& a, const ZnUniString& b, const ZnUniString& c);

  // --- Lines (log.cpp) ---

  static constexpr char kFieldSeparator[] = "\t";
  static constexpr char kLineEnd[] = "\n";

  // Write a ready text, with its line end, to all destinations. Error also flushes them.
  static void Log(const ZnUniString& text);
  static void Error(const ZnUniString& text);

  // --- Structured outputs (log_structured.cpp) ---

  // Each entry is "a/b/c:destination": patterns for the three parts, and a file or GetStdErrStr. Others are passed
  // over, and so are destinations below "...". "%%PID%%" in a destination is the process number. Files "*.jsl" get the
  // structured form, others the plain one.
  static void SetupJSFilters(const ZnDList<ZnUniString>& list);
  // Whether such an output wants the message.
  static bool JsGen(size_t number);
  // Writes a numbered message: in the plain form to all destinations if it is on, and to the outputs that want it.
  static void JserverLog(size_t number, const ZnUniString& text);

  class JsLogFile;

 private:
  // log_state.h has these.
  class NamedFile;
  struct logfileinfo;
  class JsLogAction;
  struct State;
  static State& state();

  static Result AddFile(const ZnUniString& name, bool untilfork, ZnEncoding encoding);
  static Result openerror(const ZnUniString& name);
  static void WriteToAll(const ZnUniString& text, int priority, bool onstderr);
  static bool FilterMessage(const ZnUniString& name);
  static void ProcessFilters(const ZnDList<ZnUniString>& list, const char* const* table);
};
