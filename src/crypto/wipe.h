#pragma once
// Overwriting secrets so that the compiler can't leave it out.

#include <cstddef>
#include <cstdint>
#include <type_traits>

template <class T>
void ZnWipe(T& object) {
  static_assert(std::is_trivially_copyable_v<T>);
  volatile auto* bytes = reinterpret_cast<volatile uint8_t*>(&object);
  for (size_t i = 0; i < sizeof object; i++) bytes[i] = 0;
}

// A plain object, a cipher's context say, that leaves nothing behind.
template <class T>
struct ZnWiped : T {
  ZnWiped() = default;
  ZnWiped(const ZnWiped&) = delete;
  ZnWiped& operator=(const ZnWiped&) = delete;
  ~ZnWiped() { ZnWipe(static_cast<T&>(*this)); }
};
