// mkdir, rm, rmdir, mv and ln.

#include "commands.h"
#include "nfs_error.h"

Error MakeDirectories(NfsClient& nfs, const Request& request) {
  return ForEach(request.paths, [&](const std::string& path) {
    RemoteFile directory;
    std::string name;
    if (Error error = nfs.ResolveParent(path, directory, name)) return error;
    return nfs.Mkdir(directory, name);
  });
}

Error Remove(NfsClient& nfs, const Request& request) {
  return ForEach(request.paths, [&](const std::string& path) {
    RemoteFile directory, file;
    std::string name;
    if (Error error = nfs.ResolveParent(path, directory, name)) return error;
    if (Error error = nfs.Lookup(directory, name, file)) return error;
    if (file.IsDirectory()) return Error{.text = path + ": is a directory; rmdir removes it if it is empty"};
    return nfs.Remove(directory, name);
  });
}

Error RemoveDirectories(NfsClient& nfs, const Request& request) {
  return ForEach(request.paths, [&](const std::string& path) {
    RemoteFile directory;
    std::string name;
    if (Error error = nfs.ResolveParent(path, directory, name)) return error;
    return nfs.Rmdir(directory, name);
  });
}

Error Move(NfsClient& nfs, const Request& request) {
  RemoteFile from, to, target;
  std::string name, newname;
  if (Error error = nfs.ResolveParent(request.paths[0], from, name)) return error;
  if (!nfs.Resolve(request.paths[1], true, target) && target.IsDirectory()) {
    to = target;
    newname = name;
  } else if (Error error = nfs.ResolveParent(request.paths[1], to, newname)) {
    return error;
  }
  // A rename onto itself would remove the file first.
  if (from.handle == to.handle && name == newname) return {.text = request.paths[0] + ": that is its name already"};
  return nfs.Rename(from, name, to, newname);
}

Error Link(NfsClient& nfs, const Request& request) {
  RemoteFile directory;
  std::string name;
  if (Error error = nfs.ResolveParent(request.paths[1], directory, name)) return error;
  return nfs.Symlink(directory, name, request.paths[0]);
}
