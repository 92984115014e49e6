#pragma once
// Contract. Hash table that is gone through in the order of insertion, and in which no operation takes long however
// many entries there are: it grows by one slot with each insertion, dividing one other slot's keys with it (linear
// hashing), instead of entering everything anew now and then. It never shrinks.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "runtime/slab.h"

// K has operator== and std::hash. Iterators and pointers to entries stay good until their own entry is removed. An
// empty dictionary that never held anything is one null pointer: every file of the tree has one.
template <class K, class V>
class ZnDictionary {
 public:
  struct Entry {
    K key;
    mutable V value;  // entries are shown as constant for their keys' sake
  };
  class Iterator;

  ZnDictionary() = default;
  ZnDictionary(const ZnDictionary&) = delete;
  ZnDictionary& operator=(const ZnDictionary&) = delete;
  ZnDictionary(ZnDictionary&&) noexcept = default;
  ZnDictionary& operator=(ZnDictionary&& other) noexcept {
    std::swap(table_, other.table_);  // what was here ends with `other`
    return *this;
  }
  ~ZnDictionary() { Flush(); }

  // The new entry; null, storing nothing, when an equal key is there.
  const Entry* Add(K key, V value) {
    if (!table_) table_ = std::make_unique<Table>();
    const uint32_t hash = HashOf(key);
    if (FindNode(key, hash)) return nullptr;
    if (table_->count >= table_->slots.size()) AddSlot();
    Node* node = new Node(std::move(key), std::move(value), hash);
    EnterSlot(node);
    node->previous = table_->last;
    (table_->last ? table_->last->next : table_->first) = node;
    table_->last = node;
    table_->count++;
    return &node->entry;
  }
  bool Insert(K key, V value) { return Add(std::move(key), std::move(value)) != nullptr; }
  const Entry* FindEntry(const K& key) const {
    const Node* node = table_ ? FindNode(key, HashOf(key)) : nullptr;
    return node ? &node->entry : nullptr;
  }
  V* Find(const K& key) {
    const Entry* entry = FindEntry(key);
    return entry ? &entry->value : nullptr;
  }
  const V* Find(const K& key) const { return const_cast<ZnDictionary*>(this)->Find(key); }
  bool Remove(const K& key) {
    Node* node = table_ ? FindNode(key, HashOf(key)) : nullptr;
    if (!node) return false;
    LeaveSlot(node);
    (node->previous ? node->previous->next : table_->first) = node->next;
    (node->next ? node->next->previous : table_->last) = node->previous;
    table_->count--;
    delete node;  // the value may look at this dictionary while it dies
    return true;
  }
  void Flush() {
    if (!table_) return;
    Node* dying = table_->first;
    *table_ = Table();
    while (dying) delete std::exchange(dying, dying->next);
  }
  size_t Count() const { return table_ ? table_->count : 0; }
  bool IsEmpty() const { return Count() == 0; }

  Iterator begin() const { return Iterator(table_ ? table_->first : nullptr); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  static constexpr size_t kFirstSlots = 8;

  struct Node : ZnInSlab<Node> {
    Node(K k, V v, uint32_t h) : entry{std::move(k), std::move(v)}, hash(h) {}
    Entry entry;
    const uint32_t hash;
    Node* previous = nullptr;  // by insertion
    Node* next = nullptr;
    Node* chain = nullptr;  // in the slot
  };
  struct Table {
    std::vector<Node*> slots = std::vector<Node*>(kFirstSlots);
    Node* first = nullptr;
    Node* last = nullptr;
    size_t count = 0;
  };

 public:
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const Entry*;
    using reference = const Entry&;

    explicit Iterator(const Node* node) : node_(node) {}
    const Entry& operator*() const { return node_->entry; }
    const Entry* operator->() const { return &node_->entry; }
    Iterator& operator++() {
      node_ = node_->next;
      return *this;
    }
    bool operator==(const Iterator& other) const { return node_ == other.node_; }

   private:
    const Node* node_;
  };

 private:
  static uint32_t HashOf(const K& key) { return static_cast<uint32_t>(std::hash<K>()(key)); }

  // By as many bits of the hash as there are slots; a slot that isn't there yet is still one with that of a bit less.
  Node*& SlotOf(uint32_t hash) const {
    std::vector<Node*>& slots = table_->slots;
    const size_t mask = std::bit_ceil(slots.size()) - 1;
    const size_t slot = hash & mask;
    return slots[slot < slots.size() ? slot : slot & mask >> 1];
  }
  void AddSlot() {
    std::vector<Node*>& slots = table_->slots;
    const size_t divided = slots.size() - std::bit_floor(slots.size());
    slots.push_back(nullptr);
    for (Node* node = std::exchange(slots[divided], nullptr); node;) EnterSlot(std::exchange(node, node->chain));
  }
  void EnterSlot(Node* node) {
    Node*& slot = SlotOf(node->hash);
    node->chain = std::exchange(slot, node);
  }
  void LeaveSlot(const Node* node) {
    Node** place = &SlotOf(node->hash);
    while (*place != node) place = &(*place)->chain;
    *place = node->chain;
  }
  Node* FindNode(const K& key, uint32_t hash) const {
    Node* node = SlotOf(hash);
    while (node && (node->hash != hash || !(node->entry.key == key))) node = node->chain;
    return node;
  }

  std::unique_ptr<Table> table_;
};
