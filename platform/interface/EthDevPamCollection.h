#pragma once

#include <cstddef>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"
#include "velo/Pam.h"

namespace Interface {

// The open frame sockets of an application, one per port, kept by the
// packet access manager and watched by the application.
class EthDevPamCollection : public Quarn::PtrInterface {
 public:
  using PamMap = Quarn::PtrMap<Velo::IntfId, Velo::Pam>::Map;

  class Notifiee : public Quarn::BaseNotifiee<EthDevPamCollection> {
   public:
    // The socket of `intfId` was added or removed.
    virtual void onIntfPam(const Velo::IntfId& /*intfId*/) {}
  };

  explicit EthDevPamCollection(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

  // Null when the port has no socket.
  Quarn::Ptr<Velo::Pam> intfPam(const Velo::IntfId& intfId) const { return intfPam_.find(intfId); }
  void intfPamIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pam> pam);
  // By value: `intfId` may be the key of the entry being removed.
  void intfPamDel(Velo::IntfId intfId);
  std::size_t intfPamCount() const { return intfPam_.size(); }
  const PamMap& intfPams() const { return intfPam_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyIntfPam(const Velo::IntfId& intfId);

  Quarn::Name name_;
  Quarn::PtrMap<Velo::IntfId, Velo::Pam> intfPam_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Interface
