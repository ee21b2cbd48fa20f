#pragma once

#include <array>
#include <cstdint>

#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpModel/ValueIndex.h"
#include "quarn/Ptr.h"

namespace Mrp {

// The stored state of one registration: its machines' states and the octets
// of its value in wire order.
class MrpAttrDatabase : public Quarn::PtrInterface {
 public:
  static constexpr std::size_t kValueOctets = ValueIndex::max + 1;

  explicit MrpAttrDatabase(std::uint64_t attributeKey) : attributeKey_(attributeKey) {}

  std::uint64_t attributeKey() const { return attributeKey_; }

  // A new entry rests: applicant VO, registrar MT.
  MrpApplicantState applicantState() const { return applicantState_; }
  void applicantStateIs(MrpApplicantState state) { applicantState_ = state; }
  MrpRegistrarState registrarState() const { return registrarState_; }
  void registrarStateIs(MrpRegistrarState state) { registrarState_ = state; }

  std::uint8_t attributeValue(ValueIndex index) const { return attributeValue_[index.value()]; }
  void attributeValueIs(ValueIndex index, std::uint8_t octet) { attributeValue_[index.value()] = octet; }
  // All value octets, by index.
  const std::array<std::uint8_t, kValueOctets>& attributeValues() const { return attributeValue_; }

 private:
  // The states and octets first, into the padding behind the reference
  // count, and the key last: an entry then fits 88 bytes rather than 96.
  MrpApplicantState applicantState_ = MrpApplicantState::vo;
  MrpRegistrarState registrarState_ = MrpRegistrarState::mt;
  std::array<std::uint8_t, kValueOctets> attributeValue_{};
  const std::uint64_t attributeKey_;
};

}  // namespace Mrp
