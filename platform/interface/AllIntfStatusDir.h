#pragma once

#include <cstddef>
#include <utility>

#include "quarn/PtrMap.h"
#include "velo/IntfId.h"

namespace Interface {

// The operational status of one interface.
class IntfStatus : public Quarn::PtrInterface {
 public:
  explicit IntfStatus(Velo::IntfId intfId) : intfId_(std::move(intfId)) {}

  const Velo::IntfId& intfId() const { return intfId_; }
  bool operUp() const { return operUp_; }
  void operUpIs(bool up) { operUp_ = up; }

 private:
  Velo::IntfId intfId_;
  bool operUp_ = false;
};

// The status of a set of interfaces, published in the central state
// database: every interface of the switch ("interface/status/all") or those
// of this system ("interface/status/local").
class AllIntfStatusDir : public Quarn::PtrInterface {
 public:
  static constexpr const char* kAllPath = "interface/status/all";
  static constexpr const char* kLocalPath = "interface/status/local";

  // The entry of `intfId`, created when absent.
  Quarn::Ptr<IntfStatus> intfStatusIs(const Velo::IntfId& intfId) { return intfStatus_.emplace(intfId).first; }
  // Null when absent.
  Quarn::Ptr<IntfStatus> intfStatus(const Velo::IntfId& intfId) const { return intfStatus_.find(intfId); }
  void intfStatusDel(const Velo::IntfId& intfId) { intfStatus_.erase(intfId); }
  std::size_t intfStatusCount() const { return intfStatus_.size(); }

 private:
  Quarn::PtrMap<Velo::IntfId, IntfStatus> intfStatus_;
};

}  // namespace Interface
