#pragma once
// Contract. Hash table whose order of iteration is part of the daemon's behaviour: buckets in order, and in each bucket
// the order of insertion. It starts with 4 buckets and a limit of 12 entries; an insertion at the limit first
// multiplies both by 4 and re-inserts every entry, walking the old buckets in order. It never shrinks.
//
// Finding, inserting and removing don't depend on the length of a bucket, so names chosen to collide cost nothing
// extra.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "runtime/slab.h"

template <class K>
struct ZnDictionaryHash {
  // The order's hash: the key's own HashValue.
  static uint32_t Order(const K& key) { return key.HashValue(); }
};

// K has HashValue(), operator== and std::hash. Iterators and pointers to values stay good until their own entry is
// removed or the table is rebuilt by an insertion. An empty dictionary that never held anything is one null pointer:
// every file of the tree has one.
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
  ZnDictionary& operator=(ZnDictionary&&) noexcept = default;
  ~ZnDictionary() { Flush(); }

  // False, storing nothing, when an equal key is there. A full table is rebuilt before the key is looked for.
  bool Insert(K key, V value) {
    if (!table_) table_ = std::make_unique<Table>();
    if (table_->count >= Limit()) RebuildTable();
    const uint32_t hash = HashOf(key);
    if (FindNode(key, hash)) return false;
    Link(new Node(std::move(key), std::move(value), hash));
    table_->count++;
    return true;
  }
  V* Find(const K& key) {
    const Node* node = FindNode(key);
    return node ? &node->entry.value : nullptr;
  }
  const V* Find(const K& key) const { return const_cast<ZnDictionary*>(this)->Find(key); }
  bool Remove(const K& key) {
    Node* node = FindNode(key);
    if (node) Drop(node);
    return node != nullptr;
  }
  // Removes the entries that `goes` picks, in less time than one by one.
  template <class Goes>
  void RemoveIf(Goes goes) {
    for (size_t bucket = 0; table_ && bucket < table_->buckets.size(); bucket++) {
      Node* last = table_->buckets[bucket];
      for (Node* node = last ? last->next : nullptr; node;) {
        Node* going = std::exchange(node, node == last ? nullptr : node->next);
        if (goes(std::as_const(going->entry))) Drop(going);
      }
    }
  }
  void Flush() {
    if (!table_) return;
    std::vector<Node*> dying(table_->buckets.size());
    dying.swap(table_->buckets);
    table_->slots.assign(table_->slots.size(), nullptr);
    table_->count = 0;
    for (Node* last : dying) {
      if (!last) continue;
      for (Node* node = std::exchange(last->next, nullptr); node;) delete std::exchange(node, node->next);
    }
  }
  size_t Count() const { return table_ ? table_->count : 0; }
  bool IsEmpty() const { return Count() == 0; }
  size_t BucketCount() const { return table_ ? table_->buckets.size() : kFirstBuckets; }
  size_t Limit() const { return BucketCount() * kEntriesPerBucket; }

  Iterator begin() const { return Iterator(this, 0); }
  Iterator end() const { return Iterator(this, BucketCount()); }

 private:
  static constexpr size_t kFirstBuckets = 4, kEntriesPerBucket = 3, kGrowth = 4;
  static constexpr size_t kAhead = 8;
  static constexpr size_t kFirstSlots = std::bit_ceil(kFirstBuckets * kEntriesPerBucket);

  // An entry between its neighbours in the bucket, which are a ring, and before the next in its slot.
  struct Node : ZnInSlab<Node> {
    Node(K k, V v, uint32_t h)
        : entry{std::move(k), std::move(v)}, order(ZnDictionaryHash<K>::Order(entry.key)), hash(h) {}
    Entry entry;
    const uint32_t order;
    const uint32_t hash;
    Node* previous = this;
    Node* next = this;
    Node* chain = nullptr;
  };
  // Of a large table each of these is memory of its own to wait for, so they are small: a bucket is its last entry.
  struct Table {
    std::vector<Node*> buckets = std::vector<Node*>(kFirstBuckets);  // what the order follows
    std::vector<Node*> slots = std::vector<Node*>(kFirstSlots);      // what finds a key, by a better hash
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

    Iterator(const ZnDictionary* dictionary, size_t bucket) : dictionary_(dictionary), bucket_(bucket) {
      EnterBucket();
    }
    const Entry& operator*() const { return node_->entry; }
    const Entry* operator->() const { return &node_->entry; }
    Iterator& operator++() {
      if (node_ != dictionary_->table_->buckets[bucket_]) {
        node_ = node_->next;
        return *this;
      }
      bucket_++;
      EnterBucket();
      return *this;
    }
    bool operator==(const Iterator& other) const { return node_ == other.node_; }

   private:
    // Null behind the last entry.
    void EnterBucket() {
      node_ = nullptr;
      const Table* table = dictionary_->table_.get();
      for (; table && bucket_ < table->buckets.size(); bucket_++) {
        // Of a large table each entry is memory to wait for: those of buckets to come are asked for meanwhile.
        if (bucket_ + kAhead < table->buckets.size()) __builtin_prefetch(table->buckets[bucket_ + kAhead]);
        const Node* last = table->buckets[bucket_];
        if (!last) continue;
        node_ = last->next;
        return;
      }
    }

    const ZnDictionary* dictionary_;
    size_t bucket_;
    const Node* node_ = nullptr;
  };

 private:
  static uint32_t HashOf(const K& key) { return static_cast<uint32_t>(std::hash<K>()(key)); }
  Node*& BucketOf(const Node* node) { return table_->buckets[node->order % table_->buckets.size()]; }
  Node*& SlotOf(uint32_t hash) const { return table_->slots[hash & (table_->slots.size() - 1)]; }

  Node* FindNode(const K& key) const { return table_ ? FindNode(key, HashOf(key)) : nullptr; }
  Node* FindNode(const K& key, uint32_t hash) const {
    Node* node = SlotOf(hash);
    while (node && (node->hash != hash || !(node->entry.key == key))) node = node->chain;
    return node;
  }

  // At the end of its bucket.
  void Link(Node* node) {
    Node*& last = BucketOf(node);
    node->previous = last ? last : node;
    node->next = last ? last->next : node;
    node->previous->next = node;
    node->next->previous = node;
    last = node;
    Node*& slot = SlotOf(node->hash);
    node->chain = std::exchange(slot, node);
  }
  void Unlink(Node* node) {
    Node*& last = BucketOf(node);
    if (last == node) last = node->previous != node ? node->previous : nullptr;
    node->previous->next = node->next;
    node->next->previous = node->previous;
    Node** place = &SlotOf(node->hash);
    while (*place != node) place = &(*place)->chain;
    *place = node->chain;
  }

  void Drop(Node* node) {
    Unlink(node);
    table_->count--;
    delete node;  // the value may look at this dictionary while it dies
  }

  void RebuildTable() {
    std::vector<Node*> old(BucketCount() * kGrowth);
    old.swap(table_->buckets);
    table_->slots.assign(table_->slots.size() * kGrowth, nullptr);
    for (Node* last : old) {
      if (!last) continue;
      for (Node* node = std::exchange(last->next, nullptr); node;) Link(std::exchange(node, node->next));
    }
  }

  std::unique_ptr<Table> table_;
};
