#pragma once
// Contract. Hash table whose order of iteration is part of the daemon's behaviour: buckets in order, and in each bucket
// the order of insertion. It starts with 4 buckets and a limit of 12 entries; an insertion at the limit first
// multiplies both by 4 and re-inserts every entry, walking the old buckets in order. It never shrinks.
//
// Finding, inserting and removing don't depend on the length of a bucket, so names chosen to collide cost nothing
// extra.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

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
    if (table_->nodes.size() >= Limit()) RebuildTable();
    auto [node, isnew] = table_->nodes.emplace(std::move(key), std::move(value));
    if (isnew) Link(*node);
    return isnew;
  }
  V* Find(const K& key) {
    const Node* node = FindNode(key);
    return node ? &node->entry.value : nullptr;
  }
  const V* Find(const K& key) const { return const_cast<ZnDictionary*>(this)->Find(key); }
  bool Remove(const K& key) {
    if (!table_) return false;
    auto found = table_->nodes.find(key);
    if (found == table_->nodes.end()) return false;
    Unlink(*found);
    auto dying = table_->nodes.extract(found);  // the value may look at this dictionary while it dies
    return true;
  }
  void Flush() {
    if (!table_) return;
    std::fill(table_->buckets.begin(), table_->buckets.end(), Bucket());
    Nodes dying;
    dying.swap(table_->nodes);
  }
  size_t Count() const { return table_ ? table_->nodes.size() : 0; }
  bool IsEmpty() const { return Count() == 0; }
  size_t BucketCount() const { return table_ ? table_->buckets.size() : kFirstBuckets; }
  size_t Limit() const { return BucketCount() * kEntriesPerBucket; }

  Iterator begin() { return Iterator(this, 0); }
  Iterator end() { return Iterator(this, BucketCount()); }
  // Iterator at an entry that is there (end() otherwise), to go on from it in the table's order.
  Iterator At(const K& key) {
    const Node* node = FindNode(key);
    return node ? Iterator(this, BucketOf(key), node) : end();
  }

 private:
  static constexpr size_t kFirstBuckets = 4, kEntriesPerBucket = 3, kGrowth = 4;

  // An entry between its neighbours in the bucket.
  struct Node {
    Node(K key, V value) : entry{std::move(key), std::move(value)} {}
    Entry entry;
    mutable const Node* previous = nullptr;
    mutable const Node* next = nullptr;
  };
  struct Bucket {
    const Node* first = nullptr;
    const Node* last = nullptr;
  };
  // Not noexcept: so the library keeps each node's hash instead of working it out again when it passes the node.
  struct Hash {
    using is_transparent = void;
    size_t operator()(const K& key) const { return std::hash<K>()(key); }
    size_t operator()(const Node& node) const { return std::hash<K>()(node.entry.key); }
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const Node& left, const Node& right) const { return left.entry.key == right.entry.key; }
    bool operator()(const K& left, const Node& right) const { return left == right.entry.key; }
    bool operator()(const Node& left, const K& right) const { return left.entry.key == right; }
  };
  using Nodes = std::unordered_set<Node, Hash, Equal>;
  struct Table {
    Nodes nodes;
    std::vector<Bucket> buckets = std::vector<Bucket>(kFirstBuckets);
  };

 public:
  class Iterator {
   public:
    Iterator(ZnDictionary* dictionary, size_t bucket) : dictionary_(dictionary), bucket_(bucket) { EnterBucket(); }
    const Entry& operator*() const { return node_->entry; }
    const Entry* operator->() const { return &node_->entry; }
    Iterator& operator++() {
      node_ = node_->next;
      if (!node_) {
        bucket_++;
        EnterBucket();
      }
      return *this;
    }
    bool operator==(const Iterator& other) const { return node_ == other.node_; }

   private:
    friend class ZnDictionary;
    Iterator(ZnDictionary* dictionary, size_t bucket, const Node* node)
        : dictionary_(dictionary), bucket_(bucket), node_(node) {}

    // Null behind the last entry.
    void EnterBucket() {
      const Table* table = dictionary_->table_.get();
      for (; table && bucket_ < table->buckets.size(); bucket_++) {
        node_ = table->buckets[bucket_].first;
        if (node_) return;
      }
    }

    ZnDictionary* dictionary_;
    size_t bucket_;
    const Node* node_ = nullptr;
  };

 private:
  size_t BucketOf(const K& key) const { return ZnDictionaryHash<K>::Order(key) % BucketCount(); }

  const Node* FindNode(const K& key) const {
    if (!table_) return nullptr;
    auto found = table_->nodes.find(key);
    return found == table_->nodes.end() ? nullptr : &*found;
  }

  // At the end of its bucket.
  void Link(const Node& node) {
    Bucket& bucket = table_->buckets[BucketOf(node.entry.key)];
    node.previous = bucket.last;
    node.next = nullptr;
    (bucket.last ? bucket.last->next : bucket.first) = &node;
    bucket.last = &node;
  }
  void Unlink(const Node& node) {
    Bucket& bucket = table_->buckets[BucketOf(node.entry.key)];
    (node.previous ? node.previous->next : bucket.first) = node.next;
    (node.next ? node.next->previous : bucket.last) = node.previous;
  }

  void RebuildTable() {
    std::vector<Bucket> old(BucketCount() * kGrowth);
    old.swap(table_->buckets);
    for (const Bucket& bucket : old) {
      for (const Node* node = bucket.first; node;) {
        const Node* next = node->next;
        Link(*node);
        node = next;
      }
    }
    table_->nodes.reserve(Limit());
  }

  std::unique_ptr<Table> table_;
};
