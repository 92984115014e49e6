#pragma once
// What haldenctl can be asked to do: a table that the command line and the help are made from.

#include <span>
#include <string>
#include <vector>

#include "nfs_client.h"

struct Request {
  std::vector<std::string> paths;
  bool longform = false;  // ls -l
  unsigned depth = 0;     // tree --depth; 0 is all
};

struct Command {
  const char* name;
  const char* arguments;  // as the help shows them
  size_t least, most;     // of arguments
  const char* summary;
  const char* details;  // behind the options in the command's own help
  Error (*run)(NfsClient& nfs, const Request& request);
};

// `most` of a command that takes any number of paths.
constexpr size_t kAnyNumber = 10000;

std::span<const Command> Commands();

// Shows what went wrong on standard error.
void Complain(const Error& error);

// The commands; arguments are as the table says.

// Showing: commands_show.cpp
Error List(NfsClient& nfs, const Request& request);
Error Tree(NfsClient& nfs, const Request& request);
Error Stat(NfsClient& nfs, const Request& request);
// Whole files: commands_transfer.cpp
Error Cat(NfsClient& nfs, const Request& request);
Error Get(NfsClient& nfs, const Request& request);
Error Put(NfsClient& nfs, const Request& request);
// Changing: commands_change.cpp
Error MakeDirectories(NfsClient& nfs, const Request& request);
Error Remove(NfsClient& nfs, const Request& request);
Error RemoveDirectories(NfsClient& nfs, const Request& request);
Error Move(NfsClient& nfs, const Request& request);
Error Link(NfsClient& nfs, const Request& request);

// Does something for each path, telling of those it fails for. The last failure is the result, told already: it has
// the text kTold.
inline constexpr char kTold[] = "told";
template <class Do>
Error ForEach(const std::vector<std::string>& paths, Do act) {
  Error result;
  for (const std::string& path : paths) {
    Error error = act(path);
    if (!error) continue;
    Complain(error);
    result = error;
    result.text = kTold;
    if (error.code != kFailed) break;  // no daemon, or interrupted: no use to go on
  }
  return result;
}
