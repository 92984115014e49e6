// The SMB client against a real server, next to a bare loop of send and recv that plays the same bytes to the same
// server on the same connection: what the client adds to the wire's own cost. Starts the server itself
// (tests/support/with_smb_peer).

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "runtime/poll_event_loop.h"
#include "runtime/unix_process.h"
#include "smb/client/smb_client.h"

namespace {

// Of each loop, in turns and short, so that what else the machine does falls on both; the medians count.
constexpr unsigned kRounds = 101;
constexpr unsigned kRequests = 100;  // a round
constexpr unsigned kListedFiles = 10000;
constexpr unsigned kListings = 11;
// What the client has to reach: of the bare loop's trips a second, and of its time for a listing.
constexpr double kLeastSpeed = 0.85;
constexpr double kMostListing = 1.15;

using Values = ZnSMBClientValues;

[[noreturn]] void Die(const std::string& why) {
  fprintf(stderr, "smb_bench: %s\n", why.c_str());
  exit(1);
}

std::string Setting(const char* name) {
  const char* value = getenv(name);
  return value ? value : "";
}

// Keeps what it sends, a message an entry.
class RecordingClient : public ZnSMBClient {
 public:
  using ZnSMBClient::ZnSMBClient;
  IoStatus Write(const void* buffer, size_t size, size_t& moved) override {
    if (recording) sent.emplace_back(static_cast<const char*>(buffer), size);
    return ZnSMBClient::Write(buffer, size, moved);
  }

  bool recording = false;
  std::vector<std::string> sent;
};

// The bare loop: blocking calls, a buffer, and no look at what comes but its length.
class BareLoop {
 public:
  explicit BareLoop(int fd) : fd_(fd) {}

  const char* Exchange(const std::string& request) {
    if (send(fd_, request.data(), request.size(), 0) != static_cast<ssize_t>(request.size())) Die("send failed");
    size_t have = 0;
    size_t wanted = 4;
    while (have < wanted) {
      ssize_t got = recv(fd_, buffer_.data() + have, buffer_.size() - have, 0);
      if (got <= 0) Die("recv failed");
      have += static_cast<size_t>(got);
      if (have >= 4) wanted = 4 + (Byte(1) << 16 | Byte(2) << 8 | Byte(3));
    }
    return buffer_.data();
  }

 private:
  size_t Byte(size_t at) const { return static_cast<unsigned char>(buffer_[at]); }

  int fd_;
  std::vector<char> buffer_ = std::vector<char>(1 << 18);
};

struct Cost {
  double seconds = 0;
  double cpu = 0;
};

double CpuSeconds() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Cost Measure(const std::function<void()>& work) {
  double cpu = CpuSeconds();
  auto begin = std::chrono::steady_clock::now();
  work();
  std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  return {time.count(), CpuSeconds() - cpu};
}

Cost Median(std::vector<Cost> costs) {
  std::sort(costs.begin(), costs.end(), [](const Cost& a, const Cost& b) { return a.seconds < b.seconds; });
  return costs[costs.size() / 2];
}

class Bench {
 public:
  // False when a bound was missed.
  bool Run() {
    Connect();
    printf("server's largest message: %u bytes; %u requests a round, median of %u rounds\n\n", client_.maxbuffersize(),
           kRequests, kRounds);
    printf("%-6s %6s  %28s  %28s  %s\n", "", "", "client", "bare loop", "client/bare");
    printf("%-6s %6s  %9s %8s %9s  %9s %8s %9s  %s\n", "what", "bytes", "trips/s", "MB/s", "CPU us", "trips/s", "MB/s",
           "CPU us", "trips");
    unsigned max = client_.maxbuffersize();
    for (unsigned size : {1024U, 4096U, 8192U, max - ZnSMBClient::smb_write_overhead}) {
      const std::string content(size, 'w');
      const ZnByteBuffer data(content.data(), content.size());
      Compare("write", size, [&](uint32_t offset) { return client_.WriteFile(file_, offset, data, nullptr); });
    }
    for (unsigned size : {1024U, 4096U, 8192U, max - 200U}) {
      Compare("read", size, [&](uint32_t offset) {
        ZnByteBuffer data;
        auto result = client_.ReadFile(file_, static_cast<uint16_t>(size), offset, &data, nullptr);
        if (data.Length() != size) Die("a short read");
        return result;
      });
    }
    CompareListing();
    return good_;
  }

 private:
  void Check(ZnSMBClient::Result result) {
    if (result != ZnSMBClient::ResultSuccess) Die(client_.ReasonAsString().AsUtf8());
  }

  void Connect() {
    ZnMachine machine(Setting("HALDEN_SMB_NAME"), ZnMachine::Server);
    ZnInetAddr address = ZnInetAddr::AddressLoopback();
    address.Port(std::stoi(Setting("HALDEN_SMB_PORT")));
    machine.Name(address);
    Check(client_.OpenSession(machine, "BENCH", Setting("HALDEN_SMB_USER"), Setting("HALDEN_SMB_PASSWORD"), nullptr));
    tree_ = ZnSMBCTreeObject(machine, Setting("HALDEN_SMB_SHARE"), Values::ServiceDisk);
    Check(client_.TreeConnect(&tree_, "", nullptr));
    file_ = ZnSMBCFileObject(tree_, "\\bench");
    file_.access = Values::AccessReadWrite;
    Check(client_.OpenFile(&file_, Values::DenyNone, true, Values::OFOpen, nullptr));
  }

