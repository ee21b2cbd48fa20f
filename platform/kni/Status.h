#pragma once

#include <string>

#include "hive/EntityManager.h"
#include "kni/NamespaceName.h"
#include "quarn/Ptr.h"

namespace KernelNetInfo {

// The status of one kernel network namespace, published in the central
// state database under "kni/ns/<name>/status".
class Status : public Quarn::PtrInterface {
 public:
  static constexpr const char* kPathFormat = "kni/ns/%s/status";

  explicit Status(NamespaceName nsName) : nsName_(std::move(nsName)) {}

  const NamespaceName& nsName() const { return nsName_; }

  // The database path of the status of namespace `nsName`.
  static std::string path(const NamespaceName& nsName);

 private:
  NamespaceName nsName_;
};

// Mounts the status of namespace `nsName` in `entityManager`: the one
// registered at its path, or a new one registered there. Null when the path
// holds an object of another type, which is left alone.
Quarn::Ptr<Status> statusMount(Hive::EntityManager& entityManager, const NamespaceName& nsName);

}  // namespace KernelNetInfo
