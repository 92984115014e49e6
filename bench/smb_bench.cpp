// The SMB client against a real server, next to a bare loop of the same requests to another process of that server:
// what the client adds to the wire's own cost, and what it gains by having many requests on their way.

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "runtime/poll_event_loop.h"
#include "runtime/unix_process.h"
#include "shared/bare_smb.h"
#include "shared/beside_servers.h"
#include "shared/measure.h"
#include "shared/placement.h"
#include "smb/client/client.h"

namespace {

constexpr unsigned kTurns = 101, kRequests = 128, kInFlight = 16;
constexpr unsigned kListedFiles = 10000, kListings = 11;
constexpr uint16_t kLargest = 61440;  // what large reads and writes are for
constexpr uint16_t kSizes[] = {1024, 4096, 8192, kLargest};
constexpr uint32_t kFileSize = 4 << 20;

// Of the piece with a number, round and round in the file.
uint32_t Offset(unsigned number, uint16_t size) { return number % (kFileSize / size) * size; }

// The client, used as if it waited.
class Client : private ZnSmbClient::Owner {
 public:
  Client() : client_(&loop_, this) {
    ZnMachine machine(Setting("HALDEN_SMB_NAME"), ZnMachine::Server);
    ZnInetAddr address = ZnInetAddr::AddressLoopback();
    address.Port(std::stoi(Setting("HALDEN_SMB_PORT")));
    machine.Name(address);
    const ZnUniString user(Setting("HALDEN_SMB_USER"));
    const ZnUniString password(Setting("HALDEN_SMB_PASSWORD"));
    All(1, 1, [&](ZnSmbDone done) { return client_.Connect(machine, "BENCH", user, password, std::move(done)); });
    tree_ = ZnSMBCTreeObject(machine, Setting("HALDEN_SMB_SHARE"), ZnSMBClientValues::ServiceDisk);
    All(1, 1, [&](ZnSmbDone done) { return client_.TreeConnect(&tree_, "", std::move(done)); });
    file_ = ZnSMBCFileObject(tree_, "\\data");
    ZnSmbOpenMode mode;
    mode.access = ZnSMBClientValues::AccessReadWrite;
    All(1, 1, [&](ZnSmbDone done) { return client_.Open(kCaller, &file_, mode, std::move(done)); });
  }

  void Read(unsigned inFlight, uint16_t size) {
    std::vector<ZnByteBuffer> buffers(kRequests);
    unsigned next = 0;
    All(kRequests, inFlight, [&](ZnSmbDone done) {
      const unsigned number = next++;
      return client_.Read(kCaller, file_, Offset(number, size), size, &buffers[number], std::move(done));
    });
    for (const ZnByteBuffer& buffer : buffers) {
      if (buffer.Length() != size) Die("a short read");
    }
  }
  void Write(unsigned inFlight, uint16_t size) {
    const std::string content(size, 'w');
    const ZnByteBuffer bytes(content.data(), content.size());
    unsigned next = 0;
    All(kRequests, inFlight,
        [&](ZnSmbDone done) { return client_.Write(kCaller, file_, Offset(next++, size), bytes, std::move(done)); });
  }
  size_t List(const std::string& directory) {
    size_t count = 0;
    ZnDList<ZnSMBCFileObject> list;
    const auto took = [&] {
      count += list.Count();
      list = {};
      return true;
    };
    All(1, 1, [&](ZnSmbDone done) {
      return client_.List(kCaller, ZnSMBCDirectoryObject(tree_, "\\" + directory), "*", &list, took, std::move(done));
    });
    return count;
  }

 private:
  static constexpr ZnSmbCaller kCaller = 1;
  using Begin = std::function<ZnSmbCall(ZnSmbDone done)>;

