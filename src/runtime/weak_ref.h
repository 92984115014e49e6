#pragma once
// Contract. A reference that goes null when its target dies. The target derives from ZnReferable; nothing is allocated
// until the first reference is made. Single-threaded.

#include <memory>

class ZnReferable {
 public:
  ZnReferable() = default;
  ZnReferable(const ZnReferable&) {}  // references to the original don't follow the copy
  ZnReferable& operator=(const ZnReferable&) { return *this; }
  ~ZnReferable() {
    if (alive_) *alive_ = false;
  }

 private:
  template <class T>
  friend class ZnWeakRef;
  std::shared_ptr<bool> alive_;
};

template <class T>
class ZnWeakRef {
 public:
  ZnWeakRef() = default;
  ZnWeakRef(T* target) { *this = target; }  // NOLINT(google-explicit-constructor): stands where a pointer stood
  ZnWeakRef& operator=(T* target) {
    target_ = target;
    alive_.reset();
    if (!target) return *this;
    ZnReferable& referable = *target;
    if (!referable.alive_) referable.alive_ = std::make_shared<bool>(true);
    alive_ = referable.alive_;
    return *this;
  }

  // The target, or null when there is none or it has died.
  T* Get() const { return alive_ && *alive_ ? target_ : nullptr; }
  T* operator->() const { return Get(); }
  explicit operator bool() const { return Get() != nullptr; }
  bool operator==(const T* other) const { return Get() == other; }

 private:
  T* target_ = nullptr;
  std::shared_ptr<bool> alive_;
};
