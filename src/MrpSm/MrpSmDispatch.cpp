#include <array>
#include <ios>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpValueFields.h"
#include "quarn/System.h"

namespace Mrp {

namespace {

// The saved octets of a parsed attribute as a value record of its type.
template <class Record>
Record savedValue(const MrpParsedAttribute& parsedAttribute) {
  std::array<std::uint8_t, sizeof(Record)> octets{};
  for (std::size_t i = 0; i < octets.size(); ++i) octets[i] = parsedAttribute.attributeValue(ValueIndex(i));
  return valueFromBytes<Record>(octets);
}

}  // namespace

void MrpSm::processParsedAttributes(const Velo::IntfId& intfId) {
  MRP_TRACE(7, "MrpSm::processedParsedAttributes( " << intfId << " )");
  // One period for every type this frame restarts.
  const Quarn::Seconds period = getLeaveAllTime(*this, intfId);
  const Quarn::Seconds now = Quarn::System::currentTime();
  while (!mrpRxLeaveAll_.empty()) {
    const std::uint8_t attributeType = mrpRxLeaveAll_.begin()->first;
    mrpProcessRxLeaveAll(intfId, attributeType);
    MRP_TRACE(7, " txLeaveAll repunched now = " << now << " at = " << now + period << " for type = "
                                                << static_cast<unsigned>(attributeType) << " on intf = " << intfId);
    leaveAllSm_->mrpRestartLeaveAllTimer(intfId, attributeType, period);
    mrpRxLeaveAll_.erase(attributeType);
  }
  mrpTransmitTxAttributes(intfId);
  // Domain attributes go first, so a talker is judged against the port's
  // current domain.
  while (!msrpParsedDomainKey_.empty()) {
    processParsedAttribute(msrpParsedDomainKey_.head(), intfId);
    msrpParsedDomainKeyDeq();
  }
  while (!mrpParsedAttributeKey_.empty()) {
    const MrpParsedAttributeKey key = mrpParsedAttributeKeyDeq();
    processParsedAttribute(key, intfId);
    mrpParsedAttributeDel(key);
  }
  // The Domain attributes' records are left by their loop: the frame is done.
  mrpParsedAttributeDelAll();
}

void MrpSm::processParsedAttribute(const MrpParsedAttributeKey& key, const Velo::IntfId& intfId) {
  const Quarn::Ptr<MrpParsedAttribute> parsedAttribute = mrpParsedAttribute(key);
  if (!parsedAttribute) return;
  fillMrpLibFromSavedValue(intfId, *parsedAttribute);
  const std::uint8_t event = parsedAttribute->attributeEvent();
  parseContext_->intfIdIs(intfId);
  parseContext_->attributeTypeIs(key.attributeType);
  parseContext_->attributeKeyIs(key.attributeKey);
  parseContext_->attributeEventIs(event);
  applicantSm_->applicantEventIs(MrpApplicantSm::mrpMapRxApplicantEvent(event));
  applicantSm_->handleApplicantEvent();
  registrarSm_->registrarEventIs(MrpRegistrarSm::mrpMapRxRegistrarEvent(event));
  registrarSm_->handleRegistrarEvent();
}

void MrpSm::mrpProcessRxLeaveAll(const Velo::IntfId& intfId, std::uint8_t attributeType) {
  MRP_TRACE(7, "MrpSm::mrpProcessRxLeaveAll( " << intfId << ", " << static_cast<unsigned>(attributeType) << " )");
  mrpAttrIterWalk(intfId, attributeType, [&](std::uint64_t key) {
    MRP_TRACE(8, "mrpProcessRxLeaveAll: attributeKey = 0x" << std::hex << key << std::dec
                 << " Type= " << static_cast<unsigned>(attributeType) << "interface = " << intfId);
    mrpFillContextFromDatabase({intfId, attributeType, key});
    Quarn::Ptr<MrpAttrDatabase> entry = mrpGetAttribute(false);
    if (!entry) {
      removeFromAttrIter(intfId, attributeType, key);
      return;
    }
    const MrpRegistrarState saved = entry->registrarState();
    // The applicant answers as if the registrar already held what this
    // frame declares for the attribute.
    MrpRegistrarState lookAhead = MrpRegistrarState::mt;
    if (const Quarn::Ptr<MrpParsedAttribute> parsed = mrpParsedAttribute({attributeType, key})) {
      const MrpRegistrarEvent event = MrpRegistrarSm::mrpMapRxRegistrarEvent(parsed->attributeEvent());
      if (event < MrpRegistrarEvent::rLv) lookAhead = MrpRegistrarState::in;
    }
    entry->registrarStateIs(lookAhead);
    applicantSm_->applicantEventIs(MrpApplicantEvent::rxLvAll_);
    applicantSm_->handleApplicantEvent();
    if ((entry = mrpGetAttribute(false))) entry->registrarStateIs(saved);
    registrarSm_->registrarEventIs(MrpRegistrarEvent::regLvAll_);
    registrarSm_->handleRegistrarEvent();
  });
}

void MrpSm::fillMrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttribute& parsedAttribute) {
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      fillMsrpLibFromSavedValue(intfId, parsedAttribute);
      break;
    case MrpApplication::mvrp:
      fillMvrpLibFromSavedValue(intfId, parsedAttribute);
      break;
  }
}

void MrpSm::fillMsrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttribute& parsedAttribute) {
  const std::uint8_t attributeType = parsedAttribute.key().attributeType;
  const auto fill = [&](auto& field) { field = savedValue<std::remove_reference_t<decltype(field)>>(parsedAttribute); };
  const bool known = withMsrpValue(*mrpLib_, attributeType, false, fill);
  withMsrpValue(*mrpLib_, attributeType, true, fill);
  if (!known) {
    MRP_TRACE(8, " valueSize = 0!! ");
    return;
  }
  if (static_cast<MsrpAttrType>(attributeType) != MsrpAttrType::domainVector) return;
  // A Domain is answered with the port's stored domain, not the received one.
  const Quarn::Ptr<MrpAttrDatabase> stored =
      mrpGetAttrFromDatabase(intfId, attributeType, parsedAttribute.key().attributeKey, true);
  if (stored) mrpLib_->msrpDomainVectorTx() = valueFromBytes<MsrpDomainAttribute>(stored->attributeValues());
}

void MrpSm::fillMvrpLibFromSavedValue(const Velo::IntfId&, const MrpParsedAttribute& parsedAttribute) {
  const auto fill = [&](MvrpVlanAttribute& field) { field = savedValue<MvrpVlanAttribute>(parsedAttribute); };
  const std::uint8_t attributeType = parsedAttribute.key().attributeType;
  const bool known = withMvrpValue(*mrpLib_, attributeType, false, fill);
  withMvrpValue(*mrpLib_, attributeType, true, fill);
  if (!known) MRP_TRACE(8, " valueSize = 0!! ");
}

}  // namespace Mrp
