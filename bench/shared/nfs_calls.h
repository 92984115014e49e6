#pragma once
// Calls of NFS version 2 to the daemon that a benchmark runs beside: packed by the records, read back by them.

#include "rpc/nfs_records.h"
#include "rpc/rpc_records.h"
#include "shared/callers.h"

enum class NfsProcedure : uint32_t {
  Getattr = 1,
  Setattr = 2,
  Lookup = 4,
  Read = 6,
  Write = 8,
  Create = 9,
  Remove = 10,
  Mkdir = 14,
  Readdir = 16,
};

// What stands behind the RPC header of a reply, its NFS status first. Dies of a call that was refused.
std::string_view NfsResults(std::string_view reply);

// The results of a reply, whatever their status. Dies if they can't be read.
template <class Results>
Results ReadNfs(std::string_view reply) {
  const std::string_view bytes = NfsResults(reply);
  ZnXdrReader in(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  Results results;
  if (!results.Read(in)) Die("results that can't be read");
  return results;
}
// Dies unless the call succeeded. Looks at no more than it has to: for calls that are timed.
void CheckNfs(std::string_view reply);

std::string PackNfsCall(NfsProcedure procedure, const ZnByteBuffer& arguments);

template <class Arguments>
std::string PackNfs(NfsProcedure procedure, const Arguments& arguments) {
  ZnByteBuffer packed;
  ZnXdrWriter out(packed);
  arguments.Write(out);
  return PackNfsCall(procedure, packed);
}

ZnNFSDiropargs Named(const ZnNFSFileHandle& directory, const std::string& name);
// CREATE and MKDIR of a name, with mode bits and nothing else.
std::string PackNew(NfsProcedure procedure, const ZnNFSFileHandle& directory, const std::string& name, uint32_t mode);
ZnNFSSattr NothingChanged();

// The calls of a READ or WRITE of each piece of a file, in order, made from one packed call.
class Pieces {
 public:
  static Pieces OfRead(const ZnNFSFileHandle& file, uint32_t size);
  static Pieces OfWrite(const ZnNFSFileHandle& file, uint32_t size);

  uint32_t Size() const { return size_; }
  void Put(uint32_t offset, std::string& call) const {
    if (call.empty()) call = packed_;
    PutWord(call, offsetat_, offset);
  }
  // Dies unless the piece was moved whole.
  void Check(std::string_view reply) const;

 private:
  uint32_t size_ = 0;
  size_t offsetat_ = 0;
  size_t least_ = 0;  // bytes of a whole reply
  std::string packed_;
};

// The daemon as its one user sees it.
class NfsClient : public CallSocket {
 public:
  NfsClient() : CallSocket(static_cast<uint16_t>(std::stoi(Setting("HALDEN_NFS_PORT")))) {}

  std::string Call(const std::string& packed);
  // LOOKUP along a path of names separated by "/", from the root.
  ZnNFSFileHandle Walk(const std::string& path);
  ZnNFSFileHandle Lookup(const ZnNFSFileHandle& directory, const std::string& name);
  ZnNFSFileHandle Make(NfsProcedure procedure, const ZnNFSFileHandle& directory, const std::string& name);
  // READDIR to the end; the number of entries.
  size_t List(const ZnNFSFileHandle& directory);
};
