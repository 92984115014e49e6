// The daemon between an NFS caller and a real SMB server, next to what the same road costs without it: a bare loop that
// echoes datagrams of the same sizes, and the SMB client alone with the same requests. bench/gateway_setup.py, which
// this program runs itself under, starts daemon and server.

#include <arpa/inet.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "rpc/nfs_records.h"
#include "rpc/rpc_records.h"
#include "runtime/poll_event_loop.h"
#include "runtime/unix_process.h"
#include "smb/client/smb_client.h"

namespace {

// Of each comparison, in turns and short, so that what else the machine does falls on both sides; the medians count.
constexpr unsigned kRounds = 81;
constexpr unsigned kQuickCalls = 500, kTransferCalls = 256, kInFlight = 16;
constexpr unsigned kReadSize = 8192, kWriteSize = 4096;
constexpr unsigned kDataSize = 4 << 20;  // bytes of the files that are read and written
constexpr size_t kListedFiles = 10000;
constexpr size_t kLongestDatagram = 65536;
constexpr size_t kReplyHeader = 24;  // bytes of a successful reply in front of the results

using Clock = std::chrono::steady_clock;

[[noreturn]] void Die(const std::string& why) {
  fprintf(stderr, "gateway_bench: %s\n", why.c_str());
  exit(1);
}

std::string Setting(const char* name) {
  const char* value = getenv(name);
  return value ? value : "";
}

// --- Datagrams ---

void PutWord(std::string& bytes, size_t at, uint32_t value) {
  const uint32_t word = htonl(value);
  bytes.replace(at, sizeof word, reinterpret_cast<const char*>(&word), sizeof word);
}

uint32_t WordAt(const std::string& bytes, size_t at) {
  uint32_t word = 0;
  memcpy(&word, bytes.data() + at, sizeof word);
  return ntohl(word);
}

int UdpSocket() {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) Die("no socket");
  return fd;
}

sockaddr_in Loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// The caller's end of a conversation by datagrams.
class Caller {
 public:
  explicit Caller(uint16_t port) {
    const sockaddr_in to = Loopback(port);
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) Die("can't connect");
    const int room = 1 << 20;  // for all replies in flight: a lost one would have to be asked for again
    setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    const timeval patience{10, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  ~Caller() { close(fd_); }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  void Send(const std::string& datagram) const {
    if (send(fd_, datagram.data(), datagram.size(), 0) < 0) Die("send failed");
  }
  const std::string& Receive() {
    reply_.resize(kLongestDatagram);
    const ssize_t got = recv(fd_, reply_.data(), reply_.size(), 0);
    if (got <= 0) Die("no answer");
    reply_.resize(static_cast<size_t>(got));
    return reply_;
  }
  const std::string& Exchange(const std::string& datagram) {
    Send(datagram);
    return Receive();
  }

 private:
  int fd_ = UdpSocket();
  std::string reply_;
};

// The bare loop, in a process of its own: answers every datagram with one of a given size.
class Echo {
 public:
  explicit Echo(size_t replySize) {
    const int fd = UdpSocket();
    sockaddr_in address = Loopback(0);
    socklen_t length = sizeof address;
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0) Die("can't bind");
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) Die("no port");
    port_ = ntohs(address.sin_port);
    child_ = fork();
    if (child_ < 0) Die("can't fork");
    if (child_ == 0) Loop(fd, replySize);
    close(fd);
  }
  ~Echo() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  Echo(const Echo&) = delete;
  Echo& operator=(const Echo&) = delete;
  uint16_t Port() const { return port_; }

 private:
  [[noreturn]] static void Loop(int fd, size_t replySize) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    static char buffer[kLongestDatagram];
    for (;;) {
      pollfd ready{fd, POLLIN, 0};
      sockaddr_in from{};
      socklen_t length = sizeof from;
      poll(&ready, 1, -1);
      recvfrom(fd, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &length);
      sendto(fd, buffer, replySize, 0, reinterpret_cast<const sockaddr*>(&from), length);
    }
  }

  uint16_t port_ = 0;
  pid_t child_ = 0;
};

// --- The NFS side ---

// A caller of the daemon. Calls are packed once; later only their xid and what a test changes is written over.
class NfsCaller : public Caller {
 public:
  NfsCaller() : Caller(static_cast<uint16_t>(std::stoi(Setting("HALDEN_NFS_PORT")))) {}

