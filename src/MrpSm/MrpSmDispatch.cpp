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

// The saved octets of a parsed attribute, from index 0.
std::array<std::uint8_t, MrpParsedRuns::kMaxValueOctets> savedOctets(const MrpParsedAttribute& parsedAttribute) {
  std::array<std::uint8_t, MrpParsedRuns::kMaxValueOctets> octets{};
  for (std::size_t i = 0; i < octets.size(); ++i) octets[i] = parsedAttribute.attributeValue(ValueIndex(i));
  return octets;
}

}  // namespace

void MrpSm::processParsedAttributes(const Velo::IntfId& intfId) {
  MRP_TRACE(7, "MrpSm::processedParsedAttributes( " << intfId << " )");
  // One period for every type this frame restarts.
  const Quarn::Seconds period = getLeaveAllTime(*this, intfId);
  const Quarn::Seconds now = Quarn::System::currentTime();
  while (!receivedFrame_.mrpRxLeaveAll().empty()) {
    const std::uint8_t attributeType = receivedFrame_.mrpRxLeaveAll().begin()->first;
    mrpProcessRxLeaveAll(intfId, attributeType);
    MRP_TRACE(7, " txLeaveAll repunched now = " << now << " at = " << now + period << " for type = "
                                                << static_cast<unsigned>(attributeType) << " on intf = " << intfId);
    leaveAllSm_->mrpRestartLeaveAllTimer(intfId, attributeType, period);
    receivedFrame_.mrpRxLeaveAllDel(attributeType);
  }
  mrpTransmitTxAttributes(intfId);
  // Domain attributes go first, so a talker is judged against the port's
  // current domain.
  if (!receivedFrame_.runs().empty()) {
    processParsedRuns(intfId);
    return;
  }
  while (!receivedFrame_.msrpParsedDomainKey().empty()) {
    processParsedAttribute(receivedFrame_.msrpParsedDomainKey().head(), intfId);
    msrpParsedDomainKeyDeq();
  }
  while (!receivedFrame_.mrpParsedAttributeKey().empty()) {
    const MrpParsedAttributeKey key = mrpParsedAttributeKeyDeq();
    processParsedAttribute(key, intfId);
    mrpParsedAttributeDel(key);
  }
  // The Domain attributes' records are left by their loop: the frame is done.
  mrpParsedAttributeDelAll();
}

// A frame collected vector by vector holds each key once: its values go in
// the same order, Domain runs first, without being collected one by one.
void MrpSm::processParsedRuns(const Velo::IntfId& intfId) {
  std::array<std::uint8_t, MrpParsedRuns::kMaxValueOctets> octets{};
  const bool msrp = mrpLib_->application() == MrpApplication::msrp;
  for (const bool domains : {true, false}) {
    for (const MrpParsedRuns::Run& run : receivedFrame_.runs().runs()) {
      const bool domain = msrp && static_cast<MsrpAttrType>(run.attributeType) == MsrpAttrType::domainVector;
      if (domain != domains) continue;
      for (std::size_t i = 0; i < run.count; ++i) {
        const std::size_t size = receivedFrame_.parsedRunValue(run, i, octets);
        processParsedValue(intfId, {run.attributeType, run.firstKey + i}, receivedFrame_.runs().event(run, i),
                           std::span(octets.data(), size));
      }
    }
  }
  receivedFrame_.runsDelAll();
}

void MrpSm::processParsedAttribute(const MrpParsedAttributeKey& key, const Velo::IntfId& intfId) {
  const Quarn::Ptr<MrpParsedAttribute> parsedAttribute = mrpParsedAttribute(key);
  if (!parsedAttribute) return;
  const auto octets = savedOctets(*parsedAttribute);
  processParsedValue(intfId, key, parsedAttribute->attributeEvent(), octets);
}

void MrpSm::processParsedValue(const Velo::IntfId& intfId, const MrpParsedAttributeKey& key, std::uint8_t event,
                               std::span<const std::uint8_t> octets) {
  fillMrpLibFromSavedValue(intfId, key, octets);
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
    if (const std::optional<std::uint8_t> received = receivedFrame_.parsedEventOf(attributeType, key)) {
      const MrpRegistrarEvent event = MrpRegistrarSm::mrpMapRxRegistrarEvent(*received);
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
  const auto octets = savedOctets(parsedAttribute);
  fillMrpLibFromSavedValue(intfId, parsedAttribute.key(), octets);
}

void MrpSm::fillMrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttributeKey& key,
                                     std::span<const std::uint8_t> octets) {
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      fillMsrpLibFromSavedValue(intfId, key, octets);
      break;
    case MrpApplication::mvrp:
      fillMvrpLibFromSavedValue(key, octets);
      break;
  }
}

void MrpSm::fillMsrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttributeKey& key,
                                      std::span<const std::uint8_t> octets) {
  const auto fill = [&](auto& field) { field = valueFromBytes<std::remove_reference_t<decltype(field)>>(octets); };
  const bool known = withMsrpValue(*mrpLib_, key.attributeType, false, fill);
  withMsrpValue(*mrpLib_, key.attributeType, true, fill);
  if (!known) {
    MRP_TRACE(8, " valueSize = 0!! ");
    return;
  }
  if (static_cast<MsrpAttrType>(key.attributeType) != MsrpAttrType::domainVector) return;
  // A Domain is answered with the port's stored domain, not the received one.
  const Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, key.attributeType, key.attributeKey, true);
  if (stored) mrpLib_->msrpDomainVectorTx() = valueFromBytes<MsrpDomainAttribute>(stored->attributeValues());
}

void MrpSm::fillMvrpLibFromSavedValue(const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets) {
  const auto fill = [&](MvrpVlanAttribute& field) { field = valueFromBytes<MvrpVlanAttribute>(octets); };
  const bool known = withMvrpValue(*mrpLib_, key.attributeType, false, fill);
  withMvrpValue(*mrpLib_, key.attributeType, true, fill);
  if (!known) MRP_TRACE(8, " valueSize = 0!! ");
}

}  // namespace Mrp
