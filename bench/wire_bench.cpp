// Large files over a wire with a length: the daemon next to smbclient through the same relay. First the relay itself,
// which mustn't be what limits either.

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "shared/beside_servers.h"
#include "shared/nfs_calls.h"
#include "shared/relay.h"
#include "shared/smbclient.h"

namespace {

constexpr double kMega = 1e6;
constexpr uint32_t kFileSize = 64 << 20, kPiece = 8192;
constexpr unsigned kInFlight = 16;
constexpr unsigned kTurns = 3;
constexpr double kPatience = 4;        // seconds for a file; the rate is then that of what was moved
constexpr double kRowPatience = 15;    // for all turns of a row
constexpr size_t kPumped = 256 << 20;  // bytes through the relay alone
constexpr unsigned kPings = 100;

// --- The relay alone ---

// A listening socket of a free port of loopback.
int Listener(uint16_t& port) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0 || listen(fd, 1) != 0) Die("can't listen");
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  port = ntohs(address.sin_port);
  return fd;
}

int Connected(uint16_t port) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  for (unsigned tries = 0; connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0; tries++) {
    if (tries == 1000) Die("the relay doesn't listen");
    usleep(1000);
  }
  const int yes = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  return fd;
}

template <class Work>
class Child {
 public:
  explicit Child(Work work) : pid_(fork()) {
    if (pid_ < 0) Die("can't fork");
    if (pid_ > 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    work();
    _exit(0);
  }
  ~Child() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

 private:
  pid_t pid_;
};

// Answers the last of the pumped bytes, and then each byte that comes.
void SwallowThenEcho(int listener) {
  const int fd = accept(listener, nullptr, nullptr);
  const int yes = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  std::string buffer(1 << 18, '\0');
  for (size_t have = 0;;) {
    const ssize_t got = recv(fd, buffer.data(), buffer.size(), 0);
    if (got <= 0) return;
    have += static_cast<size_t>(got);
    if (have >= kPumped && send(fd, buffer.data(), 1, 0) != 1) return;
  }
}

void WaitForByte(int fd) {
  char byte = 0;
  if (recv(fd, &byte, 1, 0) != 1) Die("the relay broke down");
}

void CheckRelay(Table& table, std::chrono::microseconds roundtrip) {
  RelayOptions options;
  options.roundtrip = roundtrip;
  const int listener = Listener(options.targetport);
  close(Listener(options.listenport));
  const Child sink([&] { SwallowThenEcho(listener); });
  const Child relay([&] { RunRelay(options); });
  close(listener);
  const int fd = Connected(options.listenport);
  const double pumping = Seconds([&] {
    const std::string piece(1 << 18, 'p');
    for (size_t sent = 0; sent < kPumped;) {
      const ssize_t taken = send(fd, piece.data(), std::min(piece.size(), kPumped - sent), 0);
      if (taken <= 0) Die("the relay broke down");
      sent += static_cast<size_t>(taken);
    }
    WaitForByte(fd);
  });
  std::vector<double> pings;
  for (unsigned i = 0; i < kPings; i++) {
    pings.push_back(Seconds([&] {
      if (send(fd, "p", 1, 0) != 1) Die("the relay broke down");
      WaitForByte(fd);
    }));
  }
  close(fd);
  const double wanted = static_cast<double>(roundtrip.count()) / 1000;
  const std::string what = "relay of " + std::to_string(roundtrip.count() / 1000) + " ms alone";
  table.Row(what + ": throughput", static_cast<double>(kPumped) / pumping / kMega, "MB/s", {Bound::AtLeast, 300});
  const double seen = 1000 * Median(pings);
  if (seen < wanted) Die("the relay is too fast");
  table.Row(what + ": round trip above that", seen - wanted, "ms", {Bound::AtMost, 0.3});
}

// --- Files ---

class Bench {
 public:
  // False when a bound was missed.
  bool Run() {
    for (const unsigned milliseconds : {0U, 1U, 5U}) CheckRelay(table_, std::chrono::milliseconds(milliseconds));
    std::ofstream(disk_ / "for smbclient") << std::string(kFileSize, 's');
    CompareRelayWithNone();
    table_.Heading("rate of the daemon / lesser of smbclient's and the window's");
    for (const unsigned microseconds : {1000U, 5000U}) {
      const std::string distance = std::to_string(microseconds);
      const ZnNFSFileHandle share =
          nfs_.Walk(Setting("HALDEN_NFS_USER") + "/pc" + distance + "/" + Setting("HALDEN_SMB_SHARE"));
      std::ofstream(disk_ / ("read" + distance)) << std::string(kFileSize, 'r');
      Compare("read", microseconds, Pieces::OfRead(nfs_.Lookup(share, "read" + distance), kPiece),
              "get \"for smbclient\" /dev/null");
      Compare("written, unflushed", microseconds,
              Pieces::OfWrite(nfs_.Make(NfsProcedure::Create, share, "written" + distance), kPiece),
              "put \"" + (disk_ / "for smbclient").string() + "\" \"by smbclient" + distance + "\"");
    }
    if (nfs_.Resent()) table_.Note(std::to_string(nfs_.Resent()) + " calls got no reply and were sent again");
    return table_.AllMet();
  }

