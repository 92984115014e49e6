#include "shared/nfs_calls.h"

namespace {

constexpr size_t kReplyHeader = 24;  // bytes of an accepted reply in front of its results
constexpr size_t kReadResults = 76;  // bytes of READ's results in front of the data
constexpr size_t kAttributes = 72;   // bytes of WRITE's results
constexpr uint32_t kPageSize = 8192;

}  // namespace

std::string_view NfsResults(std::string_view reply) {
  if (WordAt(reply, 8) != ZnRPCEnum::MSG_ACCEPTED || WordAt(reply, kReplyHeader - 4) != ZnRPCEnum::SUCCESS) {
    Die("the daemon refused a call");
  }
  return reply.substr(kReplyHeader);
}

void CheckNfs(std::string_view reply) {
  if (const uint32_t status = WordAt(NfsResults(reply), 0)) Die("NFS status " + std::to_string(status));
}

std::string PackNfsCall(NfsProcedure procedure, const ZnByteBuffer& arguments) {
  static const uint32_t uid = static_cast<uint32_t>(std::stoul(Setting("HALDEN_NFS_UID")));
  ZnRPCMessageFromClient message;
  ZnRPCCallBody& body = message.call_body;
  body.program = 100003;
  body.version = 2;
  body.procedure = static_cast<uint32_t>(procedure);
  body.credentials.flavour = ZnRPCEnum::AUTH_UNIX;
  body.credentials.auth_body.machinename = "bench";
  body.credentials.auth_body.uid = uid;
  body.rpc_data.Append(arguments.Data(), arguments.Length());
  ZnByteBuffer packed;
  ZnXdrWriter out(packed);
  message.Write(out);
  return {reinterpret_cast<const char*>(packed.Data()), packed.Length()};
}

ZnNFSDiropargs Named(const ZnNFSFileHandle& directory, const std::string& name) {
  ZnNFSDiropargs args;
  args.dir = directory;
  args.name = name.c_str();
  return args;
}

ZnNFSSattr NothingChanged() {
  constexpr uint32_t unchanged = 0xFFFFFFFF;
  ZnNFSSattr attributes;
  for (uint32_t* field :
       {&attributes.mode, &attributes.uid, &attributes.gid, &attributes.size, &attributes.atime.seconds,
        &attributes.atime.useconds, &attributes.mtime.seconds, &attributes.mtime.useconds}) {
    *field = unchanged;
  }
  return attributes;
}

std::string PackNew(NfsProcedure procedure, const ZnNFSFileHandle& directory, const std::string& name, uint32_t mode) {
  ZnNFSCreateargs args;
  args.where = Named(directory, name);
  args.attributes = NothingChanged();
  args.attributes.mode = mode;
  return PackNfs(procedure, args);
}

Pieces Pieces::OfRead(const ZnNFSFileHandle& file, uint32_t size) {
  ZnNFSReadargs args;
  args.file = file;
  args.count = size;
  Pieces pieces;
  pieces.packed_ = PackNfs(NfsProcedure::Read, args);
  pieces.size_ = size;
  pieces.offsetat_ = pieces.packed_.size() - 12;
  pieces.least_ = kReplyHeader + kReadResults + size;
  return pieces;
}

Pieces Pieces::OfWrite(const ZnNFSFileHandle& file, uint32_t size) {
  ZnNFSWriteargs args;
  args.file = file;
  const std::string bytes(size, 'w');
  args.data.Append(bytes.data(), bytes.size());
  Pieces pieces;
  pieces.packed_ = PackNfs(NfsProcedure::Write, args);
  pieces.size_ = size;
  pieces.offsetat_ = pieces.packed_.size() - size - 12;
  pieces.least_ = kReplyHeader + kAttributes;
  return pieces;
}

void Pieces::Check(std::string_view reply) const {
  CheckNfs(reply);
  if (reply.size() < least_) Die("a piece wasn't moved whole");
}

std::string NfsClient::Call(const std::string& packed) {
  std::string result;
  Run([&](std::string_view reply, std::string& call) {
    call = packed;
    result = reply;
    return reply.empty();
  });
  return result;
}

ZnNFSFileHandle NfsClient::Lookup(const ZnNFSFileHandle& directory, const std::string& name) {
  const auto found = ReadNfs<ZnNFSDiropres>(Call(PackNfs(NfsProcedure::Lookup, Named(directory, name))));
  if (found.status != ZnNFSEnum::NFS_OK) Die("LOOKUP of " + name + ": NFS status " + std::to_string(found.status));
  return found.file;
}

ZnNFSFileHandle NfsClient::Walk(const std::string& path) {
  const std::string digits = Setting("HALDEN_NFS_ROOT");
  ZnNFSFileHandle at;
  for (size_t i = 0; i < ZnNFSFileHandle::kSize; i++) {
    at.bytes[i] = static_cast<uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
  }
  for (size_t begin = 0; begin < path.size();) {
    const size_t end = std::min(path.find('/', begin), path.size());
    at = Lookup(at, path.substr(begin, end - begin));
    begin = end + 1;
  }
  return at;
}

ZnNFSFileHandle NfsClient::Make(NfsProcedure procedure, const ZnNFSFileHandle& directory, const std::string& name) {
  const auto made = ReadNfs<ZnNFSDiropres>(Call(PackNew(procedure, directory, name, 0755)));
  if (made.status != ZnNFSEnum::NFS_OK) Die("making " + name + ": NFS status " + std::to_string(made.status));
  return made.file;
}

size_t NfsClient::List(const ZnNFSFileHandle& directory) {
  ZnNFSReaddirargs args;
  args.dir = directory;
  args.count = kPageSize;
  size_t count = 0;
  for (ZnNFSReaddirres page; !page.eof;) {
    page = ReadNfs<ZnNFSReaddirres>(Call(PackNfs(NfsProcedure::Readdir, args)));
    if (page.status != ZnNFSEnum::NFS_OK) Die("READDIR: NFS status " + std::to_string(page.status));
    count += page.entries.Count();
    if (!page.entries.IsEmpty()) args.cookie = page.entries[page.entries.Count() - 1].cookie;
  }
  return count;
}
