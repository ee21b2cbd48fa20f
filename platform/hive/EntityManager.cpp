#include "hive/EntityManager.h"

#include "quarn/Assert.h"

namespace Hive {

void EntityManager::entityIs(const std::string& path, Quarn::Ptr<Quarn::PtrInterface> entity) {
  // An absent object is removed with entityDel, never stored as null.
  QASSERT(entity);
  entities_.assign(path, std::move(entity));
}

}  // namespace Hive
