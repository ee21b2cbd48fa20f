#include "MrpSm/MrpApplicantSm.h"

#include <ios>

#include "MrpModel/MrpParameters.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

using Event = MrpApplicantEvent;
using State = MrpApplicantState;

MrpApplicantSm::MrpApplicantSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig)
    : mrpSm_(mrpSm), mrpConfig_(std::move(mrpConfig)) {
  handleInitialized();
}

void MrpApplicantSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpApplicantSm::handleInitialized()");
  initializedIs();
}

void MrpApplicantSm::mrpSetApplicantState(MrpApplicantState state) {
  if (Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(false)) entry->applicantStateIs(state);
}

void MrpApplicantSm::handleApplicantEvent() {
  const Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(true);
  if (!entry) {
    MRP_TRACE(4, " Memory failed for attrDatabase ");
    return;
  }
  handleApplicantEvent(*entry);
}

void MrpApplicantSm::handleApplicantEvent(MrpAttrDatabase& entry) {
  const State state = entry.applicantState();
  if (mrpSmTrace.enabled(7)) [[unlikely]] traceEntered(state);
  if (state > State::lo) {
    MRP_TRACE(8, "Invalid applicant State = " << state);
    return;
  }
  const MrpApplicantTransition& transition = mrpApplicantTransition(state, applicantEvent_);
  for (const MrpApplicantTransition::Send message : transition.messages()) send(message, entry);
  if (transition.writesState) entry.applicantStateIs(transition.next);
  MRP_TRACE(7, " Exit: handleApplicantEvent, state = " << entry.applicantState());
}

void MrpApplicantSm::traceEntered(State state) const {
  const MrpParseContext& context = *mrpSm_->parseContext();
  MRP_TRACE(7, "void Mrp::MrpApplicantSm::handleApplicantEvent()");
  MRP_TRACE(7, " Key = 0x" << std::hex << context.attributeKey() << std::dec
                           << " Type= " << static_cast<unsigned>(context.attributeType())
                           << " intf = " << context.intfId());
  MRP_TRACE(7, " Enter: state = " << state << " event = " << applicantEvent_);
}

void MrpApplicantSm::send(MrpApplicantTransition::Send message, const MrpAttrDatabase& entry) {
  using Send = MrpApplicantTransition::Send;
  const bool in = entry.registrarState() == MrpRegistrarState::in;
  const MrpThreePackedEvent join = in ? MrpThreePackedEvent::joinIn : MrpThreePackedEvent::joinMt;
  switch (message) {
    case Send::newFirst: send(MrpThreePackedEvent::newEvent, false); break;
    case Send::newSecond: send(MrpThreePackedEvent::newEvent, true); break;
    case Send::joinFirst: send(join, false); break;
    case Send::joinSecond: send(join, true); break;
    case Send::registeredStateFirst: send(in ? MrpThreePackedEvent::in : MrpThreePackedEvent::mt, false); break;
    case Send::leave: send(MrpThreePackedEvent::lv, false); break;
  }
}

// ---- The four send operations.

std::optional<bool> MrpApplicantSm::registrarIn() const {
  const Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(false);
  if (!entry) return std::nullopt;
  return entry->registrarState() == MrpRegistrarState::in;
}

void MrpApplicantSm::send(MrpThreePackedEvent event, bool secondPktContext) {
  const MrpParseContext& context = *mrpSm_->parseContext();
  const MrpParameters parameters{context.intfId(), context.attributeType(), static_cast<std::uint8_t>(event)};
  mrpSm_->mrpLib()->mrpSendAttributeIntf(parameters, context.intfId(), secondPktContext);
}

void MrpApplicantSm::mrpApplicantSendNew(bool secondPktContext) {
  send(MrpThreePackedEvent::newEvent, secondPktContext);
}

void MrpApplicantSm::mrpApplicantSendJoin(bool secondPktContext) {
  const std::optional<bool> in = registrarIn();
  if (!in) return;
  send(*in ? MrpThreePackedEvent::joinIn : MrpThreePackedEvent::joinMt, secondPktContext);
}

void MrpApplicantSm::mrpApplicantSendRegisteredState(bool secondPktContext) {
  const std::optional<bool> in = registrarIn();
  if (!in) return;
  send(*in ? MrpThreePackedEvent::in : MrpThreePackedEvent::mt, secondPktContext);
}

void MrpApplicantSm::mrpApplicantSendLeave() { send(MrpThreePackedEvent::lv, false); }

}  // namespace Mrp
