// haldenctl: the daemon's file system on the command line, where nothing is mounted.

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "commands.h"
#include "password.h"
#include "text.h"

namespace {

constexpr uint16_t kDefaultPort = 4242;
constexpr unsigned kDefaultTimeout = 60;
// "haldenfs" and zeros.
constexpr char kDefaultRoot[] = "68616c64656e6673";

constexpr char kAbout[] =
    "The file system of haldenmapd on the command line, where nothing is mounted.\n\n"
    "A PATH begins at the daemon's root: /USER/MACHINE/SHARE/directory/file.";

constexpr char kNotes[] =
    R"(Calls carry the user and group of the caller, and go to the daemon on this host.

The root's handle: the daemon takes the handle of the first call that it gets after its start for its root's. That is
the mount's where there is one: give its 32 bytes with --root-handle. Otherwise leave it out, and the default is it.

Names: bytes pass through as they are. That fits a terminal of UTF-8 if the daemon's profile has
[nfsserver/server/encoding/rpc={(UTF-8)}]. Without that line the daemon takes and gives ISO-8859-1: use
--encoding ISO-8859-1 then, in a terminal of UTF-8, and names with other characters can't be reached.

Exit codes: 0 done, 1 refused or failed (the reason is on standard error), 2 wrong use, 3 no daemon answers,
130 interrupted.

Examples:
  haldenctl tree --depth 3
  haldenctl get /fred/pc1/docs/report.doc
  haldenctl put report.doc /fred/pc1/docs/
  echo 'secret' | haldenctl encode-password fred)";

constexpr char kEncodePassword[] = "encode-password";
constexpr char kAboutPasswords[] =
    R"(The password is read from the terminal without echo, or else from the first line of standard input. It is encoded
for that user only, and only so that it isn't read by chance: whoever has this program can decode it, so keep the
profile from others' eyes.)";

struct Options {
  uint16_t port = kDefaultPort;
  unsigned timeout = kDefaultTimeout;
  std::string root = kDefaultRoot;
  std::string encoding;
  Request request;
  std::string user;  // of encode-password
};

// Help with the arguments as the table words them.
class Help : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override {
    for (const Command& command : Commands())
      if (app->get_name() == command.name)
        return "Usage: haldenctl [OPTIONS] " + std::string(command.name) + " " + command.arguments + "\n";
    return CLI::Formatter::make_usage(app, std::move(name));
  }
  std::string make_positionals(const CLI::App*) const override { return ""; }
};

int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool ParseHandle(const std::string& digits, ZnNFSFileHandle& handle) {
  if (digits.empty() || digits.size() % 2 != 0 || digits.size() > 2 * ZnNFSFileHandle::kSize) return false;
  for (size_t i = 0; i < digits.size(); i += 2) {
    const int high = DigitValue(digits[i]), low = DigitValue(digits[i + 1]);
    if (high < 0 || low < 0) return false;
    handle.bytes[i / 2] = static_cast<uint8_t>(high << 4 | low);
  }
  return true;
}

Error Run(const Command& command, const Options& options) {
  ZnNFSFileHandle root;
  NfsClient nfs;
  if (!ParseHandle(options.root, root))
    return {.text = "--root-handle takes up to 64 hexadecimal digits, two a byte", .code = kUsage};
  if (!options.encoding.empty() && !Text::UseEncoding(options.encoding))
    return {.text = "--encoding: no encoding is called " + options.encoding + " (UTF-8, ISO-8859-1, CP850, ...)",
            .code = kUsage};
  if (Error error = nfs.Open(options.port, options.timeout, root)) return error;
  return command.run(nfs, options.request);
}

void DescribeOptions(CLI::App& app, Options& options) {
  app.add_option("--port", options.port, "UDP port of the daemon (nfsserver/mount/port of its profile)")
      ->check(CLI::Range(1, 65535))
      ->capture_default_str();
  app.add_option("--root-handle", options.root, "the root's handle in hexadecimal; zeros follow what is left out")
      ->type_name("HEX")
      ->capture_default_str();
  app.add_option("--encoding", options.encoding, "encoding of names on the daemon's side; the terminal's is UTF-8 then")
      ->type_name("NAME");
  app.add_option("--timeout", options.timeout, "how long to wait for an answer")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
}

void DescribeCommand(CLI::App& app, const Command& command, Options& options) {
  CLI::App* described = app.add_subcommand(command.name, command.summary);
  described->footer(command.details);
  described->add_option("PATH", options.request.paths)
      ->expected(static_cast<int>(command.least), static_cast<int>(command.most))
      ->required(command.least > 0);
}

void DescribeAll(CLI::App& app, Options& options) {
  app.formatter(std::make_shared<Help>());
  app.footer(kNotes);
  app.require_subcommand(1);
  app.fallthrough();
  DescribeOptions(app, options);
  for (const Command& command : Commands()) DescribeCommand(app, command, options);
  app.get_subcommand("ls")->add_flag("-l", options.request.longform, "with mode, size and time");
  app.get_subcommand("tree")->add_option("--depth", options.request.depth, "levels to show; all if left out");
  CLI::App* encode = app.add_subcommand(kEncodePassword, "print a password in the form that a profile holds");
  encode->add_option("USER", options.user, "the name below nfsserver/shares/smb/ whose password it is")->required();
  encode->footer(kAboutPasswords);
}

Error RunChosen(const CLI::App& app, const Options& options) {
  for (const Command& command : Commands())
    if (app.got_subcommand(command.name)) return Run(command, options);
  return EncodePassword(options.user);
}

// CLI11 throws, and for misuse of itself too.
ExitCode Main(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kAbout, "haldenctl");
  DescribeAll(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  Error error = RunChosen(app, options);
  if (fflush(stdout) != 0 && !error) error.text = std::string("standard output: ") + strerror(errno);
  if (error && error.text != kTold) Complain(error);
  return error ? error.code : kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Main(argc, argv);
  } catch (const std::exception& error) {
    fprintf(stderr, "haldenctl: %s\n", error.what());
    return kFailed;
  }
}
