#include "kni/Status.h"

#include <cstdio>

namespace KernelNetInfo {

std::string Status::path(const NamespaceName& nsName) {
  // A name is at most 150 bytes, so the path fits.
  char buf[NamespaceName::kMaxBytes + 32];
  std::snprintf(buf, sizeof buf, kPathFormat, nsName.string().c_str());
  return buf;
}

Quarn::Ptr<Status> statusMount(Hive::EntityManager& entityManager, const NamespaceName& nsName) {
  const std::string path = Status::path(nsName);
  if (entityManager.entities().count(path)) return entityManager.entity<Status>(path);
  Quarn::Ptr<Status> status = new Status(nsName);
  entityManager.entityIs(path, status);
  return status;
}

}  // namespace KernelNetInfo
