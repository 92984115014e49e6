#pragma once
// The daemon's file system as haldenctl sees it: files by path, whole listings, whole files.

#include <functional>
#include <string>
#include <vector>

#include "rpc/nfs_records.h"
#include "rpc_client.h"

// A file with the path it was reached by, for messages.
struct RemoteFile {
  std::string path;
  ZnNFSFileHandle handle;
  ZnNFSFattr attributes;

  bool IsDirectory() const { return attributes.type == ZnNFSEnum::NFDIR; }
  bool IsLink() const { return attributes.type == ZnNFSEnum::NFLNK; }
};

class NfsClient {
 public:
  // Largest file that version 2 of the protocol can name all bytes of.
  static constexpr uint64_t kLargestFile = 0x7FFFFFFF;

  // A part of a file, of up to kMaxData bytes.
  struct Piece {
    uint32_t offset;
    uint32_t count;
  };
  using TakeData = std::function<Error(uint32_t offset, const ZnByteBuffer& data)>;
  using GiveData = std::function<Error(const Piece& piece, ZnByteBuffer& data)>;

  // `root` becomes the root's handle if the daemon has none yet, and must be it otherwise.
  Error Open(uint16_t port, unsigned timeout, const ZnNFSFileHandle& root);

  // The file at a path from the root, through symbolic links; the last name's link is followed only with `follow`.
  Error Resolve(const std::string& path, bool follow, RemoteFile& file);
  // The directory that holds a path's last name, and that name, which needn't exist.
  Error ResolveParent(const std::string& path, RemoteFile& directory, std::string& name);
  Error Lookup(const RemoteFile& directory, const std::string& name, RemoteFile& file);
  Error Refresh(RemoteFile& file);  // the attributes
  Error Readlink(const RemoteFile& link, std::string& target);
  // The names in a directory, without "." and "..", sorted by their bytes.
  Error ListNames(const RemoteFile& directory, std::vector<std::string>& names);
  // The files in a directory, in the same order, each looked up.
  Error List(const RemoteFile& directory, std::vector<RemoteFile>& files);

  // Hands all the bytes that the file's attributes promise to `take`, in pieces that may come out of order.
  Error Read(const RemoteFile& file, const TakeData& take);
  // Writes `size` bytes from the start, asking for them piece by piece.
  Error Write(const RemoteFile& file, uint32_t size, const GiveData& give);

  Error Create(const RemoteFile& directory, const std::string& name, uint32_t mode, RemoteFile& file);
  Error Mkdir(const RemoteFile& directory, const std::string& name);
  Error Remove(const RemoteFile& directory, const std::string& name);
  Error Rmdir(const RemoteFile& directory, const std::string& name);
  Error Rename(const RemoteFile& from, const std::string& name, const RemoteFile& to, const std::string& newname);
  Error Symlink(const RemoteFile& directory, const std::string& name, const std::string& target);

 private:
  // Removes or makes something, with a status as the only result.
  template <class Args>
  Error Change(NfsProcedure procedure, const Args& arguments, const std::string& path);

  RpcClient rpc_;
  RemoteFile root_;
};

std::string JoinPath(const std::string& directory, const std::string& name);
