#pragma once
// Memory for many objects of one kind that are found together: they lie side by side, where the heap would put them
// between everything else, and what goes through a large table would wait for memory at each of them.

#include <cstddef>

// Gives out places of one size, from chunks that go back to the heap when nothing in them is in use. Never destroyed by
// itself: places may outlive static objects.
class ZnSlab {
 public:
  // `size` in bytes, of objects that need no more than the usual alignment.
  explicit ZnSlab(size_t size);
  void* Take();
  void GiveBack(void* place);

 private:
  struct Place;
  struct Chunk;

  void AddChunk();
  void Open(Chunk* chunk);
  void Close(Chunk* chunk);

  size_t size_;
  Chunk* open_ = nullptr;  // the first of the chunks that have free places
};

// Base of a class whose objects are made one by one and all lie in one slab. Nothing derives from such a class.
template <class T>
struct ZnInSlab {
  static void* operator new(size_t) { return Places().Take(); }
  static void operator delete(void* place) { Places().GiveBack(place); }

 private:
  static ZnSlab& Places() {
    static auto& places = *new ZnSlab(sizeof(T));
    return places;
  }
};
