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
// returned untouched. The key goes in only with the entry built: a `make()`
// that throws leaves the map as it was, not with a null entry.
template <class Map, class Key, class Make>
typename Map::mapped_type entryIs(Map& map, const Key& key, Make&& make) {
  if (auto it = map.find(key); it != map.end()) return it->second;
  typename Map::mapped_type entry = make();
  return map.try_emplace(key, std::move(entry)).first->second;
}

}  // namespace Quarn