  template <class Args>
  static std::string Pack(uint32_t procedure, const Args& args) {
    ZnRPCMessageFromClient message;
    ZnRPCCallBody& body = message.call_body;
    body.program = 100003;
    body.version = 2;
    body.procedure = procedure;
    body.credentials.flavour = ZnRPCEnum::AUTH_UNIX;
    body.credentials.auth_body.machinename = "bench";
    body.credentials.auth_body.uid = static_cast<uint32_t>(std::stoul(Setting("HALDEN_NFS_UID")));
    ZnXdrWriter arguments(body.rpc_data);
    args.Write(arguments);
    ZnByteBuffer packed;
    ZnXdrWriter out(packed);
    message.Write(out);
    return {reinterpret_cast<const char*>(packed.Data()), packed.Length()};
  }

  void Begin(std::string& call) {
    PutWord(call, 0, ++xid_);
    Send(call);
  }
  // The next reply, which must be a success.
  const std::string& End() {
    const std::string& reply = Receive();
    if (reply.size() < kReplyHeader + 4 || WordAt(reply, kReplyHeader - 4) != 0) Die("a call was refused");
    if (WordAt(reply, kReplyHeader) != 0) Die("NFS status " + std::to_string(WordAt(reply, kReplyHeader)));
    return reply;
  }
  const std::string& Call(std::string& call) {
    Begin(call);
    return End();
  }

 private:
  uint32_t xid_ = 0;
};

ZnNFSFileHandle Handle(const char* setting, size_t number = 0) {
  const std::string digits = Setting(setting).substr(number * ZnNFSFileHandle::kSize * 2, ZnNFSFileHandle::kSize * 2);
  if (digits.size() != ZnNFSFileHandle::kSize * 2) Die(std::string("no handle in ") + setting);
  ZnNFSFileHandle handle;
  for (size_t i = 0; i < ZnNFSFileHandle::kSize; i++) {
    handle.bytes[i] = static_cast<uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
  }
  return handle;
}

// READ or WRITE of a piece of the data file, moved along it. The client has a file of its own: whom the server lets
// write, it locks the others out.
struct Transfer {
  const char* what;
  std::string call;  // packed
  size_t offsetat;   // where the offset stands in it
  unsigned size;     // bytes moved
  uint32_t next = 0;

  uint32_t Offset() {
    const uint32_t offset = next;
    next = (next + size) % kDataSize;
    return offset;
  }
  std::string& At(uint32_t offset) {
    PutWord(call, offsetat, offset);
    return call;
  }
};

Transfer Reading() {
  ZnNFSReadargs args;
  args.file = Handle("HALDEN_NFS_DATA");
  args.count = kReadSize;
  std::string call = NfsCaller::Pack(6, args);
  return {"READ 8192", call, call.size() - 12, kReadSize};
}

Transfer Writing() {
  ZnNFSWriteargs args;
  args.file = Handle("HALDEN_NFS_DATA");
  const std::string bytes(kWriteSize, 'w');
  args.data.Append(bytes.data(), bytes.size());
  std::string call = NfsCaller::Pack(8, args);
  return {"WRITE 4096", call, call.size() - kWriteSize - 12, kWriteSize};
}

// --- The SMB side ---

// The client alone. Requests follow each other without a pause, each begun from the callback of the one before, as the
// daemon does it.
class SmbSide {
 public:
  using Request = std::function<ZnSMBClient::Result(ZnSMBClient::Completion* callback)>;

  SmbSide() {
    ZnMachine machine(Setting("HALDEN_SMB_NAME"), ZnMachine::Server);
    ZnInetAddr address = ZnInetAddr::AddressLoopback();
    address.Port(std::stoi(Setting("HALDEN_SMB_PORT")));
    machine.Name(address);
    Check(client_.OpenSession(machine, "BENCH", Setting("HALDEN_SMB_USER"), Setting("HALDEN_SMB_PASSWORD"), nullptr));
    tree_ = ZnSMBCTreeObject(machine, Setting("HALDEN_SMB_SHARE"), ZnSMBClientValues::ServiceDisk);
    Check(client_.TreeConnect(&tree_, "", nullptr));
    file_ = ZnSMBCFileObject(tree_, "\\data of the client");
    file_.access = ZnSMBClientValues::AccessReadWrite;
    Check(client_.OpenFile(&file_, ZnSMBClientValues::DenyNone, false, ZnSMBClientValues::OFOpen, nullptr));
  }

