#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Interface {

// The ports on which an application wants a frame socket: the packet access
// manager keeps one open for every port listed true.
class PamDesiredIntfDir : public Quarn::PtrInterface {
 public:
  class Notifiee : public Quarn::BaseNotifiee<PamDesiredIntfDir> {
   public:
    // The entry of `intfId` was set, changed or removed.
    virtual void onIntfDesired(const Velo::IntfId& /*intfId*/) {}
  };

  explicit PamDesiredIntfDir(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

  // False for a port without an entry.
  bool intfDesired(const Velo::IntfId& intfId) const;
  void intfDesiredIs(const Velo::IntfId& intfId, bool desired);
  // By value: `intfId` may be the key of the entry being removed.
  void intfDesiredDel(Velo::IntfId intfId);
  std::size_t intfDesiredCount() const { return intfDesired_.size(); }
  const std::map<Velo::IntfId, bool>& intfDesireds() const { return intfDesired_; }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyIntfDesired(const Velo::IntfId& intfId);

  Quarn::Name name_;
  std::map<Velo::IntfId, bool> intfDesired_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Interface
