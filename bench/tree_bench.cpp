// What a directory costs by its size: ten times the entries should cost about ten times as much, never a hundred times.

#include <malloc.h>

#include <cstdio>
#include <ctime>

#include "support/tree_fixture.h"

namespace {

constexpr size_t kSmall = 10000;
constexpr size_t kLarge = 100000;
constexpr size_t kLookUps = 10000;

struct Costs {
  double first, again, half, readdir, found, missed;  // milliseconds
  double bytes;                                       // a node
};

double ProcessorMilliseconds() { return 1e3 * static_cast<double>(clock()) / CLOCKS_PER_SEC; }

// Of processor time, which doesn't depend on what else the machine does.
template <class Work>
double Milliseconds(Work work) {
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
        if (!filesystem.FindByName(share, name)) abort();
      }
    });
    costs.missed = Milliseconds([&] {
      for (size_t i = 0; i < kLookUps; i++) {
        if (filesystem.FindByName(share, NameOf(i) + "x")) abort();
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

void Print(const char* what, double small, double large) {
  printf("%-44s %10.1f ms %10.1f ms   ratio %5.1f\n", what, small, large, large / small);
}

}  // namespace

int main() {
  Bench bench;
  bench.Measure(kSmall);  // warms the allocator up
  Costs small = bench.Measure(kSmall);
  Costs large = bench.Measure(kLarge);
  printf("%-44s %10zu    %10zu\n", "entries", kSmall, kLarge);
  Print("first listing", small.first, large.first);
  Print("listing again, no change", small.again, large.again);
  Print("listing again, half the names gone", small.half, large.half);
  Print("READDIR of it all in 4096-byte pages", small.readdir, large.readdir);
  Print("10,000 look-ups that find, by another case", small.found, large.found);
  Print("10,000 look-ups that don't", small.missed, large.missed);
  printf("a node beyond the text of its name: %.0f bytes at %zu nodes, indexes included\n", large.bytes, kLarge);
  return 0;
}