 private:
  void CompareRelayWithNone() {
    const std::string get = "get \"for smbclient\" /dev/null";
    std::vector<double> through;
    std::vector<double> without;
    for (unsigned turn = 0; turn < kTurns; turn++) {
      through.push_back(RunSmbclient(Setting("HALDEN_RELAY_0"), get) / kMega);
      without.push_back(RunSmbclient(Setting("HALDEN_SMB_PORT"), get) / kMega);
    }
    table_.Row("smbclient get through the relay of 0 ms", Median(through), "MB/s", {Bound::AtLeast, 300});
    char note[80];
    snprintf(note, sizeof note, "smbclient get without it: %.1f MB/s", Median(without));
    table_.Note(note);
  }

  void Compare(const std::string& what, unsigned microseconds, const Pieces& pieces, const std::string& command) {
    // All that so many calls carry when each takes one round trip: what the caller asks for sets this limit, not the
    // daemon.
    const double window = kInFlight * kPiece / (1e-6 * microseconds);
    Comparison seen;
    std::vector<double> smbclients;
    uint32_t moved = kFileSize;
    for (Turns turns(kTurns, kRowPatience); turns.Next();) {
      smbclients.push_back(RunSmbclient(Setting(("HALDEN_RELAY_" + std::to_string(microseconds)).c_str()), command));
      uint32_t bytes = 0;
      const double seconds = Seconds([&] { bytes = Move(pieces); });
      moved = std::min(moved, bytes);
      const double reference = std::min(smbclients.back(), window);
      seen.Add(bytes / seconds / kMega, reference / kMega, bytes / seconds / reference);
    }
    const double smbclient = Median(smbclients);
    table_.Row("64 MiB " + what + ", " + std::to_string(microseconds / 1000) + " ms", seen, "MB/s",
               smbclient < window ? "smbclient" : "window of 16 calls of 8192", {Bound::AtLeast, 0.5});
    char note[160];
    snprintf(note, sizeof note, "smbclient %.1f MB/s, window of 16 calls of 8192 bytes a round trip %.1f MB/s",
             smbclient / kMega, window / kMega);
    table_.Note(note);
    if (moved == kFileSize) return;
    snprintf(note, sizeof note, "given up after %.0f s, with %.1f of 64 MiB moved", kPatience, moved / 1048576.0);
    table_.Note(note);
  }

  // The pieces of a file, in order, as many callers as are in flight. Returns the bytes moved while there was patience.
  uint32_t Move(const Pieces& pieces) {
    const auto end = SecondsFromNow(kPatience);
    uint32_t next = 0;
    nfs_.Run(std::vector<Caller>(kInFlight, [&](std::string_view reply, std::string& call) {
      if (!reply.empty()) pieces.Check(reply);
      if (next == kFileSize || SteadyClock::now() > end) return false;
      pieces.Put(next, call);
      next += kPiece;
      return true;
    }));
    return next;
  }

  const std::filesystem::path disk_ = Setting("HALDEN_SMB_ROOT");
  NfsClient nfs_;
  Table table_;
};

}  // namespace

int main(int, char** arguments) {
  RunBesideServers(arguments);
  return Bench().Run() ? 0 : 1;
}
