#include "MrpSm/MrpApplicantSm.h"

#include <ios>
#include <sstream>

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

MrpApplicantEvent MrpApplicantSm::mrpMapRxApplicantEvent(std::uint8_t attributeEvent) {
  constexpr std::uint8_t kLastThreePackedEvent = static_cast<std::uint8_t>(MrpThreePackedEvent::lv);
  if (attributeEvent > kLastThreePackedEvent) return Event::noEvent;
  return static_cast<Event>(attributeEvent + static_cast<std::uint8_t>(Event::rNew));
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
  const MrpParseContext& context = *mrpSm_->parseContext();
  const State state = entry->applicantState();
  MRP_TRACE(7, "void Mrp::MrpApplicantSm::handleApplicantEvent()");
  MRP_TRACE(7, " Key = 0x" << std::hex << context.attributeKey() << std::dec
                           << " Type= " << static_cast<unsigned>(context.attributeType())
                           << " intf = " << context.intfId());
  MRP_TRACE(7, " Enter: state = " << state << " event = " << applicantEvent_);
  switch (state) {
    case State::vo: handleVeryAnxiousObserver(applicantEvent_); break;
    case State::vp: handleVeryAnxiousPassive(applicantEvent_); break;
    case State::vn: handleVeryAnxiousNew(applicantEvent_); break;
    case State::an: handleAnxiousNew(applicantEvent_); break;
    case State::aa: handleAnxiousActive(applicantEvent_); break;
    case State::qa: handleQuietActive(applicantEvent_); break;
    case State::la: handleLeavingActive(applicantEvent_); break;
    case State::ao: handleAnxiousObserver(applicantEvent_); break;
    case State::qo: handleQuietObserver(applicantEvent_); break;
    case State::ap: handleAnxiousPassive(applicantEvent_); break;
    case State::qp: handleQuietPassive(applicantEvent_); break;
    case State::lo: handleLeavingObserver(applicantEvent_); break;
    default:
      MRP_TRACE(8, "Invalid applicant State = " << state);
      return;
  }
  MRP_TRACE(7, " Exit: handleApplicantEvent, state = " << storedState());
}

// ---- The transition table, one handler per state. Events not named in a
// ---- row (Flush!, rNew! and noEvent everywhere) leave the state alone.

void MrpApplicantSm::handleVeryAnxiousObserver(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::joinReq: sendJoinTwiceToQuietActive(); break;
    case Event::rJoinIn: mrpSetApplicantState(State::ao); break;
    // The registered state is sent and VO kept, not left for LO.
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_:
    case Event::txLvAll: mrpApplicantSendRegisteredState(false); break;
    default: break;
  }
}

void MrpApplicantSm::handleVeryAnxiousPassive(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    // Join! is ignored: VP waits for New!, Lv!, rJoinIn! or txLA!.
    case Event::lvReq: mrpSetApplicantState(State::vo); break;
    case Event::rJoinIn:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    case Event::txLvAll:
      mrpApplicantSendRegisteredState(false);
      mrpApplicantSendJoin(true);
      mrpSetApplicantState(State::qa);
      break;
    default: break;
  }
}

void MrpApplicantSm::handleVeryAnxiousNew(Event event) {
  switch (event) {
    case Event::lvReq:
      mrpApplicantSendLeave();
      mrpSetApplicantState(State::vo);
      break;
    case Event::txLvAll: sendNewTwiceToQuietActive(); break;
    default: break;
  }
}

void MrpApplicantSm::handleAnxiousNew(Event event) {
  switch (event) {
    case Event::lvReq:
      mrpApplicantSendLeave();
      mrpSetApplicantState(State::vo);
      break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_: sendNewTwiceToQuietActive(); break;
    case Event::txLvAll:
      mrpApplicantSendNew(false);
      mrpSetApplicantState(State::qa);
      break;
    default: break;
  }
}

void MrpApplicantSm::handleAnxiousActive(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::lvReq:
      mrpApplicantSendLeave();
      mrpSetApplicantState(State::vo);
      break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_: sendJoinTwiceToQuietActive(); break;
    case Event::rJoinIn:
    case Event::rIn: mrpSetApplicantState(State::qa); break;
    // txLA! is ignored.
    default: break;
  }
}

void MrpApplicantSm::handleQuietActive(Event event) {
  switch (event) {
    // New! and Join! re-send twice and stay QA.
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::joinReq:
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_: sendJoinTwiceToQuietActive(); break;
    case Event::lvReq:
      mrpApplicantSendLeave();
      mrpSetApplicantState(State::vo);
      break;
    case Event::rJoinMt:
    case Event::rMt:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    // One Join, and the state is not written.
    case Event::txLvAll: mrpApplicantSendJoin(false); break;
    default: break;
  }
}

void MrpApplicantSm::handleLeavingActive(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::joinReq:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    case Event::txLvAll:
      mrpApplicantSendRegisteredState(false);
      mrpSetApplicantState(State::vo);
      break;
    default: break;
  }
}

void MrpApplicantSm::handleAnxiousObserver(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::joinReq:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_:
    case Event::txLvAll:
      mrpApplicantSendRegisteredState(false);
      mrpSetApplicantState(State::vo);
      break;
    case Event::rJoinIn: mrpSetApplicantState(State::qo); break;
    default: break;
  }
}

void MrpApplicantSm::handleQuietObserver(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    // Join! goes quiet passive without sending.
    case Event::joinReq: mrpSetApplicantState(State::qp); break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_:
    case Event::txLvAll:
      mrpApplicantSendRegisteredState(false);
      mrpSetApplicantState(State::vo);
      break;
    case Event::rJoinMt:
    case Event::rMt: mrpSetApplicantState(State::ao); break;
    default: break;
  }
}

void MrpApplicantSm::handleAnxiousPassive(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    // Join! is ignored.
    case Event::lvReq: mrpSetApplicantState(State::ao); break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_: sendJoinTwiceToQuietActive(); break;
    case Event::rJoinIn: mrpSetApplicantState(State::qp); break;
    case Event::txLvAll:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    default: break;
  }
}

void MrpApplicantSm::handleQuietPassive(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    // Join! is ignored.
    case Event::lvReq: mrpSetApplicantState(State::qo); break;
    case Event::redeclare:
    case Event::rLv:
    case Event::rxLvAll_: sendJoinTwiceToQuietActive(); break;
    case Event::rJoinMt:
    case Event::rMt:
    case Event::txLvAll:
      mrpApplicantSendJoin(false);
      mrpSetApplicantState(State::qa);
      break;
    default: break;
  }
}

void MrpApplicantSm::handleLeavingObserver(Event event) {
  switch (event) {
    case Event::newReq: sendNewTwiceToQuietActive(); break;
    case Event::joinReq: sendJoinTwiceToQuietActive(); break;
    case Event::rJoinMt:
    case Event::rMt: mrpSetApplicantState(State::vo); break;
    // rLv!, rLA! and txLA! are ignored.
    default: break;
  }
}

void MrpApplicantSm::sendNewTwiceToQuietActive() {
  mrpApplicantSendNew(false);
  mrpApplicantSendNew(true);
  mrpSetApplicantState(State::qa);
}

void MrpApplicantSm::sendJoinTwiceToQuietActive() {
  mrpApplicantSendJoin(false);
  mrpApplicantSendJoin(true);
  mrpSetApplicantState(State::qa);
}

// ---- The four send operations.

std::string MrpApplicantSm::storedState() const {
  const Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(false);
  if (!entry) return "absent";
  std::ostringstream text;
  text << entry->applicantState();
  return text.str();
}

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
