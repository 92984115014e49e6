// ls, tree and stat.

#include <grp.h>
#include <langinfo.h>
#include <pwd.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "commands.h"
#include "text.h"

namespace {

const std::vector<std::string>& PathsOrRoot(const Request& request) {
  static const std::vector<std::string> root = {"/"};
  return request.paths.empty() ? root : request.paths;
}

std::string Name(const RemoteFile& file) { return Text::Printable(file.path.substr(file.path.rfind('/') + 1)); }

std::string ModeText(const ZnNFSFattr& attributes) {
  std::string text = "?rwxrwxrwx";
  text[0] = attributes.type == ZnNFSEnum::NFDIR ? 'd' : attributes.type == ZnNFSEnum::NFLNK ? 'l' : '-';
  for (size_t bit = 0; bit < 9; bit++)
    if ((attributes.mode & 0400U >> bit) == 0) text[bit + 1] = '-';
  return text;
}

std::string TimeText(const ZnNFSTimeVal& time) {
  const time_t seconds = time.seconds;
  tm local = {};
  char text[32] = "";
  if (localtime_r(&seconds, &local)) strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

// " -> target" for a link whose target can be read.
std::string Arrow(NfsClient& nfs, const RemoteFile& file) {
  std::string target;
  if (!file.IsLink() || nfs.Readlink(file, target)) return "";
  return " -> " + Text::Printable(target);
}

void ShowName(const std::string& name) { puts(Text::Printable(name).c_str()); }

void ShowFile(NfsClient& nfs, const RemoteFile& file, const std::string& name) {
  printf("%s %10u %s %s%s\n", ModeText(file.attributes).c_str(), file.attributes.size,
         TimeText(file.attributes.mtime).c_str(), name.c_str(), Arrow(nfs, file).c_str());
}

// Names alone need no look-ups.
Error ShowNames(NfsClient& nfs, const RemoteFile& directory) {
  std::vector<std::string> names;
  if (Error error = nfs.ListNames(directory, names)) return error;
  for (const std::string& name : names) ShowName(name);
  return {};
}

Error ShowFiles(NfsClient& nfs, const RemoteFile& directory) {
  std::vector<RemoteFile> files;
  if (Error error = nfs.List(directory, files)) return error;
  for (const RemoteFile& file : files) ShowFile(nfs, file, Name(file));
  return {};
}

// --- tree ---

struct Branches {
  const char* entry;
  const char* last;
  const char* through;  // in front of what is below an entry
  const char* behind;   // in front of what is below the last one
};

const Branches& BranchesOfTerminal() {
  static constexpr Branches kLines = {"├── ", "└── ", "│   ", "    "};
  static constexpr Branches kAscii = {"|-- ", "`-- ", "|   ", "    "};
  setlocale(LC_CTYPE, "");
  return strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? kLines : kAscii;
}

struct Count {
  size_t directories = 0;
  size_t files = 0;
};

Error ShowBelow(NfsClient& nfs, const RemoteFile& directory, const std::string& indent, unsigned depth, Count& count) {
  static const Branches& branches = BranchesOfTerminal();
  std::vector<RemoteFile> files;
  if (Error error = nfs.List(directory, files)) return error;
  for (const RemoteFile& file : files) {
    const bool last = &file == &files.back();
    printf("%s%s%s%s\n", indent.c_str(), last ? branches.last : branches.entry, Name(file).c_str(),
           Arrow(nfs, file).c_str());
    (file.IsDirectory() ? count.directories : count.files)++;
    if (!file.IsDirectory() || depth == 1) continue;
    const std::string below = indent + (last ? branches.behind : branches.through);
    if (Error error = ShowBelow(nfs, file, below, depth == 0 ? 0 : depth - 1, count)) return error;
  }
  return {};
}

// --- stat ---

std::string OwnerText(uint32_t uid) {
  const passwd* user = getpwuid(uid);
  return std::to_string(uid) + (user ? std::string(" (") + user->pw_name + ")" : "");
}

std::string GroupText(uint32_t gid) {
  const group* found = getgrgid(gid);
  return std::to_string(gid) + (found ? std::string(" (") + found->gr_name + ")" : "");
}

std::string HandleText(const ZnNFSFileHandle& handle) {
  std::string text;
  char digits[4];
  for (const uint8_t byte : handle.bytes) {
    snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

const char* TypeText(ZnNFSEnum::FileType type) {
  switch (type) {
    case ZnNFSEnum::NFREG:
      return "file";
    case ZnNFSEnum::NFDIR:
      return "directory";
    case ZnNFSEnum::NFLNK:
      return "symbolic link";
    default:
      return "other";
  }
}

}  // namespace

Error List(NfsClient& nfs, const Request& request) {
  return ForEach(PathsOrRoot(request), [&](const std::string& path) {
    RemoteFile file;
    if (Error error = nfs.Resolve(path, !request.longform, file)) return error;
    if (!file.IsDirectory()) {
      request.longform ? ShowFile(nfs, file, Text::Printable(path)) : ShowName(path);
      return Error{};
    }
    if (request.paths.size() > 1) printf("%s:\n", Text::Printable(path).c_str());
    return request.longform ? ShowFiles(nfs, file) : ShowNames(nfs, file);
  });
}

Error Tree(NfsClient& nfs, const Request& request) {
  return ForEach(PathsOrRoot(request), [&](const std::string& path) {
    RemoteFile file;
    Count count;
    if (Error error = nfs.Resolve(path, true, file)) return error;
    puts(Text::Printable(path).c_str());
    if (file.IsDirectory())
      if (Error error = ShowBelow(nfs, file, "", request.depth, count)) return error;
    printf("\n%zu %s, %zu %s\n", count.directories, count.directories == 1 ? "directory" : "directories", count.files,
           count.files == 1 ? "file" : "files");
    return Error{};
  });
}

Error Stat(NfsClient& nfs, const Request& request) {
  return ForEach(request.paths, [&](const std::string& path) {
    RemoteFile file;
    if (Error error = nfs.Resolve(path, false, file)) return error;
    const ZnNFSFattr& attributes = file.attributes;
    printf("%s%s\n", Text::Printable(path).c_str(), Arrow(nfs, file).c_str());
    printf("  type      %s\n", TypeText(attributes.type));
    printf("  mode      %s (%04o)\n", ModeText(attributes).c_str(), attributes.mode & 07777U);
    printf("  size      %u bytes, %u blocks\n", attributes.size, attributes.blocks);
    printf("  owner     %s\n", OwnerText(attributes.uid).c_str());
    printf("  group     %s\n", GroupText(attributes.gid).c_str());
    printf("  read      %s\n", TimeText(attributes.atime).c_str());
    printf("  written   %s\n", TimeText(attributes.mtime).c_str());
    printf("  created   %s\n", TimeText(attributes.ctime).c_str());
    printf("  file id   %u\n", attributes.fileid);
    printf("  handle    %s\n", HandleText(file.handle).c_str());
    return Error{};
  });
}