  // What the client sends during `work`.
  std::vector<std::string> Record(const std::function<void()>& work) {
    client_.sent.clear();
    client_.recording = true;
    work();
    client_.recording = false;
    return client_.sent;
  }

  struct Comparison {
    Cost client, bare;
    double speed;  // of the client, the bare loop's being 1: the median of what each round shows
  };

  Comparison Turns(unsigned rounds, const std::function<void()>& client, const std::function<void()>& bare) {
    std::vector<Cost> clientCosts;
    std::vector<Cost> bareCosts;
    std::vector<double> speeds;
    for (unsigned round = 0; round < rounds; round++) {
      clientCosts.push_back(Measure(client));
      client_.SetBlocking(true);
      bareCosts.push_back(Measure(bare));
      client_.SetBlocking(false);
      speeds.push_back(bareCosts.back().seconds / clientCosts.back().seconds);
    }
    std::sort(speeds.begin(), speeds.end());
    return {Median(clientCosts), Median(bareCosts), speeds[speeds.size() / 2]};
  }

  void Compare(const char* what, unsigned size, const std::function<ZnSMBClient::Result(uint32_t offset)>& request) {
    auto work = [&] {
      for (unsigned i = 0; i < kRequests; i++) Check(request(i * size));
    };
    const auto messages = Record(work);
    if (messages.size() != kRequests) Die("an operation took more than one request");
    BareLoop loop(client_.Fd());
    const Comparison seen = Turns(kRounds, work, [&] {
      for (const std::string& message : messages) loop.Exchange(message);
    });
    Print(what, size, seen.client);
    Print(nullptr, size, seen.bare);
    const bool good = seen.speed >= kLeastSpeed;
    printf("  %.2f%s\n", seen.speed, good ? "" : "   TOO SLOW");
    good_ = good_ && good;
  }

  static void Print(const char* what, unsigned size, const Cost& cost) {
    if (what) printf("%-6s %6u", what, size);
    double trips = kRequests / cost.seconds;
    printf("  %9.0f %8.1f %9.1f", trips, trips * size / 1e6, 1e6 * cost.cpu / kRequests);
  }

  void CompareListing() {
    const std::filesystem::path directory = std::filesystem::path(Setting("HALDEN_SMB_ROOT")) / "listed";
    std::filesystem::create_directory(directory);
    for (unsigned i = 0; i < kListedFiles; i++) std::ofstream(directory / ("file" + std::to_string(i)));
    auto work = [&] {
      ZnDList<ZnSMBCFileObject> list;
      Check(client_.ListDirectory(ZnSMBCDirectoryObject(tree_, "\\listed"), &list, "*", nullptr));
      if (list.Count() != kListedFiles + 2) Die("a listing isn't whole");
    };
    const auto messages = Record(work);
    BareLoop loop(client_.Fd());
    const Comparison seen = Turns(kListings, work, [&] { PlayListing(loop, messages); });
    const bool good = 1 / seen.speed <= kMostListing;
    printf(
        "\nlisting %u files (%zu requests): client %.1f ms, bare loop %.1f ms, client/bare %.2f%s; CPU %.1f and "
        "%.1f ms\n",
        kListedFiles, messages.size(), 1e3 * seen.client.seconds, 1e3 * seen.bare.seconds, 1 / seen.speed,
        good ? "" : " TOO SLOW", 1e3 * seen.client.cpu, 1e3 * seen.bare.cpu);
    good_ = good_ && good;
  }

  // The search id of this run, which the first reply gives, goes into the requests that follow.
  static void PlayListing(BareLoop& loop, std::vector<std::string> messages) {
    constexpr size_t kWords = 4 + 33;
    auto offset = [](const char* words, size_t at) {
      return static_cast<size_t>(static_cast<unsigned char>(words[at]) | static_cast<unsigned char>(words[at + 1])
                                                                             << 8);
    };
    const char* reply = loop.Exchange(messages[0]);
    const std::string searchId(reply + 4 + offset(reply + kWords, 8), 2);
    for (size_t i = 1; i < messages.size(); i++) {
      messages[i].replace(4 + offset(messages[i].data() + kWords, 20), 2, searchId);
      loop.Exchange(messages[i]);
    }
  }

  ZnUnixProcess process_;
  ZnEventLoop loop_{&process_};
  RecordingClient client_{&loop_};
  ZnSMBCTreeObject tree_;
  ZnSMBCFileObject file_;
  bool good_ = true;
};

}  // namespace

int main(int, char** argv) {
  if (Setting("HALDEN_SMB_PORT").empty()) {
    const char* runner = HALDEN_SOURCE_DIR "/tests/support/with_smb_peer";
    execl(runner, runner, "--", argv[0], nullptr);
    Die("can't start tests/support/with_smb_peer");
  }
  return Bench().Run() ? 0 : 1;
}
