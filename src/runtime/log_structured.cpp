#include <syslog.h>
#include <unistd.h>

#include <algorithm>

#include "runtime/log_state.h"
#include "runtime/wildcard_match.h"

// --- Outputs ---

ZnUniString ZnLog::JsLogFile::GetStdErrStr() { return ".../_beans/halden.server.log.ConsoleSink"; }

ZnLog::JsLogFile::JsLogFile(const ZnUniString& name)
    : console_(name == GetStdErrStr()), structured_(ZnWildcardMatch("*.jsl", name)), file_(name) {}

void ZnLog::JsLogFile::Write(const ZnUniString& line) const {
  FILE* const stream = console_ ? stderr : file_.stream();
  if (!stream) return;
  const ZnByteBuffer bytes = line.AsEncoding(shell, shellopt);
  fwrite(bytes.Data(), 1, bytes.Length(), stream);
  fflush(stream);
}

void ZnLog::JsLogAction::AddLog(JsLogFile* file) {
  if (std::find(files_.begin(), files_.end(), file) == files_.end()) files_.push_back(file);
}

// --- Filters ---

namespace {

bool PartsMatch(const ZnDList<ZnUniString>& patterns, const ZnUniString& name) {
  const ZnDList<ZnUniString> parts = name.Split(u'/');
  return parts.Count() == 3 &&
         std::equal(patterns.begin(), patterns.end(), parts.begin(),
                    [](const ZnUniString& pattern, const ZnUniString& part) { return ZnWildcardMatch(pattern, part); });
}

}  // namespace

void ZnLog::SetupJSFilters(const ZnDList<ZnUniString>& list) {
  State& log = state();
  log.jslookup.clear();
  log.jsfiles.clear();
  std::unordered_map<ZnUniString, JsLogFile*> files;
  for (const ZnUniString& entry : list) {
    const ZnDList<ZnUniString> halves = entry.Split(u':');
    if (halves.Count() != 2) continue;
    const ZnDList<ZnUniString> patterns = halves[0].Split(u'/');
    const ZnUniString& destination = halves[1];
    if (patterns.Count() != 3) continue;
    if (destination != JsLogFile::GetStdErrStr() && ZnWildcardMatch(".../*", destination)) continue;

    JsLogFile*& file = files[destination];
    if (!file) {
      log.jsfiles.push_back(std::make_unique<JsLogFile>(destination));
      file = log.jsfiles.back().get();
      file->Open();
    }
    log.jslookup.resize(log.numlogs);
    for (size_t number = 0; number < log.numlogs; number++) {
      if (PartsMatch(patterns, log.loglist[number])) log.jslookup[number].AddLog(file);
    }
  }
}

bool ZnLog::JsGen(size_t number) {
  const State& log = state();
  return number < log.jslookup.size() && !log.jslookup[number].files().empty();
}

// --- Lines ---

ZnUniString ZnLog::State::NameOf(size_t number) const { return number < numlogs ? loglist[number] : ZnUniString(); }

namespace {

struct Message {
  ZnTimeVal time;
  pid_t pid;
  size_t number;
  ZnUniString name;
  ZnUniString text;
};

ZnUniString PlainForm(const Message& message) {
  ZnOSStream line;
  line << message.time << "\t (pid " << message.pid << ")\t" << message.name << "\t#" << message.number
       << "\tHalden((legacy))\n"
       << message.text << "\n";
  return line.text();
}

// Reads back by the four replacements in reverse.
ZnUniString Escaped(ZnUniString text) {
  text.Substitute("%", "%25");
  text.Substitute("\n", "%0a");
  text.Substitute(",", "%2c");
  text.Substitute("=", "%3d");
  return text;
}

ZnUniString StructuredForm(const Message& message) {
  ZnOSStream line;
  line << "category=" << message.name << ",date=" << message.time << ",pid=" << message.pid
       << ",systime=" << message.time.seconds << ",message=" << Escaped(message.text) << "\n";
  return line.text();
}

}  // namespace

void ZnLog::JserverLog(size_t number, const ZnUniString& text) {
  const Message message{ZnTimeVal::now(), getpid(), number, state().NameOf(number), text};
  if (Gen(number)) Log(PlainForm(message));
  if (!JsGen(number)) return;
  for (const JsLogFile* const file : state().jslookup[number].files()) {
    file->Write(file->IsStructured() ? StructuredForm(message) : PlainForm(message));
  }
}
