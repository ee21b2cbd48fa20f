#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpThreePackedEvent.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// The applicant machine: one executor per engine acting on the engine's
// current attribute, whose applicant state lives in its database entry.
//
// There is no transmit opportunity and no periodic timer: where a transition
// would pass through a transient state and send later, this machine sends
// at once and goes straight to the state it would come to rest in. A message
// sent twice goes once into the port's first transmit packet and once into
// its second. Only VO, QA, AO, QO and QP are ever entered; the other states
// are handled when found stored.
class MrpApplicantSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpApplicantSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig);
  MrpApplicantSm(const MrpApplicantSm&) = delete;
  MrpApplicantSm& operator=(const MrpApplicantSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }

  void handleInitialized();

  // The event the next handleApplicantEvent() applies; not cleared after use.
  MrpApplicantEvent applicantEvent() const { return applicantEvent_; }
  void applicantEventIs(MrpApplicantEvent event) { applicantEvent_ = event; }
  // One transition of the current attribute, creating its entry if missing.
  void handleApplicantEvent();

  // A received attribute event (New 0 .. Lv 5) as an applicant event (rNew!
  // .. rLv!); any other code is noEvent.
  static MrpApplicantEvent mrpMapRxApplicantEvent(std::uint8_t attributeEvent);
  // Writes the current attribute's state if it has an entry; creates none.
  void mrpSetApplicantState(MrpApplicantState state);

  // Put one message for the current attribute into the port's first packet,
  // or its second when `secondPktContext`. Join is JoinIn while the
  // registrar is IN, else JoinMt; the registered state is In or Mt likewise
  // (a registrar in LV counts as not IN). Both send nothing for an
  // attribute without an entry. Leave always goes into the first packet.
  void mrpApplicantSendNew(bool secondPktContext);
  void mrpApplicantSendJoin(bool secondPktContext);
  void mrpApplicantSendRegisteredState(bool secondPktContext);
  void mrpApplicantSendLeave();

 private:
  // One handler per stored state; each arm reads like the row of the table.
  void handleVeryAnxiousObserver(MrpApplicantEvent event);
  void handleVeryAnxiousPassive(MrpApplicantEvent event);
  void handleVeryAnxiousNew(MrpApplicantEvent event);
  void handleAnxiousNew(MrpApplicantEvent event);
  void handleAnxiousActive(MrpApplicantEvent event);
  void handleQuietActive(MrpApplicantEvent event);
  void handleLeavingActive(MrpApplicantEvent event);
  void handleAnxiousObserver(MrpApplicantEvent event);
  void handleQuietObserver(MrpApplicantEvent event);
  void handleAnxiousPassive(MrpApplicantEvent event);
  void handleQuietPassive(MrpApplicantEvent event);
  void handleLeavingObserver(MrpApplicantEvent event);

  // New into both packets, then QA.
  void sendNewTwiceToQuietActive();
  // Join into both packets, then QA.
  void sendJoinTwiceToQuietActive();
  // One message of the current attribute into the chosen packet.
  void send(MrpThreePackedEvent event, bool secondPktContext);
  // Whether the current attribute's registrar is IN; nullopt without an entry.
  std::optional<bool> registrarIn() const;
  // The current attribute's applicant state as traced, re-read from the store.
  std::string storedState() const;

  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  MrpApplicantEvent applicantEvent_ = MrpApplicantEvent::noEvent;
};

}  // namespace Mrp
