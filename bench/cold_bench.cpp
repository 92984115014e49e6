// What the daemon has yet to learn: look-ups over a wire with a length, by one caller and by many, and listings.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "shared/bare_smb.h"
#include "shared/beside_servers.h"
#include "shared/nfs_calls.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned kCallers = 8, kLookUps = 30, kLookUpTurns = 5;
constexpr unsigned kShort = 10000, kLong = 100000, kListingTurns = 3;
constexpr unsigned kShortOnes = 3;  // short directories a turn

std::string Numbered(const std::string& name, unsigned number) { return name + std::to_string(number); }

void Fill(const fs::path& directory, unsigned count) {
  fs::create_directory(directory);
  for (unsigned i = 0; i < count; i++) std::ofstream(directory / Numbered("some file name ", i));
}

class Bench {
 public:
  // False when a bound was missed.
  bool Run() {
    CompareLookUps();
    CompareListings();
    if (nfs_.Resent()) Table::Note(std::to_string(nfs_.Resent()) + " calls got no reply and were sent again");
    return table_.AllMet();
  }

 private:
  ZnNFSFileHandle Share(const std::string& machine) {
    return nfs_.Walk(Setting("HALDEN_NFS_USER") + "/" + machine + "/" + Setting("HALDEN_SMB_SHARE"));
  }

  // --- Look-ups: each of a file in a directory of its own, whose handle is known and whose contents aren't ---

  void CompareLookUps() {
    constexpr unsigned count = kLookUpTurns * kLookUps * (kCallers + 1);
    fs::create_directory(disk_ / "stat");
    for (unsigned i = 0; i < count; i++) Fill(disk_ / "stat" / Numbered("directory", i), 1);
    const ZnNFSFileHandle above = nfs_.Lookup(Share("pc5000"), "stat");
    nfs_.List(above);
    for (unsigned i = 0; i < count; i++) unseen_.push_back(nfs_.Lookup(above, Numbered("directory", i)));
    table_.Heading("rate of many / of one");
    Comparison seen;
    for (unsigned turn = 0; turn < kLookUpTurns; turn++) {
      const double one = LookUpsASecond(1);
      const double many = LookUpsASecond(kCallers);
      seen.Add(many, one, many / one);
    }
    table_.Row("LOOKUP of cold files, 8 callers, 5 ms", seen, "/s", "one caller", {Bound::AtLeast, 5});
  }

  double LookUpsASecond(unsigned callers) {
    std::vector<Caller> all;
    for (unsigned i = 0; i < callers; i++) {
      all.push_back([this, left = kLookUps](std::string_view reply, std::string& call) mutable {
        if (!reply.empty()) CheckNfs(reply);
        if (left-- == 0) return false;
        call = PackNfs(NfsProcedure::Lookup, Named(unseen_.back(), "some file name 0"));
        unseen_.pop_back();
        return true;
      });
    }
    return callers * kLookUps / Seconds([&] { nfs_.Run(std::move(all)); });
  }

  // --- Listings: each directory is cold once, for the daemon and for the process of the server that serves it ---

  void CompareListings() {
    Comparison seen, bare, server;
    // The names are there before the daemon looks: what it saw stays true for it.
    constexpr unsigned directories = kListingTurns * (kShortOnes + 1);
    for (unsigned i = 0; i < directories; i++) fs::create_directory(disk_ / Numbered("listed", i));
    const ZnNFSFileHandle share = Share("pc");
    unsigned number = 0;
    const auto make = [&](unsigned count) {
      std::string name = Numbered("listed", number++);
      Fill(disk_ / name, count);
      return name;
    };
    for (unsigned turn = 0; turn < kListingTurns; turn++) {
      std::vector<double> shortOnes, bareShortOnes;
      for (unsigned i = 0; i < kShortOnes; i++) {
        const std::string name = make(kShort);
        bareShortOnes.push_back(ListBare(name, kShort));
        shortOnes.push_back(List(share, name, kShort));
        server.Add(1e3 * shortOnes.back(), 1e3 * bareShortOnes.back(), bareShortOnes.back() / shortOnes.back());
      }
      const std::string name = make(kLong);
      const double bareLongOne = ListBare(name, kLong);
      const double longOne = List(share, name, kLong);
      seen.Add(1e3 * longOne, 1e3 * Median(shortOnes), longOne / Median(shortOnes));
      bare.Add(1e3 * bareLongOne, 1e3 * Median(bareShortOnes), bareLongOne / Median(bareShortOnes));
    }
    table_.Heading("time of the long one / of the short one");
    table_.Row("listing 100000 entries, cold", seen, "ms", "listing 10000", {Bound::AtMost, 12});
    char note[160];
    snprintf(note, sizeof note,
             "the server alone: %.1f ms and %.1f ms, %.2f times; the daemon's rate of that, 10000: %.2f",
             Median(bare.ours), Median(bare.theirs), Median(bare.ratios), Median(server.ratios));
    Table::Note(note);
  }

  double List(const ZnNFSFileHandle& share, const std::string& name, unsigned count) {
    const ZnNFSFileHandle directory = nfs_.Lookup(share, name);
    return Seconds([&] {
      if (nfs_.List(directory) != count + 2) Die("the daemon's listing isn't whole");
    });
  }

  double ListBare(const std::string& name, unsigned count) {
    return Seconds([&] {
      if (smb_.List("\\" + name) != count + 2) Die("the server's listing isn't whole");
    });
  }

  const fs::path disk_ = Setting("HALDEN_SMB_ROOT");
  NfsClient nfs_;
  BareSmb smb_;
  std::vector<ZnNFSFileHandle> unseen_;  // directories whose contents nobody looked at
  Table table_;
};

}  // namespace

int main(int, char** arguments) {
  RunBesideServers(arguments);
  return Bench().Run() ? 0 : 1;
}
