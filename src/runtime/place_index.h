#pragma once
// Finds the places of a list's elements by a hash of what they are looked for by. It keeps neither the elements nor the
// keys, only two numbers for each: the caller says at which place the right element stands.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

class ZnPlaceIndex {
 public:
  static constexpr size_t kNone = SIZE_MAX;

  // For places below `count`, none of which is entered yet.
  explicit ZnPlaceIndex(size_t count) : first_(std::bit_ceil(count), kEnd), links_(count) {}

  // The place with this hash for which `matches(place)` is true, or kNone. Of several, the one entered last.
  template <class Matches>
  size_t Find(uint32_t hash, Matches matches) const {
    for (uint32_t place = first_[hash & (first_.size() - 1)]; place != kEnd; place = links_[place].next) {
      if (links_[place].hash == hash && matches(size_t{place})) return place;
    }
    return kNone;
  }
  // Enters a place, once.
  void Add(uint32_t hash, size_t place) {
    uint32_t& first = first_[hash & (first_.size() - 1)];
    links_[place] = {hash, first};
    first = static_cast<uint32_t>(place);
  }

 private:
  static constexpr uint32_t kEnd = UINT32_MAX;
  struct Link {
    uint32_t hash;
    uint32_t next;
  };

  std::vector<uint32_t> first_;
  std::vector<Link> links_;
};
