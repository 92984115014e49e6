// The daemon on a machine that is near, next to what the same road costs without it: a bare loop that echoes datagrams
// of the same sizes, and a bare loop of the same SMB requests, one at a time.

#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "shared/bare_smb.h"
#include "shared/beside_servers.h"
#include "shared/nfs_calls.h"
#include "shared/placement.h"

namespace {

constexpr unsigned kTurns = 81;
constexpr unsigned kQuickCalls = 512, kTransfers = 256, kInFlight = 16;
constexpr uint32_t kDataSize = 4 << 20;  // bytes of the files that are read and written
constexpr uint16_t kReadSize = 8192, kWriteSize = 4096;
constexpr unsigned kWarmFiles = 100;

// `count` calls that don't wait for each other, by so many callers. `put` makes the next one, `check` looks at a reply.
template <class Put, class Check>
void Repeat(CallSocket& socket, unsigned callers, unsigned count, const Put& put, const Check& check) {
  unsigned begun = 0;
  socket.Run(std::vector<Caller>(callers, [&](std::string_view reply, std::string& call) {
    if (!reply.empty()) check(reply);
    if (begun == count) return false;
    begun++;
    put(call);
    return true;
  }));
}

// Offsets of one piece of the data file after the other, round and round.
class Offsets {
 public:
  explicit Offsets(uint32_t piece) : piece_(piece) {}
  uint32_t Next() {
    const uint32_t offset = next_;
    next_ = (next_ + piece_) % kDataSize;
    return offset;
  }

 private:
  uint32_t piece_;
  uint32_t next_ = 0;
};

// The processor's time that a process took so far.
double ProcessorSeconds(pid_t pid) {
  clockid_t clock = 0;
  timespec time{};
  if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0) Die("the daemon is gone");
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

class Bench {
 public:
  Bench() {
    const std::filesystem::path disk = Setting("HALDEN_SMB_ROOT");
    // The daemon and the bare loop have a file each: whom the server lets write, it may lock the others out.
    for (const char* name : {"data", "bare data"}) std::ofstream(disk / name) << std::string(kDataSize, 'd');
    std::filesystem::create_directory(disk / "warm");
    for (unsigned i = 0; i < kWarmFiles; i++)
      std::ofstream(disk / "warm" / ("file name " + std::to_string(i) + ".txt"));
    const ZnNFSFileHandle share = nfs_.Walk(Setting("HALDEN_NFS_USER") + "/pc/" + Setting("HALDEN_SMB_SHARE"));
    warm_ = nfs_.Lookup(share, "warm");
    nfs_.List(warm_);
    data_ = nfs_.Lookup(share, "data");
    servesdaemon_ = LatestSmbServer();
    smb_ = std::make_unique<BareSmb>();
    smb_->Open("\\bare data");
    servesbare_ = LatestSmbServer();
  }

  // False when a bound was missed.
  bool Run() {
    table_.Heading("rate of the daemon / other");
    CompareQuick("GETATTR", PackNfs(NfsProcedure::Getattr, nfs_.Lookup(warm_, "file name 7.txt")));
    CompareQuick("LOOKUP", PackNfs(NfsProcedure::Lookup, Named(warm_, "file name 7.txt")));
    const Pieces reading = Pieces::OfRead(data_, kReadSize);
    CompareTransfer("READ 8192", reading, 1.2, [&](uint32_t offset) { smb_->Read(offset, kReadSize); });
    CompareTransfer("WRITE 4096", Pieces::OfWrite(data_, kWriteSize), 1.0,
                    [&](uint32_t offset) { smb_->Write(offset, kWriteSize); });
    MeasureProcessor(reading);
    if (nfs_.Resent()) table_.Note(std::to_string(nfs_.Resent()) + " calls got no reply and were sent again");
    return table_.AllMet();
  }

