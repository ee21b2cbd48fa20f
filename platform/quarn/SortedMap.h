#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace Quarn {

// An ordered map kept in one sorted array: lookups are binary searches over
// contiguous memory, an insertion behind the largest key is an append, and
// an erased key is only marked, so that erasing keys one by one (a port's
// registrations leaving) never shifts the rest each time. The marked entries
// go in one pass once they outnumber the others. Iteration is in ascending
// key order and yields (key, value) pairs; inserting or erasing invalidates
// iterators.
template <class Key, class Value>
class SortedMap {
  struct Entry {
    Key key;
    Value value;
    bool present;
  };
  using Entries = std::vector<Entry>;

 public:
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::pair<const Key&, const Value&>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = value_type;

    const_iterator() = default;
    value_type operator*() const { return {it_->key, it_->value}; }
    const Key& key() const { return it_->key; }
    const_iterator& operator++() {
      ++it_;
      skip();
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const const_iterator& a, const const_iterator& b) { return a.it_ == b.it_; }

   private:
    friend class SortedMap;
    const_iterator(typename Entries::const_iterator it, typename Entries::const_iterator end) : it_(it), end_(end) {
      skip();
    }
    void skip() {
      while (it_ != end_ && !it_->present) ++it_;
    }
    typename Entries::const_iterator it_;
    typename Entries::const_iterator end_;
  };

  std::size_t size() const { return entries_.size() - erased_; }
  bool empty() const { return size() == 0; }

  // The value of `key`; null when absent.
  const Value* find(const Key& key) const {
    auto it = lowerBound(key);
    return it != entries_.end() && it->key == key && it->present ? &it->value : nullptr;
  }
  Value* find(const Key& key) { return const_cast<Value*>(std::as_const(*this).find(key)); }
  bool contains(const Key& key) const { return find(key) != nullptr; }

  // The value of `key`, made with `make()` when absent; an existing one is
  // returned untouched.
  template <class Make>
  Value& findOrInsert(const Key& key, Make&& make) {
    auto it = entries_.empty() || entries_.back().key < key ? entries_.end() : lowerBound(key);
    if (it != entries_.end() && it->key == key) {
      if (!it->present) {
        it->value = make();
        it->present = true;
        --erased_;
      }
      return it->value;
    }
    Entry entry{key, make(), true};
    if (entries_.size() == entries_.capacity()) {
      // Grows by half: a large map (a port's registrations) then wastes a
      // third of its array at most rather than half.
      const auto at = it - entries_.begin();
      entries_.reserve(entries_.size() + entries_.size() / 2 + 1);
      it = entries_.begin() + at;
    }
    return entries_.insert(it, std::move(entry))->value;
  }
  void insertOrAssign(const Key& key, Value value) {
    findOrInsert(key, [] { return Value(); }) = std::move(value);
  }

  void erase(const Key& key) {
    auto it = lowerBound(key);
    if (it == entries_.end() || !(it->key == key) || !it->present) return;
    it->value = Value();  // lets go of what the value holds now
    it->present = false;
    if (++erased_ * 2 > entries_.size()) compact();
  }
  void clear() {
    entries_.clear();
    erased_ = 0;
  }

  const_iterator begin() const { return {entries_.begin(), entries_.end()}; }
  const_iterator end() const { return {entries_.end(), entries_.end()}; }
  // The first key greater than `key`.
  const_iterator upperBound(const Key& key) const {
    auto it = std::upper_bound(entries_.begin(), entries_.end(), key,
                               [](const Key& k, const Entry& entry) { return k < entry.key; });
    return {it, entries_.end()};
  }

 private:
  // Look-ups mostly walk the keys in order (a received vector's values are
  // consecutive keys), so the entry after the last one found, and that one
  // again, are tried before a binary search.
  typename Entries::const_iterator lowerBound(const Key& key) const {
    for (std::size_t near : {finger_, finger_ - 1}) {
      if (near < entries_.size() && entries_[near].key == key) return found(near);
    }
    auto it = std::lower_bound(entries_.begin(), entries_.end(), key,
                               [](const Entry& entry, const Key& k) { return entry.key < k; });
    return found(static_cast<std::size_t>(it - entries_.begin()));
  }
  typename Entries::const_iterator found(std::size_t index) const {
    finger_ = index + 1;
    return entries_.begin() + static_cast<std::ptrdiff_t>(index);
  }
  typename Entries::iterator lowerBound(const Key& key) {
    return entries_.begin() + (std::as_const(*this).lowerBound(key) - entries_.cbegin());
  }
  void compact() {
    std::erase_if(entries_, [](const Entry& entry) { return !entry.present; });
    erased_ = 0;
  }

  Entries entries_;
  std::size_t erased_ = 0;
  // One past the entry the last look-up found; a hint only, checked before use.
  mutable std::size_t finger_ = 0;
};

// An ordered set in the same sorted array.
template <class Key>
class SortedSet {
  struct Present {};
  using Map = SortedMap<Key, Present>;

 public:
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Key;
    using difference_type = std::ptrdiff_t;
    using pointer = const Key*;
    using reference = const Key&;

    const_iterator() = default;
    const Key& operator*() const { return it_.key(); }
    const_iterator& operator++() {
      ++it_;
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const const_iterator& a, const const_iterator& b) { return a.it_ == b.it_; }

   private:
    friend class SortedSet;
    explicit const_iterator(typename Map::const_iterator it) : it_(it) {}
    typename Map::const_iterator it_;
  };

  std::size_t size() const { return map_.size(); }
  bool empty() const { return map_.empty(); }
  bool contains(const Key& key) const { return map_.contains(key); }
  std::size_t count(const Key& key) const { return contains(key) ? 1 : 0; }
  void insert(const Key& key) {
    map_.findOrInsert(key, [] { return Present{}; });
  }
  void erase(const Key& key) { map_.erase(key); }
  void clear() { map_.clear(); }

  const_iterator begin() const { return const_iterator(map_.begin()); }
  const_iterator end() const { return const_iterator(map_.end()); }
  const_iterator upper_bound(const Key& key) const { return const_iterator(map_.upperBound(key)); }

 private:
  Map map_;
};

}  // namespace Quarn
