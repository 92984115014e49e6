#pragma once
// Contract. Insertion-ordered list by value. Removal compacts at once, so the elements are always dense from index 0.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

template <class T>
class ZnDList {
 public:
  ZnDList() = default;
  ZnDList(std::initializer_list<T> values) : values_(values) {}

  void Append(T value) {
    values_.push_back(std::move(value));
    generation_++;
  }
  void Remove(size_t index) {
    values_.erase(values_.begin() + static_cast<std::ptrdiff_t>(index));
    generation_++;
  }
  void Flush() {
    values_.clear();
    generation_++;
  }
  size_t Count() const { return values_.size(); }
  bool IsEmpty() const { return values_.empty(); }
  T& operator[](size_t index) { return values_[index]; }
  const T& operator[](size_t index) const { return values_[index]; }
  // A scan; lists that are searched often belong into a dictionary or a set.
  bool Contains(const T& value) const { return std::find(values_.begin(), values_.end(), value) != values_.end(); }
  // Goes up with every insertion, removal and flush.
  uint32_t Generation() const { return generation_; }

  auto begin() { return values_.begin(); }
  auto end() { return values_.end(); }
  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

  bool operator==(const ZnDList& other) const { return values_ == other.values_; }

 private:
  std::vector<T> values_;
  uint32_t generation_ = 0;
};