 private:
  void CompareQuick(const std::string& what, const std::string& packed) {
    const Echo echo(nfs_.Call(packed).size());
    CallSocket bare(echo.Port());
    const auto put = [&](std::string& call) {
      if (call.empty()) call = packed;
    };
    Place(daemon_, Processor::Second);
    Place(echo.Pid(), Processor::Second);
    const auto compare = [&](unsigned callers, Processor ofcallers, const char* where) {
      Place(0, ofcallers);
      Comparison seen;
      for (unsigned turn = 0; turn < kTurns; turn++) {
        const double daemon = Seconds([&] { Repeat(nfs_, callers, kQuickCalls, put, CheckNfs); });
        const double other = Seconds([&] { Repeat(bare, callers, kQuickCalls, put, [](std::string_view) {}); });
        seen.Add(1e6 * daemon / kQuickCalls, 1e6 * other / kQuickCalls, other / daemon);
      }
      table_.Row(what + ", " + std::to_string(callers) + " in flight" + where, seen, "us", "echo",
                 {Bound::AtLeast, 0.8});
    };
    compare(1, Processor::Second, "");
    compare(kInFlight, Processor::Second, "");
    compare(kInFlight, Processor::First, ", 2 processors");
  }

  // The calls of `pieces` beside what `bare` sends for each. `least`: of the rate of many in flight.
  void CompareTransfer(const std::string& what, const Pieces& pieces, double least,
                       const std::function<void(uint32_t offset)>& bare) {
    Offsets ours(pieces.Size());
    Offsets theirs(pieces.Size());
    const auto put = [&](std::string& call) { pieces.Put(ours.Next(), call); };
    const auto check = [&](std::string_view reply) { pieces.Check(reply); };
    for (const pid_t server : {servesdaemon_, servesbare_}) Place(server, Processor::Second);
    Place(daemon_, Processor::First);  // it has work while the server works
    Comparison inFlight;
    for (unsigned turn = 0; turn < kTurns; turn++) {
      Place(0, Processor::First);
      const double daemon = Seconds([&] { Repeat(nfs_, kInFlight, kTransfers, put, check); });
      Place(0, Processor::Second);
      const double other = Seconds([&] {
        for (unsigned i = 0; i < kTransfers; i++) bare(theirs.Next());
      });
      inFlight.Add(1e6 * daemon / kTransfers, 1e6 * other / kTransfers, other / daemon);
    }
    table_.Row(what + ", 16 in flight", inFlight, "us", "SMB requests, one at a time", {Bound::AtLeast, least});

    std::string call;
    pieces.Put(0, call);
    const Echo echo(nfs_.Call(call).size());
    CallSocket caller(echo.Port());
    Place(echo.Pid(), Processor::Second);
    Place(daemon_, Processor::Second);
    Comparison lone;
    for (unsigned turn = 0; turn < kTurns; turn++) {
      const double daemon = Seconds([&] { Repeat(nfs_, 1, kTransfers, put, check); });
      const double other = Seconds([&] {
        Repeat(
            caller, 1, kTransfers, [&](std::string& next) { pieces.Put(0, next); },
            [&](std::string_view) { bare(theirs.Next()); });
      });
      lone.Add(1e6 * daemon / kTransfers, 1e6 * other / kTransfers, other / daemon);
    }
    table_.Row(what + ", 1 in flight", lone, "us", "echo, then SMB request", {Bound::AtLeast, 0.85});
  }

  // Daemon and server on one processor: waking another costs the process that does it more than its own work.
  void MeasureProcessor(const Pieces& pieces) {
    Offsets offsets(pieces.Size());
    Place(0, Processor::First);
    Place(daemon_, Processor::Second);
    Place(servesdaemon_, Processor::Second);
    const double before = ProcessorSeconds(daemon_);
    Repeat(
        nfs_, kInFlight, kTurns * kTransfers, [&](std::string& call) { pieces.Put(offsets.Next(), call); },
        [&](std::string_view reply) { pieces.Check(reply); });
    const double used = ProcessorSeconds(daemon_) - before;
    table_.Row("READ 8192, 16 in flight", 1e6 * used / (kTurns * kTransfers), "us of processor, daemon",
               {Bound::AtMost, 12});
  }

  NfsClient nfs_;
  std::unique_ptr<BareSmb> smb_;
  const pid_t daemon_ = std::stoi(Setting("HALDEN_NFS_PID"));
  pid_t servesdaemon_ = 0, servesbare_ = 0;  // the processes of the server
  ZnNFSFileHandle warm_, data_;
  Table table_;
};

}  // namespace

int main(int, char** arguments) {
  RunBesideServers(arguments, "--idle");
  return Bench().Run() ? 0 : 1;
}
