#include <array>
#include <ios>
#include <type_traits>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpParsedRunValue.h"
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

// A Domain is answered with the port's stored domain, not the received one.
void answerDomainWithStored(MrpLib& lib, std::uint8_t attributeType, const MrpAttrDatabase* stored) {
  if (lib.application() != MrpApplication::msrp ||
      static_cast<MsrpAttrType>(attributeType) != MsrpAttrType::domainVector || stored == nullptr) {
    return;
  }
  lib.msrpDomainVectorTx() = valueFromBytes<MsrpDomainAttribute>(stored->attributeValues());
}

void fillMsrpLibFromSavedValue(MrpLib& lib, const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets,
                               const MrpAttrDatabase* stored) {
  const auto fill = [&](auto& field) { field = valueFromBytes<std::remove_reference_t<decltype(field)>>(octets); };
  const bool known = withMsrpValue(lib, key.attributeType, false, fill);
  withMsrpValue(lib, key.attributeType, true, fill);
  if (!known) {
    MRP_TRACE(8, " valueSize = 0!! ");
    return;
  }
  answerDomainWithStored(lib, key.attributeType, stored);
}

void fillMvrpLibFromSavedValue(MrpLib& lib, const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets) {
  const auto fill = [&](MvrpVlanAttribute& field) { field = valueFromBytes<MvrpVlanAttribute>(octets); };
  const bool known = withMvrpValue(lib, key.attributeType, false, fill);
  withMvrpValue(lib, key.attributeType, true, fill);
  if (!known) MRP_TRACE(8, " valueSize = 0!! ");
}

// The saved octets of a parsed attribute into the receive and transmit
// fields of its type; `stored` is its registration, null when it has none.
void fillLibFromSavedOctets(MrpLib& lib, const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets,
                              const MrpAttrDatabase* stored) {
  switch (lib.application()) {
    case MrpApplication::msrp:
      fillMsrpLibFromSavedValue(lib, key, octets, stored);
      break;
    case MrpApplication::mvrp:
      fillMvrpLibFromSavedValue(lib, key, octets);
      break;
  }
}

// The run's value `index` into the receive and transmit fields of its type.
void fillMrpLibFromRun(MrpLib& lib, const MrpParsedRuns& runs, const MrpParsedRuns::Run& run, std::size_t index,
                       const MrpAttrDatabase* stored) {
  withReceiveField(lib, run.attributeType, [&](auto& received) {
    using Record = std::remove_cvref_t<decltype(received)>;
    received = mrpParsedRunValue<Record>(runs, run, index);
    withValueField(lib, run.attributeType, true, [&](auto& transmitted) {
      if constexpr (std::is_same_v<std::remove_cvref_t<decltype(transmitted)>, Record>) transmitted = received;
    });
  });
  answerDomainWithStored(lib, run.attributeType, stored);
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
    receivedFrame_.msrpParsedDomainKeyDeq();
  }
  while (!receivedFrame_.mrpParsedAttributeKey().empty()) {
    const MrpParsedAttributeKey key = receivedFrame_.mrpParsedAttributeKeyDeq();
    processParsedAttribute(key, intfId);
    receivedFrame_.mrpParsedAttributeDel(key);
  }
  // The Domain attributes' records are left by their loop: the frame is done.
  receivedFrame_.mrpParsedAttributeDelAll();
}

// A frame collected vector by vector holds each key once: its values go in
// the same order, Domain runs first, without being collected one by one.
void MrpSm::processParsedRuns(const Velo::IntfId& intfId) {
  const bool msrp = mrpLib_->application() == MrpApplication::msrp;
  for (const bool domains : {true, false}) {
    for (const MrpParsedRuns::Run& run : receivedFrame_.runs().runs()) {
      const bool domain = msrp && static_cast<MsrpAttrType>(run.attributeType) == MsrpAttrType::domainVector;
      if (domain != domains) continue;
      const Quarn::Ptr<MrpIntfTypeApplicant> registrations =
          attributeStore_.mrpIntfTypeApplicant(intfId, run.attributeType);
      for (std::size_t i = 0; i < run.count; ++i) {
        processParsedValue(intfId, registrations.ptr(), {run.attributeType, run.firstKey + i},
                           receivedFrame_.runs().event(run, i),
                           [&](const MrpAttrDatabase* stored) {
                             fillMrpLibFromRun(*mrpLib_, receivedFrame_.runs(), run, i, stored);
                           });
      }
    }
  }
  receivedFrame_.runsDelAll();
}

