#include "velo/IntfId.h"

#include <mutex>
#include <unordered_map>

namespace Velo {

const IntfId::Name& IntfId::emptyName() {
  static const Name& empty = interned(std::string());
  return empty;
}

const IntfId::Name& IntfId::interned(const std::string& name) {
  // Never destroyed: ids may live in objects that outlast static destruction.
  static auto* names = new std::unordered_map<std::string, std::size_t>;
  static auto* guard = new std::mutex;
  const std::lock_guard<std::mutex> lock(*guard);
  return *names->try_emplace(name, std::hash<std::string>{}(name)).first;
}

}  // namespace Velo
