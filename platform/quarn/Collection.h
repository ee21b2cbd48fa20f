#pragma once

#include <utility>

namespace Quarn {

// The entry of `key` in a map of Ptrs, or null.
template <class Map, class Key>
typename Map::mapped_type entryOf(const Map& map, const Key& key) {
  auto it = map.find(key);
  return it == map.end() ? typename Map::mapped_type() : it->second;
}

// The entry of `key`, created by `make()` when absent; an existing entry is
// returned untouched.
template <class Map, class Key, class Make>
typename Map::mapped_type entryIs(Map& map, const Key& key, Make&& make) {
  auto [it, inserted] = map.try_emplace(key);
  if (inserted) it->second = make();
  return it->second;
}

}  // namespace Quarn
