#include "support/standard_smb_server.h"

#include <algorithm>

using namespace smb_script;
using namespace std::string_literals;

namespace {

const std::string kNoChain = "\xFF\0\0\0"s;

constexpr unsigned kUid = 100, kFid = 0x4001;
// The first second of 2000 and of 2001, in 100 ns since 1601.
constexpr uint64_t kCreated = 125911584000000000, kModified = 126227808000000000;

Request WithIds(Request request, unsigned tid, unsigned uid) {
  request.tid = tid;
  request.uid = uid;
  return request;
}

}  // namespace

std::vector<std::string> StandardSmbServer::operator()(const Request& request) {
  auto other = replaced.find(request.command);
  if (other != replaced.end()) {
    const auto script = other->second;  // it may replace itself
    return script(request);
  }
  auto size = static_cast<uint32_t>(content.size());
  switch (request.command) {
    case 0x72:
      return {Negotiate(request)};
    case 0x73:
      return {Reply(WithIds(request, 0, kUid), kNoChain + U16(0), "Windows NT 4.0\0LanMan\0GROUP\0"s)};
    case 0x75: {
      bool ipc = request.data.find("IPC\0"s) != std::string::npos;
      return {Reply(WithIds(request, ipc ? 1 : 2, kUid), kNoChain + U16(1), ipc ? "IPC\0\0"s : "A:\0FAT\0"s)};
    }
    case 0x70:
      return {Reply(request, U16(maxBuffer) + U16(2))};
    case 0x02:
      return {Reply(request, U16(kFid) + U16(0x20) + U32(1111111111) + U32(size) + U16(request.Word(0) & 3))};
    case 0x2D:
      return {Reply(request, kNoChain + U16(kFid) + U16(0x20) + U32(1111111111) + U32(size) + U16(request.Word(3) & 3) +
                                 U16(0) + U16(0) + U16(1) + U32(0) + U16(0))};
    case 0x0A:
      return {Read(request)};
    case 0x0B:
      return {Reply(request, U16(request.Word(1)))};
    case 0x80:
      return {Reply(request, U16(1000) + U16(8) + U16(512) + U16(300) + U16(0))};
    case 0x2A:
      return {Reply(request, U16(1))};
    case 0x2E:
      return {ReadX(request)};
    case 0x2F:
      return {Reply(request, kNoChain + U16(request.Word(10)) + U16(0) + U32(0))};
    case 0xA2:
      return {Reply(request, kNoChain + "\0"s + U16(kFid) + U32(1) + U64(kCreated) + U64(kCreated) + U64(kModified) +
                                 U64(kModified) + U32(0x20) + U64(size) + U64(size) + U16(0) + U16(0) + "\0"s)};
    case 0x32:
      return {Trans2(request)};
    default:
      return {Reply(request)};
  }
}

std::string StandardSmbServer::Negotiate(const Request& request) const {
  const std::string challenge = "\1\2\3\4\5\6\7\x08";
  const std::string security(1, static_cast<char>(securityMode));
  if (dialect == 1) {
    return Reply(request,
                 U16(1) + security + U16(maxBuffer) + U16(maxMpx) + U16(1) + "\3"s + U32(0x11223344) + U16(0) + U16(0) +
                     U16(300) + U32(0),
                 challenge);
  }
  if (dialect != 2) return Reply(request, U16(dialect));
  return Reply(request,
               U16(2) + security + U16(maxMpx) + U16(1) + U32(maxBuffer) + U32(65536) + U32(0x11223344) +
                   U32(capabilities) + U64(0) + U16(0xFFC4) + "\x08",
               challenge + "G\0R\0O\0U\0P\0\0\0"s);
}

std::string StandardSmbServer::Read(const Request& request) const {
  size_t offset = std::min<size_t>(request.Word(2) | request.Word(3) << 16, content.size());
  std::string data = content.substr(offset, request.Word(1));
  auto count = static_cast<unsigned>(data.size());
  return Reply(request, U16(count) + std::string(8, '\0'), "\1" + U16(count) + data);
}

std::string StandardSmbServer::ReadX(const Request& request) const {
  const uint64_t offset = request.Word(3) | request.Word(4) << 16 | uint64_t{request.Word(10)} << 32;
  const std::string data = content.substr(std::min<uint64_t>(offset, content.size()), request.Word(5));
  return Reply(
      request,
      kNoChain + U16(0xFFFF) + U32(0) + U16(static_cast<unsigned>(data.size())) + U16(60) + std::string(10, '\0'),
      "\0"s + data);
}

std::string StandardSmbServer::Trans2(const Request& request) const {
  switch (request.Word(14)) {
    case 1:
      return List(request, 0, true);
    case 2:
      return List(request, entriesARound, false);
    case 3:
      return TransReply(request, "", U64(1000) + U64(300) + U32(8) + U32(512));
    case 5:
      return TransReply(request, "", U64(0) + U64(content.size()) + U32(1) + U16(0));
    default:
      return TransReply(request, U16(0), "");
  }
}

std::string StandardSmbServer::List(const Request& request, unsigned first, bool findFirst) const {
  unsigned last = std::min(first + entriesARound, entries);
  std::string data;
  for (unsigned i = first; i < last; i++) data += DirEntry("file" + std::to_string(i), i, 104);
  std::string params = (findFirst ? U16(0x1001) : "") + U16(last - first) + U16(last == entries) + U16(0) + U16(0);
  return TransReply(request, params, data);
}
