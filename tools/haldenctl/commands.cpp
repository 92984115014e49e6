#include "commands.h"

#include <cstdio>

#include "text.h"

std::span<const Command> Commands() {
  static constexpr Command kCommands[] = {
      {"ls", "[PATH...]", 0, kAnyNumber, "list directories, or name files",
       "Names are sorted by their bytes. Without a PATH the root is listed, whose directories are the users.", List},
      {"tree", "[PATH...]", 0, kAnyNumber, "show directories with all that is below them",
       "Listing a machine or a share connects to it. Links aren't followed.", Tree},
      {"stat", "PATH...", 1, kAnyNumber, "show the attributes of files", "A link's own attributes are shown.", Stat},
      {"cat", "PATH...", 1, kAnyNumber, "write files to standard output", "", Cat},
      {"get", "PATH [LOCAL]", 1, 2, "copy a file from the daemon to a local file or directory",
       "LOCAL is the working directory if left out. The data goes to a temporary file beside the target, which takes "
       "the "
       "target's place when all of it is there.",
       Get},
      {"put", "LOCAL PATH", 2, 2, "copy a local file to the daemon",
       "PATH may be a directory. The data goes to a temporary file (put and five digits) beside the target, which "
       "takes "
       "the target's place when all of it is there.",
       Put},
      {"mkdir", "PATH...", 1, kAnyNumber, "make directories", "", MakeDirectories},
      {"rm", "PATH...", 1, kAnyNumber, "remove files and links", "Directories are removed by rmdir.", Remove},
      {"rmdir", "PATH...", 1, kAnyNumber, "remove empty directories", "", RemoveDirectories},
      {"mv", "FROM TO", 2, 2, "rename or move a file or directory",
       "If TO is a directory, FROM moves into it. Nothing moves from one machine to another.", Move},
      {"ln", "TARGET PATH", 2, 2, "make a symbolic link at PATH that leads to TARGET",
       "TARGET is stored as it is given: a path seen from the directory of the link. There are no hard links.", Link},
  };
  return kCommands;
}

void Complain(const Error& error) {
  fflush(stdout);
  fprintf(stderr, "haldenctl: %s\n", Text::Printable(error.text).c_str());
}
