// Many changes: what a file costs in a directory that grows, and an archive that is unpacked over a wire with a length.

#include <algorithm>
#include <string>

#include "shared/beside_servers.h"
#include "shared/nfs_calls.h"

namespace {

constexpr unsigned kFewFiles = 100, kManyFiles = 1600, kTurns = 7;
constexpr double kPatience = 25;  // seconds for all turns of a row, or for one archive
constexpr unsigned kDirectories = 100, kFilesInEach = 100, kInFlight = 16;
constexpr unsigned kSampled = 5;  // directories, for the archive that is unpacked one call at a time
constexpr size_t kSmallFile = 1000;
constexpr uint32_t kTimeInArchive = 1600000000;

std::string Numbered(const std::string& name, unsigned number) { return name + std::to_string(number); }

std::string PackWrite(const ZnNFSFileHandle& file, const std::string& bytes) {
  ZnNFSWriteargs args;
  args.file = file;
  args.data.Append(bytes.data(), bytes.size());
  return PackNfs(NfsProcedure::Write, args);
}

// Puts files into directories as tar does: each is made, written, and given its permissions and times. One caller makes
// one call at a time, and takes the next file of the archive when it is through with one.
class Archive {
 public:
  Archive(NfsClient& nfs, const ZnNFSFileHandle& parent, unsigned directories) : nfs_(nfs), parent_(parent) {
    directories_.resize(directories);
  }

  // Files a second. Gives up when there is no patience left; the rate is then that of what was unpacked.
  double Unpack(unsigned callers) {
    const auto end = SecondsFromNow(kPatience);
    const double seconds = Seconds([&] {
      RunAll(callers, static_cast<unsigned>(directories_.size()), end,
             [&](unsigned number) { return MakeDirectory(number); });
      RunAll(callers, static_cast<unsigned>(directories_.size()) * kFilesInEach, end,
             [&](unsigned number) { return MakeFile(number); });
    });
    return unpacked_ / seconds;
  }
  unsigned Unpacked() const { return unpacked_; }

 private:
  template <class Job>
  void RunAll(unsigned callers, unsigned count, SteadyClock::time_point end, const Job& job) {
    unsigned next = 0;
    const auto nextJob = [&]() -> Caller {
      if (next == count || SteadyClock::now() > end) return {};
      return job(next++);
    };
    std::vector<Caller> all;
    for (unsigned i = 0; i < callers; i++) {
      all.push_back([&nextJob, current = Caller()](std::string_view reply, std::string& call) mutable {
        if (current && current(reply, call)) return true;
        current = nextJob();
        return current && current({}, call);
      });
    }
    nfs_.Run(std::move(all));
  }

  Caller MakeDirectory(unsigned number) {
    return [this, number](std::string_view reply, std::string& call) {
      if (reply.empty()) {
        call = PackNew(NfsProcedure::Mkdir, parent_, Numbered("directory", number), 0755);
        return true;
      }
      CheckNfs(reply);
      directories_[number] = ReadNfs<ZnNFSDiropres>(reply).file;
      return false;
    };
  }

  Caller MakeFile(unsigned number) {
    enum Step { Create, Write, Setattr, Done };
    return [this, number, step = Create, file = ZnNFSFileHandle()](std::string_view reply, std::string& call) mutable {
      if (!reply.empty()) CheckNfs(reply);
      switch (step) {
        case Create:
          call = PackNew(NfsProcedure::Create, directories_[number / kFilesInEach],
                         Numbered("file", number % kFilesInEach), 0600);
          step = Write;
          return true;
        case Write:
          file = ReadNfs<ZnNFSDiropres>(reply).file;
          call = PackWrite(file, std::string(kSmallFile, 'a'));
          step = Setattr;
          return true;
        case Setattr: {
          ZnNFSSattrargs args;
          args.file = file;
          args.attributes = NothingChanged();
          args.attributes.mode = 0644;
          args.attributes.atime = args.attributes.mtime = Time(kTimeInArchive);
          call = PackNfs(NfsProcedure::Setattr, args);
          step = Done;
          return true;
        }
        case Done:
          unpacked_++;
          return false;
      }
      return false;
    };
  }

