#include "runtime/slab.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr size_t kChunk = 65536;  // bytes, and the chunks' alignment
constexpr size_t kGrain = alignof(std::max_align_t);

size_t RoundUp(size_t bytes) { return (bytes + kGrain - 1) / kGrain * kGrain; }

}  // namespace

struct ZnSlab::Place {
  Place* next;
};

// Stands at the beginning of its bytes; the places follow.
struct ZnSlab::Chunk {
  Chunk* previous = nullptr;  // among those that have free places
  Chunk* next = nullptr;
  Place* free = nullptr;
  size_t inuse = 0;

  static Chunk* Of(void* place) {
    auto* byte = static_cast<std::byte*>(place);
    return reinterpret_cast<Chunk*>(byte - reinterpret_cast<uintptr_t>(place) % kChunk);
  }
};

ZnSlab::ZnSlab(size_t size) : size_(RoundUp(std::max(size, sizeof(Place)))) {}

#ifdef __SANITIZE_ADDRESS__

// Each on its own, so that the sanitizer sees what is used after its end.
void* ZnSlab::Take() { return operator new(size_); }
void ZnSlab::GiveBack(void* place) { operator delete(place); }

#else

void* ZnSlab::Take() {
  if (!open_) AddChunk();
  Chunk* chunk = open_;
  Place* place = chunk->free;
  chunk->free = place->next;
  chunk->inuse++;
  if (!chunk->free) Close(chunk);
  return place;
}

void ZnSlab::GiveBack(void* place) {
  Chunk* chunk = Chunk::Of(place);
  if (!chunk->free) Open(chunk);
  chunk->free = new (place) Place{chunk->free};
  if (--chunk->inuse > 0) return;
  Close(chunk);
  free(chunk);
}

#endif

void ZnSlab::AddChunk() {
  void* memory = aligned_alloc(kChunk, kChunk);
  if (!memory) abort();
  auto* chunk = new (memory) Chunk;
  auto* first = static_cast<std::byte*>(memory) + RoundUp(sizeof(Chunk));
  for (size_t i = (kChunk - RoundUp(sizeof(Chunk))) / size_; i-- > 0;)
    chunk->free = new (first + i * size_) Place{chunk->free};
  Open(chunk);
}

void ZnSlab::Open(Chunk* chunk) {
  chunk->previous = nullptr;
  chunk->next = open_;
  if (open_) open_->previous = chunk;
  open_ = chunk;
}

void ZnSlab::Close(Chunk* chunk) {
  (chunk->previous ? chunk->previous->next : open_) = chunk->next;
  if (chunk->next) chunk->next->previous = chunk->previous;
}
