#include "nfs_client.h"

#include <algorithm>
#include <deque>

#include "nfs_error.h"
#include "text.h"

namespace {

constexpr int kMostLinks = 40;            // in one path
constexpr size_t kMostEntries = 4000000;  // a listing that never ends isn't read for ever
constexpr uint32_t kFilePermissions = 07777;

std::deque<std::string> Names(const std::string& path) {
  std::deque<std::string> names;
  for (size_t start = 0; start <= path.size();) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::string name = path.substr(start, end - start);
    if (!name.empty() && name != ".") names.push_back(name);
    start = end + 1;
  }
  return names;
}

// Attributes to set that leave all as it is.
ZnNFSSattr NothingToSet() {
  using ZnNFSEnum::kUnchanged;
  ZnNFSSattr attributes;
  attributes.mode = attributes.uid = attributes.gid = attributes.size = kUnchanged;
  attributes.atime.seconds = attributes.atime.useconds = kUnchanged;
  attributes.mtime.seconds = attributes.mtime.useconds = kUnchanged;
  return attributes;
}

// Takes results apart. `path` is what the call was about.
template <class Results>
Error Unpack(const ZnPacket& packed, const std::string& path, Results& results) {
  if (!results.Read(packed)) return {.text = path + ": the daemon's answer isn't well formed"};
  return NfsError(results.status, path);
}

Error MakeDiropargs(const RemoteFile& directory, const std::string& name, ZnNFSDiropargs& arguments) {
  arguments.dir = directory.handle;
  if (Text::FromHost(name, arguments.name)) return {};
  return {.text = JoinPath(directory.path, name) + ": the name has characters that the chosen encoding can't hold"};
}

void TakeDiropres(const ZnNFSDiropres& results, const std::string& path, RemoteFile& file) {
  file.path = path;
  file.handle = results.file;
  file.attributes = results.attributes;
}

std::vector<NfsClient::Piece> Pieces(uint32_t size) {
  std::vector<NfsClient::Piece> pieces;
  for (uint32_t offset = 0; offset < size; offset += ZnNFSEnum::kMaxData)
    pieces.push_back({offset, std::min(size - offset, ZnNFSEnum::kMaxData)});
  return pieces;
}

}  // namespace

