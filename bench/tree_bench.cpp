// What a directory costs by its size: ten times the entries should cost about ten times as much, never a hundred times.

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "support/tree_fixture.h"

namespace {

constexpr size_t kSmall = 10000;
constexpr size_t kLarge = 100000;
constexpr size_t kLookUps = 10000;
// What the larger may cost at most.
constexpr double kMostRatio = 12;
constexpr double kMostBytes = 1024;

struct Costs {
  double first, again, half, readdir, found, missed;  // milliseconds
  double bytes;                                       // a node
};

double ProcessorMilliseconds() { return 1e3 * static_cast<double>(clock()) / CLOCKS_PER_SEC; }

// A small directory would stay in the caches from one measurement to the next, which it doesn't between two calls of a
// client: every measurement begins with none of it there, whatever its size.
void EmptyCaches() {
  constexpr size_t kLargerThanCaches = size_t{128} << 20U;
  static std::vector<char> other(kLargerThanCaches);
  for (size_t i = 0; i < other.size(); i += 64) other[i]++;
}

// Of processor time, which doesn't depend on what else the machine does.
template <class Work>
double Milliseconds(Work work) {
  EmptyCaches();
  const double start = ProcessorMilliseconds();
  work();
  return ProcessorMilliseconds() - start;
}

ZnUniString NameOf(size_t i) { return "Some File Name " + std::to_string(i * 2654435761U % 4294967291U) + ".TXT"; }

class Bench : public TreeTest {
 public:
  void TestBody() override {}

  Costs Measure(size_t count) {
    ZnSMBNFSNode* share = Share();
    ZnSMBNFSTree* tree = filesystem.GetTree(share);
    tree->config.matchlong = tree->config.matchcase = true;
    std::vector<ZnSMBCFileObject> all, half;
    size_t textbytes = 0;
    for (size_t i = 0; i < count; i++) {
      all.push_back(Entry(NameOf(i), false, static_cast<uint32_t>(i)));
      if (i % 2 == 0) half.push_back(all.back());
      textbytes += all.back().path.Length() * 2;
    }
    Costs costs{};
    malloc_trim(0);
    size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    costs.first = Milliseconds([&] { List(share, all); });
    costs.again = Milliseconds([&] { List(share, all); });
    costs.readdir = Milliseconds([&] { ReadAll(share); });
    costs.found = Milliseconds([&] {
      for (size_t i = 0; i < kLookUps; i++) {
        ZnUniString name = NameOf(i * (count / kLookUps));
        name.LowerCase();  // another case: the long forms are compared
        if (!filesystem.FindByName(share, name, ZnNameMatch::LookUp)) abort();
      }
    });
    costs.missed = Milliseconds([&] {
      for (size_t i = 0; i < kLookUps; i++) {
        if (filesystem.FindByName(share, NameOf(i) + "x", ZnNameMatch::LookUp)) abort();
      }
    });
    size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    costs.bytes = static_cast<double>(after - before - textbytes) / static_cast<double>(count);
    costs.half = Milliseconds([&] { List(share, half); });
    List(share, {});
    return costs;
  }

 private:
  void ReadAll(ZnSMBNFSNode* node) {
    uint32_t cookie = 0, eof = 0;
    while (!eof) {
      ZnNFSList<ZnNFSDirEntry> page;
      filesystem.FillContents(node, cookie, 4096, page, eof);
      for (const ZnNFSDirEntry& entry : page) cookie = entry.cookie;
    }
  }
};

double Median(std::vector<double> values) {
  auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct Round {
  Costs small, large;
};

// Both sizes in turn, several times, and the medians of what each round shows: the machine does other things too, and
// isn't equally fast at all times.
bool Print(const char* what, const std::vector<Round>& rounds, double Costs::*cost) {
  std::vector<double> small, large, ratio;
  for (const Round& round : rounds) {
    small.push_back(round.small.*cost);
    large.push_back(round.large.*cost);
    ratio.push_back(large.back() / small.back());
  }
  const bool good = Median(ratio) <= kMostRatio;
  printf("%-44s %10.1f ms %10.1f ms   ratio %5.1f%s\n", what, Median(small), Median(large), Median(ratio),
         good ? "" : "   TOO MUCH");
  return good;
}

}  // namespace

int main() {
  constexpr size_t kRounds = 21;
  Bench bench;
  EmptyCaches();                              // so that its own memory isn't counted
  const Costs first = bench.Measure(kLarge);  // warms the allocator up
  std::vector<Round> rounds;
  for (size_t i = 0; i < kRounds; i++) {
    Costs small = bench.Measure(kSmall);
    rounds.push_back({small, bench.Measure(kLarge)});
  }
  printf("%-44s %10zu    %10zu\n", "entries", kSmall, kLarge);
  bool good = Print("first listing", rounds, &Costs::first);
  good &= Print("listing again, no change", rounds, &Costs::again);
  good &= Print("listing again, half the names gone", rounds, &Costs::half);
  good &= Print("READDIR of it all in 4096-byte pages", rounds, &Costs::readdir);
  good &= Print("10,000 look-ups that find, by another case", rounds, &Costs::found);
  good &= Print("10,000 look-ups that don't", rounds, &Costs::missed);
  printf("a node beyond the text of its name: %.0f bytes at %zu nodes, indexes included\n", first.bytes, kLarge);
  if (good && first.bytes <= kMostBytes) return 0;
  printf("more than %.0f times as much, or more than %.0f bytes a node\n", kMostRatio, kMostBytes);
  return 1;
}