  // So many operations, each place among those in flight taken again as soon as it is free.
  void All(unsigned count, unsigned inFlight, const Begin& begin) {
    std::vector<ZnSmbCall> places(inFlight);
    unsigned begun = 0;
    unsigned ended = 0;
    const std::function<void(size_t)> next = [&](size_t place) {
      if (begun == count) return;
      begun++;
      places[place] = begin([&, place](const ZnSmbOutcome& outcome) {
        if (!outcome.Ok()) Die("the client failed: reason " + std::to_string(outcome.reason));
        ended++;
        if (ended == count) {
          loop_.ExitEventLoop(0);
        } else {
          next(place);
        }
      });
    };
    for (size_t place = 0; place < inFlight; place++) next(place);
    loop_.EnterEventLoop();
  }
  void ConnectionLost(ZnSMBClientValues::Reason reason) override {
    Die("the client's connection broke: reason " + std::to_string(reason));
  }

  ZnUnixProcess process_;
  ZnEventLoop loop_{&process_};
  ZnSmbClient client_;
  ZnSMBCTreeObject tree_;
  ZnSMBCFileObject file_;
};

class Bench {
 public:
  Bench() {
    // A file each: whom the server lets write, it may lock the others out.
    for (const char* name : {"data", "bare data"}) std::ofstream(disk_ / name) << std::string(kFileSize, 'd');
    client_ = std::make_unique<Client>();
    servesclient_ = LatestSmbServer();
    bare_ = std::make_unique<BareSmb>();
    bare_->Open("\\bare data");
    Place(LatestSmbServer(), Processor::Second);
  }

  // False when a bound was missed.
  bool Run() {
    table_.Heading("rate of the client / bare loop");
    for (const uint16_t size : kSizes) {
      Compare("read", size, &Client::Read, &BareSmb::Read);
      Compare("write", size, &Client::Write, &BareSmb::Write);
    }
    CompareListing();
    return table_.AllMet();
  }

 private:
  void Compare(const std::string& what, uint16_t size, void (Client::*work)(unsigned inFlight, uint16_t size),
               void (BareSmb::*request)(uint32_t offset, uint16_t size)) {
    for (const unsigned inFlight : {1U, kInFlight}) {
      // Large ones in flight only measure how fast bytes go from one processor's cache to the other's.
      if (inFlight > 1 && size == kLargest) continue;
      // A client that waits shares the processor with whom it waits for; one that doesn't has work meanwhile.
      Place(servesclient_, inFlight == 1 ? Processor::Second : Processor::First);
      Place(0, Processor::Second);
      Comparison seen;
      for (unsigned turn = 0; turn < kTurns; turn++) {
        const double client = Seconds([&] { (*client_.*work)(inFlight, size); });
        const double bare = Seconds([&] {
          for (unsigned i = 0; i < kRequests; i++) (*bare_.*request)(Offset(i, size), size);
        });
        seen.Add(1e6 * client / kRequests, 1e6 * bare / kRequests, bare / client);
      }
      table_.Row(what + " " + std::to_string(size) + ", " + std::to_string(inFlight) + " in flight", seen, "us",
                 "bare loop, one at a time", {Bound::AtLeast, inFlight == 1 ? 0.85 : 1.0});
    }
  }

  void CompareListing() {
    std::filesystem::create_directory(disk_ / "listed");
    for (unsigned i = 0; i < kListedFiles; i++) std::ofstream(disk_ / "listed" / ("file" + std::to_string(i)));
    Place(servesclient_, Processor::Second);
    Comparison seen;
    for (unsigned turn = 0; turn < kListings; turn++) {
      const double client = Seconds([&] { CheckWhole(client_->List("listed")); });
      const double bare = Seconds([&] { CheckWhole(bare_->List("\\listed")); });
      seen.Add(1e3 * client, 1e3 * bare, client / bare);
    }
    table_.Heading("time of the client / bare loop");
    table_.Row("listing 10000 files", seen, "ms", "bare loop", {Bound::AtMost, 1.15});
  }

  static void CheckWhole(size_t count) {
    if (count != kListedFiles + 2) Die("a listing isn't whole");
  }

  const std::filesystem::path disk_ = Setting("HALDEN_SMB_ROOT");
  std::unique_ptr<Client> client_;
  std::unique_ptr<BareSmb> bare_;
  pid_t servesclient_ = 0;  // a process of the server
  Table table_;
};

}  // namespace

int main(int, char** arguments) {
  RunBesideServers(arguments);
  return Bench().Run() ? 0 : 1;
}
