#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "quarn/Collection.h"
#include "quarn/Ptr.h"

namespace Quarn {

// A record's keyed collection of reference-counted children. The mutators say
// whether they changed the collection, so the owning record can notify only
// on a change.
template <class Key, class T>
class PtrMap {
 public:
  using Map = std::map<Key, Ptr<T>>;

  const Map& map() const { return map_; }
  std::size_t size() const { return map_.size(); }

  // Null when absent.
  Ptr<T> find(const Key& key) const { return entryOf(map_, key); }

  // The child under `key`, made as `new T(key, args...)` when absent;
  // `.second` is true when it was made.
  template <class... Args>
  std::pair<Ptr<T>, bool> emplace(const Key& key, Args&&... args) {
    if (Ptr<T> existing = find(key)) return {existing, false};
    Ptr<T> made = new T(key, std::forward<Args>(args)...);
    map_.emplace(key, made);
    return {made, true};
  }

  // Stores `value` under `key`, replacing any other; false when it was already there.
  bool assign(const Key& key, Ptr<T> value) {
    Ptr<T>& slot = map_[key];
    if (slot == value) return false;
    slot = std::move(value);
    return true;
  }

  bool erase(const Key& key) { return map_.erase(key) != 0; }
  void clear() { map_.clear(); }

 private:
  Map map_;
};

}  // namespace Quarn
