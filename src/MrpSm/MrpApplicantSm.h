#pragma once

#include <cstdint>
#include <optional>

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpSm/MrpApplicantTransitions.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpAttrDatabase;
class MrpSm;

// The applicant machine: one executor per engine acting on the engine's
// current attribute, whose applicant state lives in its database entry. It
// carries out the transitions of MrpApplicantTable; a message sent twice goes
// once into the port's first transmit packet and once into its second.
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
  // One transition of the current attribute, whose entry the caller found.
  void handleApplicantEvent(MrpAttrDatabase& entry);

  // A received attribute event (New 0 .. Lv 5) as an applicant event (rNew!
  // .. rLv!); any other code is noEvent.
  static constexpr MrpApplicantEvent mrpMapRxApplicantEvent(std::uint8_t attributeEvent) {
    constexpr auto kLastThreePackedEvent = static_cast<std::uint8_t>(MrpThreePackedEvent::lv);
    if (attributeEvent > kLastThreePackedEvent) return MrpApplicantEvent::noEvent;
    return static_cast<MrpApplicantEvent>(attributeEvent + static_cast<std::uint8_t>(MrpApplicantEvent::rNew));
  }
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
  // The lines a handled event starts with at trace level 7; kept out of the
  // event's path, which runs for every received value.
  [[gnu::cold]] void traceEntered(MrpApplicantState state) const;
  // One message of a transition, Join and the registered state following
  // the entry's registrar.
  void send(MrpApplicantTransition::Send send, const MrpAttrDatabase& entry);
  // One message of the current attribute into the chosen packet.
  void send(MrpThreePackedEvent event, bool secondPktContext);
  // Whether the current attribute's registrar is IN; nullopt without an entry.
  std::optional<bool> registrarIn() const;

  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  MrpApplicantEvent applicantEvent_ = MrpApplicantEvent::noEvent;
};

}  // namespace Mrp
