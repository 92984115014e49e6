#pragma once
// What the logger consists of. Only for its own files.

#include <memory>
#include <unordered_map>
#include <vector>

#include "runtime/log.h"
#include "runtime/os_stream.h"

// A file that is appended to, by a name in which "%%PID%%" stands for the process number.
class ZnLog::NamedFile {
 public:
  static constexpr char kPid[] = "%%PID%%";

  explicit NamedFile(ZnUniString name) : name_(std::move(name)) {}

  FILE* stream() const { return stream_.get(); }
  bool FollowsProcess() const { return name_.SearchFrom(0, kPid) != ZnUniString::kNotFound; }
  // The path of process `pid`, below the log directory.
  ZnUniString Path(pid_t pid) const;
  // Opens the file of this process, in place of an earlier one. After a failure, which is reported, errno says why and
  // an earlier one stays.
  Result Open();

 private:
  static void FixFileState(FILE* stream);

  ZnUniString name_;
  ZnCFile stream_;
};

// One output: a file, unless one of the flags says otherwise.
struct ZnLog::logfileinfo {
  bool isstderr = false;
  bool issyslog = false;
  bool untilfork = false;
  ZnEncoding encoding = ZnSysEncoding::shell;
  NamedFile file{ZnUniString()};

  FILE* Stream() const { return isstderr ? stderr : file.stream(); }
  void Write(const ZnUniString& text, int priority) const;
  void Flush() const;
};

class ZnLog::JsLogFile {
 public:
  explicit JsLogFile(const ZnUniString& name);

  // The reserved path that stands for the console.
  static ZnUniString GetStdErrStr();

  bool IsStructured() const { return structured_; }
  // Of the path; the console has none.
  NamedFile& file() { return file_; }
  Result Open() { return console_ ? Success : file_.Open(); }
  void Write(const ZnUniString& line) const;

 private:
  bool console_;
  bool structured_;
  NamedFile file_;
};

// The outputs that want one message.
class ZnLog::JsLogAction {
 public:
  void AddLog(JsLogFile* file);
  const std::vector<JsLogFile*>& files() const { return files_; }

 private:
  std::vector<JsLogFile*> files_;  // not owned
};

struct ZnLog::State {
  struct Filter {
    ZnUniString pattern;
    bool status;
  };

  State();
  void SetPid(pid_t pid);
  ZnUniString NameOf(size_t number) const;

  ZnUniString directory;
  pid_t mypid = 0;
  ZnUniString procinfo;
  std::vector<std::unique_ptr<logfileinfo>> outputs;

  bool Filtering = false;
  bool logonnomatch = false;
  std::vector<Filter> filters;
  size_t numlogs = 0;                                  // numbered names
  std::vector<ZnUniString> loglist;                    // the numbered ones first, then those that came up
  std::unordered_map<ZnUniString, size_t> lognumbers;  // their places in loglist
  std::vector<bool> filterbitset;                      // for each name, whether it is on

  std::vector<std::unique_ptr<JsLogFile>> jsfiles;
  std::vector<JsLogAction> jslookup;  // for each numbered name
};