  void Run(unsigned count, Request request) {
    left_ = count;
    request_ = std::move(request);
    Next();
    loop_.EnterEventLoop();
  }
  Request Of(Transfer& transfer) {
    if (transfer.size == kReadSize) {
      return
          [&](auto* callback) { return client_.ReadFile(file_, kReadSize, transfer.Offset(), &received_, callback); };
    }
    return [&](auto* callback) { return client_.WriteFile(file_, transfer.Offset(), sent_, callback); };
  }
  void List(const std::string& directory) {
    ZnDList<ZnSMBCFileObject> list;
    Check(client_.ListDirectory(ZnSMBCDirectoryObject(tree_, "\\" + directory), &list, "*", nullptr));
    if (list.Count() != kListedFiles + 2) Die("the client's listing isn't whole");
  }

 private:
  void Check(ZnSMBClient::Result result) {
    if (result == ZnSMBClient::ResultFailure) Die(client_.ReasonAsString().AsUtf8());
  }
  void Next() { Check(request_(&callback_)); }
  void Done(ZnCallback<ZnSMBClient::Result>*, ZnSMBClient::Result result) {
    Check(result);
    if (--left_ == 0) {
      loop_.ExitEventLoop(0);
    } else {
      Next();
    }
  }

  ZnUnixProcess process_;
  ZnEventLoop loop_{&process_};
  ZnSMBClient client_{&loop_};
  ZnSimpleCallback<ZnSMBClient::Result, SmbSide> callback_{this, &SmbSide::Done};
  ZnSMBCTreeObject tree_;
  ZnSMBCFileObject file_;
  unsigned left_ = 0;
  Request request_;
  ZnByteBuffer received_;
  const ZnByteBuffer sent_{std::string(kWriteSize, 's').data(), kWriteSize};
};

// --- Comparing ---

