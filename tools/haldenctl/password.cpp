#include "password.h"

#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "config/smbnfs_config.h"

namespace {

// Standard input without echo, from the construction to the end, which an interrupt only brings on.
class NoEcho {
 public:
  NoEcho() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};  // reading ends, as the call isn't restarted
    for (const int number : {SIGINT, SIGTERM}) sigaction(number, &action, nullptr);
    if (tcgetattr(STDIN_FILENO, &before_) != 0) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    changed_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
  }
  NoEcho(const NoEcho&) = delete;
  NoEcho& operator=(const NoEcho&) = delete;
  ~NoEcho() {
    if (changed_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }

 private:
  termios before_ = {};
  bool changed_ = false;
};

// One line of standard input without its end. False at the end of input.
bool ReadLine(std::string& line) {
  line.clear();
  int c = 0;
  while ((c = getchar()) != EOF && c != '\n') line.push_back(static_cast<char>(c));
  return c != EOF || !line.empty();
}

// Standard output is for the result, so that it can be caught.
bool Prompt(const char* text, std::string& line) {
  fputs(text, stderr);
  const bool read = ReadLine(line);
  fputs("\n", stderr);
  return read;
}

Error ReadPassword(std::string& password) {
  if (isatty(STDIN_FILENO) == 0)
    return ReadLine(password) ? Error{} : Error{.text = "no password came on standard input"};
  const NoEcho silence;
  std::string again;
  if (!Prompt("Password: ", password) || !Prompt("Once more: ", again)) return {.text = "no password was typed"};
  return password == again ? Error{} : Error{.text = "the two differ"};
}

}  // namespace

Error EncodePassword(const std::string& user) {
  std::string password;
  if (Error error = ReadPassword(password)) return error;
  if (!ZnUniString::IsValid(ZnByteBuffer(password.data(), password.size()), ZnCodeset::Utf8))
    return {.text = "the password isn't UTF-8"};
  ZnUniString stored = password;
  const ZnUniString refusal = ZnSMBNFSConfig::EncryptString(stored, user);
  if (!refusal.IsEmpty()) return {.text = refusal.AsUtf8()};
  puts(stored.AsUtf8().c_str());
  return {};
}