std::string JoinPath(const std::string& directory, const std::string& name) {
  return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

Error NfsClient::Open(uint16_t port, unsigned timeout, const ZnNFSFileHandle& root) {
  root_.path = "/";
  root_.handle = root;
  if (Error error = rpc_.Open(port, timeout)) return error;
  Error error = Refresh(root_);
  if (error.status != ZnNFSEnum::NFSERR_STALE) return error;
  error.text =
      "the daemon's root has another handle, that of a mount or of whoever called first: give it with --root-handle";
  return error;
}

// --- Paths ---

Error NfsClient::Resolve(const std::string& path, bool follow, RemoteFile& file) {
  file = root_;
  std::deque<std::string> names = Names(path);
  for (int links = 0; !names.empty();) {
    const std::string name = names.front();
    names.pop_front();
    RemoteFile next;
    if (Error error = Lookup(file, name, next)) return error;
    if (!next.IsLink() || (names.empty() && !follow)) {
      file = next;
      continue;
    }
    std::string target;
    if (Error error = Readlink(next, target)) return error;
    if (target.starts_with('/'))
      return {.text = next.path + ": the link leads out of the daemon's file system, to " + target};
    if (++links > kMostLinks) return {.text = path + ": too many links in each other"};
    const std::deque<std::string> detour = Names(target);
    names.insert(names.begin(), detour.begin(), detour.end());
  }
  return {};
}

Error NfsClient::ResolveParent(const std::string& path, RemoteFile& directory, std::string& name) {
  const std::string trimmed = path.substr(0, path.find_last_not_of('/') + 1);
  const size_t slash = trimmed.rfind('/');
  name = slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
  if (name.empty() || name == "." || name == "..")
    return {.text = "'" + path + "': a path that ends with a name is needed here"};
  if (Error error = Resolve(slash == std::string::npos ? "" : trimmed.substr(0, slash), true, directory)) return error;
  return directory.IsDirectory() ? Error{} : NfsError(ZnNFSEnum::NFSERR_NOTDIR, directory.path);
}

Error NfsClient::Lookup(const RemoteFile& directory, const std::string& name, RemoteFile& file) {
  const std::string path = JoinPath(directory.path, name);
  ZnNFSDiropargs arguments;
  ZnPacket packed;
  ZnNFSDiropres results;
  if (!directory.IsDirectory()) return NfsError(ZnNFSEnum::NFSERR_NOTDIR, directory.path);
  if (Error error = MakeDiropargs(directory, name, arguments)) return error;
  if (Error error = rpc_.Call(NfsProcedure::Lookup, arguments.Pack(), packed)) return error;
  if (Error error = Unpack(packed, path, results)) return error;
  TakeDiropres(results, path, file);
  return {};
}

Error NfsClient::Refresh(RemoteFile& file) {
  ZnPacket packed;
  ZnNFSAttrstat results;
  if (Error error = rpc_.Call(NfsProcedure::Getattr, file.handle.Pack(), packed)) return error;
  if (Error error = Unpack(packed, file.path, results)) return error;
  file.attributes = results.attributes;
  return {};
}

Error NfsClient::Readlink(const RemoteFile& link, std::string& target) {
  ZnPacket packed;
  ZnNFSReadlinkres results;
  if (Error error = rpc_.Call(NfsProcedure::Readlink, link.handle.Pack(), packed)) return error;
  if (Error error = Unpack(packed, link.path, results)) return error;
  target = Text::ToHost(results.data);
  return {};
}

// --- Listings ---

Error NfsClient::ListNames(const RemoteFile& directory, std::vector<std::string>& names) {
  ZnNFSReaddirargs arguments;
  arguments.dir = directory.handle;
  arguments.count = ZnNFSEnum::kMaxData;
  ZnNFSReaddirres page;
  for (page.eof = false; !page.eof;) {
    ZnPacket packed;
    if (Error error = rpc_.Call(NfsProcedure::Readdir, arguments.Pack(), packed)) return error;
    if (Error error = Unpack(packed, directory.path, page)) return error;
    for (const ZnNFSDirEntry& entry : page.entries) {
      if (entry.name != "." && entry.name != "..") names.push_back(Text::ToHost(entry.name));
      arguments.cookie = entry.cookie;
    }
    if ((page.entries.IsEmpty() && !page.eof) || names.size() > kMostEntries)
      return {.text = directory.path + ": the listing doesn't come to an end"};
  }
  std::sort(names.begin(), names.end());
  return {};
}

Error NfsClient::List(const RemoteFile& directory, std::vector<RemoteFile>& files) {
  std::vector<std::string> names;
  if (Error error = ListNames(directory, names)) return error;
  files.assign(names.size(), {});
  const auto make = [&](size_t i, ZnPacket& packed) {
    ZnNFSDiropargs arguments;
    Error error = MakeDiropargs(directory, names[i], arguments);
    packed = arguments.Pack();
    return error;
  };
  const auto take = [&](size_t i, const ZnPacket& packed) {
    ZnNFSDiropres results;
    const std::string path = JoinPath(directory.path, names[i]);
    Error error = Unpack(packed, path, results);
    if (error.status == ZnNFSEnum::NFSERR_NOENT) return Error{};  // it went since it was listed
    TakeDiropres(results, path, files[i]);
    return error;
  };
  if (Error error = rpc_.CallMany(NfsProcedure::Lookup, names.size(), make, take)) return error;
  std::erase_if(files, [](const RemoteFile& file) { return file.path.empty(); });
  return {};
}

// --- Contents ---

Error NfsClient::Read(const RemoteFile& file, const TakeData& take) {
  std::vector<Piece> pieces = Pieces(file.attributes.size);
  while (!pieces.empty()) {
    std::vector<Piece> rest;  // of replies that were shorter than asked for
    const auto make = [&](size_t i, ZnPacket& packed) {
      ZnNFSReadargs arguments;
      arguments.file = file.handle;
      arguments.offset = pieces[i].offset;
      arguments.count = arguments.totalcount = pieces[i].count;
      packed = arguments.Pack();
      return Error{};
    };
    const auto takeresults = [&](size_t i, const ZnPacket& packed) {
      ZnNFSReadres results;
      if (Error error = Unpack(packed, file.path, results)) return error;
      const auto got = static_cast<uint32_t>(results.data.Length());
      if (got == 0) return Error{.text = file.path + ": the file became shorter while it was read"};
      if (got > pieces[i].count) return Error{.text = file.path + ": the daemon's answer isn't well formed"};
      if (got < pieces[i].count) rest.push_back({pieces[i].offset + got, pieces[i].count - got});
      return take(pieces[i].offset, results.data);
    };
    if (Error error = rpc_.CallMany(NfsProcedure::Read, pieces.size(), make, takeresults)) return error;
    pieces = std::move(rest);
  }
  return {};
}

Error NfsClient::Write(const RemoteFile& file, uint32_t size, const GiveData& give) {
  const std::vector<Piece> pieces = Pieces(size);
  const auto make = [&](size_t i, ZnPacket& packed) {
    ZnNFSWriteargs arguments;
    arguments.file = file.handle;
    arguments.beginoffset = arguments.offset = pieces[i].offset;
    arguments.totalcount = pieces[i].count;
    Error error = give(pieces[i], arguments.data);
    packed = arguments.Pack();
    return error;
  };
  const auto take = [&](size_t, const ZnPacket& packed) {
    ZnNFSAttrstat results;
    return Unpack(packed, file.path, results);
  };
  return rpc_.CallMany(NfsProcedure::Write, pieces.size(), make, take);
}

// --- Changes ---

template <class Args>
Error NfsClient::Change(NfsProcedure procedure, const Args& arguments, const std::string& path) {
  ZnPacket packed;
  ZnNFSStat results;  // what may stand behind the status isn't needed
  if (Error error = rpc_.Call(procedure, arguments.Pack(), packed)) return error;
  return Unpack(packed, path, results);
}

Error NfsClient::Create(const RemoteFile& directory, const std::string& name, uint32_t mode, RemoteFile& file) {
  ZnNFSCreateargs arguments;
  ZnPacket packed;
  ZnNFSDiropres results;
  const std::string path = JoinPath(directory.path, name);
  if (Error error = MakeDiropargs(directory, name, arguments.where)) return error;
  arguments.attributes = NothingToSet();
  arguments.attributes.mode = mode & kFilePermissions;
  if (Error error = rpc_.Call(NfsProcedure::Create, arguments.Pack(), packed)) return error;
  if (Error error = Unpack(packed, path, results)) return error;
  TakeDiropres(results, path, file);
  return {};
}

Error NfsClient::Mkdir(const RemoteFile& directory, const std::string& name) {
  ZnNFSCreateargs arguments;
  if (Error error = MakeDiropargs(directory, name, arguments.where)) return error;
  arguments.attributes = NothingToSet();
  return Change(NfsProcedure::Mkdir, arguments, JoinPath(directory.path, name));
}

Error NfsClient::Remove(const RemoteFile& directory, const std::string& name) {
  ZnNFSDiropargs arguments;
  if (Error error = MakeDiropargs(directory, name, arguments)) return error;
  return Change(NfsProcedure::Remove, arguments, JoinPath(directory.path, name));
}

Error NfsClient::Rmdir(const RemoteFile& directory, const std::string& name) {
  ZnNFSDiropargs arguments;
  if (Error error = MakeDiropargs(directory, name, arguments)) return error;
  return Change(NfsProcedure::Rmdir, arguments, JoinPath(directory.path, name));
}

Error NfsClient::Rename(const RemoteFile& from, const std::string& name, const RemoteFile& to,
                        const std::string& newname) {
  ZnNFSRenameargs arguments;
  if (Error error = MakeDiropargs(from, name, arguments.from)) return error;
  if (Error error = MakeDiropargs(to, newname, arguments.to)) return error;
  return Change(NfsProcedure::Rename, arguments, JoinPath(to.path, newname));
}

Error NfsClient::Symlink(const RemoteFile& directory, const std::string& name, const std::string& target) {
  ZnNFSSymlinkargs arguments;
  if (Error error = MakeDiropargs(directory, name, arguments.from)) return error;
  if (!Text::FromHost(target, arguments.to))
    return {.text = target + ": the name has characters that the chosen encoding can't hold"};
  arguments.attributes = NothingToSet();
  return Change(NfsProcedure::Symlink, arguments, JoinPath(directory.path, name));
}
