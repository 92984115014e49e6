// cat, get and put.

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>

#include "commands.h"
#include "local_file.h"
#include "nfs_error.h"
#include "progress.h"

namespace {

constexpr uint32_t kOwnerReadsAndWrites = 0600;
constexpr int kMostTries = 10;  // to find a temporary name that is free

Error CheckReadable(const RemoteFile& file) {
  if (file.IsDirectory()) return NfsError(ZnNFSEnum::NFSERR_ISDIR, file.path);
  if (file.attributes.size > NfsClient::kLargestFile)
    return {.text = file.path + ": larger than 2147483647 bytes, which is beyond NFS version 2"};
  return {};
}

std::string BaseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool IsLocalDirectory(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A name that every share accepts which accepts the target's: at most eight letters and digits, in its case.
std::string TemporaryName(const std::string& target) {
  static std::random_device random;
  const bool upper = std::none_of(target.begin(), target.end(), [](char c) { return c >= 'a' && c <= 'z'; });
  char name[16];
  snprintf(name, sizeof name, "%s%05u", upper ? "PUT" : "put", random() % 100000U);
  return name;
}

Error CreateTemporary(NfsClient& nfs, const RemoteFile& directory, const std::string& target, uint32_t mode,
                      std::string& name, RemoteFile& file) {
  for (int i = 0; i < kMostTries; i++) {
    name = TemporaryName(target);
    Error error = nfs.Lookup(directory, name, file);
    if (!error) continue;
    if (error.status != ZnNFSEnum::NFSERR_NOENT) return error;
    error = nfs.Create(directory, name, mode | kOwnerReadsAndWrites, file);
    if (error) nfs.Remove(directory, name);  // it may have been made before something else was refused
    return error;
  }
  return {.text = directory.path + ": no temporary name is free; remove the old put files in it"};
}

Error Fill(NfsClient& nfs, const LocalSource& local, RemoteFile& file, const std::string& shownname) {
  Progress progress(shownname, local.Size());
  const auto give = [&](const NfsClient::Piece& piece, ZnByteBuffer& data) {
    progress.Add(piece.count);
    return local.Read(piece.offset, piece.count, data);
  };
  if (Error error = nfs.Write(file, static_cast<uint32_t>(local.Size()), give)) return error;
  if (Error error = nfs.Refresh(file)) return error;
  if (file.attributes.size == local.Size()) return {};
  return {.text = file.path + ": " + std::to_string(file.attributes.size) + " bytes arrived of " +
                  std::to_string(local.Size())};
}

// A refused rename leaves nothing behind, unless what had the name has gone: then the temporary file is all there is.
Error TakePlace(NfsClient& nfs, const RemoteFile& directory, const std::string& temporary, const std::string& name,
                bool replaces) {
  Error error = nfs.Rename(directory, temporary, directory, name);
  if (!error) return {};
  RemoteFile old;
  if (replaces && nfs.Lookup(directory, name, old)) {
    error.text += ". All the data is in " + JoinPath(directory.path, temporary);
    return error;
  }
  nfs.Remove(directory, temporary);
  return error;
}

// Where `put` goes: into a directory under the local name, otherwise to the path itself.
Error FindTarget(NfsClient& nfs, const Request& request, RemoteFile& directory, std::string& name) {
  RemoteFile file;
  Error error = nfs.Resolve(request.paths[1], true, file);
  if (!error && file.IsDirectory()) {
    directory = file;
    name = BaseName(request.paths[0]);
    return {};
  }
  if (error && error.status == ZnNFSEnum::NFS_OK) return error;
  return nfs.ResolveParent(request.paths[1], directory, name);
}

}  // namespace

Error Cat(NfsClient& nfs, const Request& request) {
  return ForEach(request.paths, [&](const std::string& path) {
    RemoteFile file;
    if (Error error = nfs.Resolve(path, true, file)) return error;
    if (Error error = CheckReadable(file)) return error;
    std::map<uint32_t, ZnByteBuffer> early;  // came before what stands in front of it
    uint32_t written = 0;
    return nfs.Read(file, [&](uint32_t offset, const ZnByteBuffer& data) {
      early.emplace(offset, data);
      for (auto next = early.begin(); next != early.end() && next->first == written; next = early.erase(next)) {
        const size_t length = next->second.Length();
        if (fwrite(next->second.Data(), 1, length, stdout) != length)
          return Error{.text = std::string("standard output: ") + strerror(errno)};
        written += static_cast<uint32_t>(length);
      }
      return Error{};
    });
  });
}

Error Get(NfsClient& nfs, const Request& request) {
  std::string localpath = request.paths.size() > 1 ? request.paths[1] : ".";
  RemoteFile file;
  LocalTarget local;
  if (Error error = nfs.Resolve(request.paths[0], true, file)) return error;
  if (Error error = CheckReadable(file)) return error;
  if (IsLocalDirectory(localpath)) localpath = JoinPath(localpath, BaseName(request.paths[0]));
  if (Error error = local.Open(localpath)) return error;
  Progress progress(BaseName(localpath), file.attributes.size);
  const auto take = [&](uint32_t offset, const ZnByteBuffer& data) {
    progress.Add(data.Length());
    return local.Write(offset, data);
  };
  if (Error error = nfs.Read(file, take)) return error;
  return local.Finish();
}

Error Put(NfsClient& nfs, const Request& request) {
  LocalSource local;
  RemoteFile directory, file;
  std::string name, temporary;
  if (Error error = local.Open(request.paths[0])) return error;
  if (local.Size() > NfsClient::kLargestFile)
    return {.text = request.paths[0] + ": larger than 2147483647 bytes, which is beyond NFS version 2"};
  if (Error error = FindTarget(nfs, request, directory, name)) return error;
  const bool replaces = !nfs.Lookup(directory, name, file);
  if (replaces && file.IsDirectory()) return NfsError(ZnNFSEnum::NFSERR_ISDIR, file.path);
  if (Error error = CreateTemporary(nfs, directory, name, local.Mode(), temporary, file)) return error;
  if (Error error = Fill(nfs, local, file, name)) {
    nfs.Remove(directory, temporary);
    return error;
  }
  return TakePlace(nfs, directory, temporary, name, replaces);
}