  static ZnNFSTimeVal Time(uint32_t seconds) {
    ZnNFSTimeVal time;
    time.seconds = seconds;
    return time;
  }

  NfsClient& nfs_;
  ZnNFSFileHandle parent_;
  std::vector<ZnNFSFileHandle> directories_;
  unsigned unpacked_ = 0;
};

class Bench {
 public:
  // False when a bound was missed.
  bool Run() {
    CompareDirectories();
    CompareArchives();
    if (nfs_.Resent()) Table::Note(std::to_string(nfs_.Resent()) + " calls got no reply and were sent again");
    return table_.AllMet();
  }

 private:
  ZnNFSFileHandle Share(const std::string& machine) {
    return nfs_.Walk(Setting("HALDEN_NFS_USER") + "/" + machine + "/" + Setting("HALDEN_SMB_SHARE"));
  }

  // Microseconds a file.
  struct Cost {
    double making, removing;
  };

  // In a directory of its own.
  Cost MakeAndRemove(const ZnNFSFileHandle& parent, unsigned count) {
    const ZnNFSFileHandle directory = nfs_.Make(NfsProcedure::Mkdir, parent, Numbered("made", ++made_));
    const double making = Seconds([&] {
      for (unsigned i = 0; i < count; i++) {
        const ZnNFSFileHandle file = nfs_.Make(NfsProcedure::Create, directory, Numbered("file", i));
        CheckNfs(nfs_.Call(PackWrite(file, "1")));
      }
    });
    const double removing = Seconds([&] {
      for (unsigned i = 0; i < count; i++) {
        CheckNfs(nfs_.Call(PackNfs(NfsProcedure::Remove, Named(directory, Numbered("file", i)))));
      }
    });
    return {1e6 * making / count, 1e6 * removing / count};
  }

  void CompareDirectories() {
    const ZnNFSFileHandle share = Share("pc");
    Comparison making;
    Comparison removing;
    for (Turns turns(kTurns, kPatience); turns.Next();) {
      const Cost few = MakeAndRemove(share, kFewFiles);
      const Cost many = MakeAndRemove(share, kManyFiles);
      making.Add(many.making, few.making, many.making / few.making);
      removing.Add(many.removing, few.removing, many.removing / few.removing);
    }
    table_.Heading("time with many / with few");
    table_.Row("make and write one of 1600 files", making, "us", "one of 100", {Bound::AtMost, 1.5});
    table_.Row("remove one of 1600 files", removing, "us", "one of 100", {Bound::AtMost, 1.5});
  }

  void CompareArchives() {
    const ZnNFSFileHandle share = Share("pc1000");
    table_.Heading("rate with many in flight / with one");
    const auto into = [&](const char* name) { return nfs_.Make(NfsProcedure::Mkdir, share, name); };
    Archive before(nfs_, into("sample before"), kSampled), after(nfs_, into("sample after"), kSampled);
    Archive whole(nfs_, into("whole"), kDirectories);
    const double first = before.Unpack(1);
    const double many = whole.Unpack(kInFlight);
    const double second = after.Unpack(1);
    Comparison seen;
    for (const double one : {first, second}) seen.Add(many, one, many / one);
    table_.Row("unpack 10000 files, 16 in flight, 1 ms", seen, "/s", "one call at a time", {Bound::AtLeast, 5});
    Table::Note("one call at a time unpacked " + std::to_string(before.Unpacked()) + " files before and " +
                std::to_string(after.Unpacked()) + " after, for as many to cost as much each");
    if (whole.Unpacked() < kDirectories * kFilesInEach) {
      Table::Note("16 in flight were given up after " + std::to_string(static_cast<unsigned>(kPatience)) + " s, with " +
                  std::to_string(whole.Unpacked()) + " of 10000 files unpacked");
    }
  }

  NfsClient nfs_;
  Table table_;
  unsigned made_ = 0;
};

}  // namespace

int main(int, char** arguments) {
  RunBesideServers(arguments, "--daemons-ttls");
  return Bench().Run() ? 0 : 1;
}
