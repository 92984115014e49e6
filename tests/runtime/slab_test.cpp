#include "runtime/slab.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

struct Place {
  unsigned char* bytes;
  unsigned char filling;
};

// Nobody else's bytes change while places come and go in any order, over several chunks.
TEST(Slab, PlacesAreTheirOwners) {
  constexpr size_t kSize = 1000;
  ZnSlab slab(kSize);
  std::vector<Place> places;
  std::mt19937 random(1);
  auto give_back = [&](size_t i) {
    for (size_t byte = 0; byte < kSize; byte++) ASSERT_EQ(places[i].bytes[byte], places[i].filling);
    slab.GiveBack(places[i].bytes);
    places[i] = places.back();
    places.pop_back();
  };
  for (unsigned step = 0; step < 3000; step++) {
    bool grows = step / 500 % 2 == 0;
    if (places.empty() || random() % 4 > (grows ? 0U : 2U)) {
      places.push_back({static_cast<unsigned char*>(slab.Take()), static_cast<unsigned char>(step)});
      memset(places.back().bytes, places.back().filling, kSize);
    } else {
      give_back(random() % places.size());
    }
  }
  while (!places.empty()) give_back(random() % places.size());
}

}  // namespace