void MrpSm::processParsedAttribute(const MrpParsedAttributeKey& key, const Velo::IntfId& intfId) {
  const Quarn::Ptr<MrpParsedAttribute> parsedAttribute = receivedFrame_.mrpParsedAttribute(key);
  if (!parsedAttribute) return;
  const auto octets = savedOctets(*parsedAttribute);
  processParsedValue(intfId, attributeStore_.mrpIntfTypeApplicant(intfId, key.attributeType).ptr(), key,
                     parsedAttribute->attributeEvent(),
                     [&](const MrpAttrDatabase* stored) { fillLibFromSavedOctets(*mrpLib_, key, octets, stored); });
}

// The registration is found, or created, once: the fill, the applicant and
// the registrar all act on it. The store holds it meanwhile: the machines
// only queue additions and deletions, which the review machines commit later.
template <class Fill>
void MrpSm::processParsedValue(const Velo::IntfId& intfId, const MrpIntfTypeApplicant* registrations,
                               const MrpParsedAttributeKey& key, std::uint8_t event, Fill&& fill) {
  parseContext_->intfIdIs(intfId);
  parseContext_->attributeTypeIs(key.attributeType);
  parseContext_->attributeKeyIs(key.attributeKey);
  parseContext_->attributeEventIs(event);
  MrpAttrDatabase* entry = attributeStore_.entryIn(registrations, {intfId, key.attributeType, key.attributeKey});
  fill(entry);
  // A new registration takes the received value the fill put in place.
  if (!entry) entry = mrpAddAttrToDatabase(intfId, key.attributeType, key.attributeKey, false).ptr();
  applicantSm_->applicantEventIs(MrpApplicantSm::mrpMapRxApplicantEvent(event));
  applicantSm_->handleApplicantEvent(*entry);
  registrarSm_->registrarEventIs(MrpRegistrarSm::mrpMapRxRegistrarEvent(event));
  registrarSm_->handleRegistrarEvent(*entry);
}

void MrpSm::mrpProcessRxLeaveAll(const Velo::IntfId& intfId, std::uint8_t attributeType) {
  MRP_TRACE(7, "MrpSm::mrpProcessRxLeaveAll( " << intfId << ", " << static_cast<unsigned>(attributeType) << " )");
  const Quarn::Ptr<MrpIntfTypeApplicant> registrations = attributeStore_.mrpIntfTypeApplicant(intfId, attributeType);
  mrpAttrIterWalk(intfId, attributeType, [&](std::uint64_t key) {
    MRP_TRACE(8, "mrpProcessRxLeaveAll: attributeKey = 0x" << std::hex << key << std::dec
                 << " Type= " << static_cast<unsigned>(attributeType) << "interface = " << intfId);
    const MrpAttribute attribute{intfId, attributeType, key};
    MrpAttrDatabase* entry = attributeStore_.entryIn(registrations.ptr(), attribute);
    mrpFillContextFromDatabase(attribute, entry);
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
    applicantSm_->handleApplicantEvent(*entry);
    entry->registrarStateIs(saved);
    registrarSm_->registrarEventIs(MrpRegistrarEvent::regLvAll_);
    registrarSm_->handleRegistrarEvent(*entry);
  });
}

void MrpSm::fillMrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttribute& parsedAttribute) {
  const MrpParsedAttributeKey& key = parsedAttribute.key();
  const Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, key.attributeType, key.attributeKey, true);
  fillLibFromSavedOctets(*mrpLib_, key, savedOctets(parsedAttribute), stored.ptr());
}

}  // namespace Mrp