double Seconds(const std::function<void()>& work) {
  const auto begin = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Ratios {
  std::vector<double> daemon, other, ratios;  // by round: seconds, seconds, other / daemon

  void Add(double daemonSeconds, double otherSeconds) {
    daemon.push_back(daemonSeconds);
    other.push_back(otherSeconds);
    ratios.push_back(otherSeconds / daemonSeconds);
  }
  // `least` is of the ratio of rates. Times are those of one of `count` calls. False when it was missed.
  bool Print(const std::string& what, const char* beside, unsigned count, double least) const {
    const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
    const double ratio = Median(ratios);
    printf("%-26s %9.1f us   %-22s %9.1f us   %5.2f (%4.2f to %4.2f)  at least %4.2f  %s\n", what.c_str(),
           1e6 * Median(daemon) / count, beside, 1e6 * Median(other) / count, ratio, *low, *high, least,
           ratio >= least ? "met" : "MISSED");
    fflush(stdout);
    return ratio >= least;
  }
};

class Bench {
 public:
  // False when a bound was missed.
  bool Run() {
    printf("\n%-26s %12s   %-22s %12s   %s\n", "daemon", "a call", "beside", "a call", "rate of the daemon / other");
    CompareQuick("GETATTR", NfsCaller::Pack(1, Handle("HALDEN_NFS_FILE")));
    ZnNFSDiropargs found;
    found.dir = Handle("HALDEN_NFS_DIRECTORY");
    found.name = "some file name 7.txt";
    CompareQuick("LOOKUP", NfsCaller::Pack(4, found));
    for (Transfer transfer : {Reading(), Writing()}) {
      CompareInFlight(transfer);
      CompareLone(transfer);
    }
    CompareListing();
    return good_;
  }

 private:
  void CompareQuick(const char* what, std::string call) {
    const Echo echo(nfs_.Call(call).size());
    Caller caller(echo.Port());
    Ratios ratios;
    for (unsigned round = 0; round < kRounds; round++) {
      const double daemon = Seconds([&] {
        for (unsigned i = 0; i < kQuickCalls; i++) nfs_.Call(call);
      });
      const double bare = Seconds([&] {
        for (unsigned i = 0; i < kQuickCalls; i++) caller.Exchange(call);
      });
      ratios.Add(daemon, bare);
    }
    good_ &= ratios.Print(std::string(what) + ", one caller", "echo", kQuickCalls, 0.7);
  }

  void CompareInFlight(Transfer& transfer) {
    Ratios ratios;
    for (unsigned round = 0; round < kRounds; round++) {
      const double daemon = Seconds([&] {
        for (unsigned i = 0; i < kTransferCalls + kInFlight; i++) {
          if (i >= kInFlight) CheckSize(transfer, nfs_.End());
          if (i < kTransferCalls) nfs_.Begin(transfer.At(transfer.Offset()));
        }
      });
      const double alone = Seconds([&] { smb_.Run(kTransferCalls, smb_.Of(transfer)); });
      ratios.Add(daemon, alone);
    }
    good_ &= ratios.Print(std::string(transfer.what) + ", 16 in flight", "SMB client", kTransferCalls, 0.8);
  }

  void CompareLone(Transfer& transfer) {
    const Echo echo(nfs_.Call(transfer.At(0)).size());
    Caller caller(echo.Port());
    const auto request = smb_.Of(transfer);
    Ratios ratios;
    for (unsigned round = 0; round < kRounds; round++) {
      const double daemon = Seconds([&] {
        for (unsigned i = 0; i < kTransferCalls; i++) CheckSize(transfer, nfs_.Call(transfer.At(transfer.Offset())));
      });
      const double pair = Seconds([&] {
        smb_.Run(kTransferCalls, [&](auto* callback) {
          caller.Exchange(transfer.call);
          return request(callback);
        });
      });
      ratios.Add(daemon, pair);
    }
    good_ &= ratios.Print(std::string(transfer.what) + ", one caller", "echo, then SMB client", kTransferCalls, 0.85);
  }

  static void CheckSize(const Transfer& transfer, const std::string& reply) {
    if (transfer.size == kReadSize && reply.size() < kReadSize) Die("a short read");
  }

  // Each directory is cold once, for the daemon and for the server's processes, of which either side has its own. Which
  // side goes first changes, for the sake of what the processes share.
  void CompareListing() {
    Ratios ratios;
    const size_t directories = Setting("HALDEN_NFS_COLD").size() / (2 * ZnNFSFileHandle::kSize);
    for (size_t number = 0; number < directories; number++) {
      const auto list = [&] { smb_.List("cold" + std::to_string(number)); };
      const auto read = [&] { ReadAll(Handle("HALDEN_NFS_COLD", number)); };
      const bool clientFirst = number % 2 == 0;
      const double first = Seconds(clientFirst ? std::function<void()>(list) : read);
      const double second = Seconds(clientFirst ? std::function<void()>(read) : list);
      clientFirst ? ratios.Add(second, first) : ratios.Add(first, second);
    }
    good_ &= ratios.Print("listing 10000 files, cold", "SMB client", 1, 1 / 1.2);
  }

  void ReadAll(const ZnNFSFileHandle& directory) {
    ZnNFSReaddirargs args;
    args.dir = directory;
    args.count = 8192;
    ZnNFSReaddirres page;
    size_t count = 0;
    while (!page.eof) {
      std::string call = NfsCaller::Pack(16, args);
      const std::string& reply = nfs_.Call(call);
      ZnXdrReader in(reinterpret_cast<const uint8_t*>(reply.data()) + kReplyHeader, reply.size() - kReplyHeader);
      if (!page.Read(in)) Die("a page that can't be read");
      count += page.entries.Count();
      if (!page.entries.IsEmpty()) args.cookie = page.entries[page.entries.Count() - 1].cookie;
    }
    if (count != kListedFiles + 2) Die("the daemon's listing isn't whole");
  }

  NfsCaller nfs_;
  SmbSide smb_;
  bool good_ = true;
};

}  // namespace

int main(int, char** argv) {
  if (Setting("HALDEN_NFS_PORT").empty()) {
    setenv("HALDEN_BIN_DIR", HALDEN_BIN_DIR, 0);
    const char* runner = HALDEN_SOURCE_DIR "/bench/gateway_setup.py";
    execlp("python3", "python3", "-B", runner, argv[0], nullptr);
    Die("can't start bench/gateway_setup.py");
  }
  return Bench().Run() ? 0 : 1;
}
