#include <ios>

#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"

namespace Mrp {

void MrpLib::mrpSendAttribute(const MrpParameters& parameters) {
  QASSERT(mrpSm());
  MrpSm& sm = *mrpSm();
  MRP_TRACE(8, "sendAttribute called");
  // A standby engine has no machines to drive and sends nothing.
  if (!sm.active()) {
    mrpOutIntfQueueDelAll();
    return;
  }
  MrpParseContext& context = *sm.parseContext();
  const MrpAttribute saved{context.intfId(), context.attributeType(), context.attributeKey()};
  const Quarn::Seconds leaveAllTime = getLeaveAllTime(sm, saved.intfId);
  MrpApplicantSm& applicant = *sm.applicantSm();
  while (!mrpOutIntfQueue_.empty()) {
    const Velo::IntfId outIntf = mrpOutIntfQueueDeq();
    context.intfIdIs(parameters.intfId);
    context.attributeTypeIs(parameters.attributeType);
    context.attributeKeyIs(sm.mrpGetTxAttributeKey());
    switch (parameters.attributeEvent) {
      case static_cast<std::uint8_t>(MrpThreePackedEvent::newEvent):
      case static_cast<std::uint8_t>(MrpThreePackedEvent::joinIn):
      case static_cast<std::uint8_t>(MrpThreePackedEvent::joinMt): {
        const bool declareNew = parameters.attributeEvent == static_cast<std::uint8_t>(MrpThreePackedEvent::newEvent);
        applicant.applicantEventIs(declareNew ? MrpApplicantEvent::newReq : MrpApplicantEvent::joinReq);
        applicant.handleApplicantEvent();
        if (const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttribute(false)) {
          sm.mrpPopulateValueInDatabase(entry, true);
        }
        break;
      }
      case static_cast<std::uint8_t>(MrpThreePackedEvent::lv):
        applicant.applicantEventIs(MrpApplicantEvent::lvReq);
        applicant.handleApplicantEvent();
        mrpDeleteAttrOnDefaultStates();
        break;
      case MrpParameters::kLeaveAllEvent: {
        MRP_TRACE(7, "mrpSendAttribute: lvAllEvent_. intfId = " << outIntf << " attrType = "
                                                                 << static_cast<unsigned>(parameters.attributeType));
        mrpSendAttributeIntf(parameters, outIntf, false);
        // The type the engine's context held before the call, on purpose.
        sm.mrpStatus()->applicationDatabaseIs(application_)->leaveAllTimeIs({outIntf, saved.attributeType}, leaveAllTime);
        sm.leaveAllSm()->mrpRestartLeaveAllTimer(outIntf, saved.attributeType, leaveAllTime);
        break;
      }
      case MrpParameters::kInternalLeaveEvent:
        mrpHandleInternalLeave();
        break;
      default:
        MRP_TRACE(4, "Event = " << static_cast<char>(parameters.attributeEvent) << " not handled in sendAttributeIntf ");
        break;
    }
  }
  context.intfIdIs(saved.intfId);
  context.attributeTypeIs(saved.attributeType);
  context.attributeKeyIs(saved.attributeKey);
}

void MrpLib::mrpHandleInternalLeave() {
  MrpSm& sm = *mrpSm();
  MRP_TRACE(8, " Type = " << static_cast<char>(sm.parseContext()->attributeType()) << " Adv streamId = "
                          << std::hex << msrpTalkerAdvertiseTx_.streamId() << " Failed streamId = "
                          << msrpTalkerFailedTx_.talkerAdvertiseAttribute().streamId() << std::dec
                          << " Listener Stream Id = " << MsrpAttrType::listenerVector);
  sm.registrarSm()->mrpDeleteAttrFromLeavePending();
  sm.mrpDeleteAttrFromDatabase();
}

void MrpLib::mrpDeleteAttrOnDefaultStates() {
  MrpSm& sm = *mrpSm();
  const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttribute(false);
  if (!entry) return;
  MRP_TRACE(6, " mrpDeleteAttrOnDefaultStates called. reg state= " << entry->registrarState());
  if (entry->applicantState() != MrpApplicantState::vo || entry->registrarState() != MrpRegistrarState::mt) return;
  sm.registrarSm()->mrpDeleteAttrFromLeavePending();
  sm.mrpDeleteAttrFromDatabase();
}

}  // namespace Mrp
