#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"

namespace Stp {

// The spanning-tree state of one port in one tree instance.
class MstiPortStatus : public Quarn::PtrInterface {
 public:
  // Root and designated ports forward; alternate and backup ports block.
  enum class Role : std::uint32_t {
    disabled = 0,
    root = 1,
    designated = 2,
    alternate = 3,
    backup = 4,
  };

  class Notifiee : public Quarn::BaseNotifiee<MstiPortStatus> {
   public:
    virtual void onRole() {}
  };

  // `name` is the port's name.
  explicit MstiPortStatus(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }

  Role role() const { return role_; }
  void roleIs(Role role);

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  std::string name_;
  Role role_ = Role::disabled;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Stp
