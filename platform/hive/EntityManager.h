#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "quarn/Ptr.h"
#include "quarn/PtrMap.h"
#include "quarn/Types.h"

namespace Hive {

// The registry of shared state objects, each under a path such as
// "bridging/config". Readers look an object up by path and by type.
class EntityManager : public Quarn::PtrInterface {
 public:
  using Entities = Quarn::PtrMap<std::string, Quarn::PtrInterface>::Map;

  explicit EntityManager(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

  // Registers `entity` under `path`, replacing whatever was there.
  void entityIs(const std::string& path, Quarn::Ptr<Quarn::PtrInterface> entity);
  // The object under `path`; null when there is none or it is not a T.
  template <class T>
  Quarn::Ptr<T> entity(const std::string& path) const {
    return Quarn::ptr_cast<T>(entities_.find(path));
  }
  void entityDel(const std::string& path) { entities_.erase(path); }
  std::size_t entityCount() const { return entities_.size(); }
  const Entities& entities() const { return entities_.map(); }

 private:
  Quarn::Name name_;
  Quarn::PtrMap<std::string, Quarn::PtrInterface> entities_;
};

}  // namespace Hive
