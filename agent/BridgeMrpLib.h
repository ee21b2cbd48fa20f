#pragma once

#include "AttributeValue.h"
#include "MrpSm/MrpLib.h"

namespace MrpAgent {

// The service object of one application engine of a bridge: it passes the
// engine's join and leave indications, with the value concerned, to its owner,
// and the Listeners it hears again.
class BridgeMrpLib : public Mrp::MrpLib {
 public:
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void handleJoin(const Mrp::MrpParameters& indication, const AttributeValue& value) = 0;
    virtual void handleLeave(const Mrp::MrpParameters& indication, Mrp::MrpApplication application) = 0;
    // A registered Listener heard again, its declaration perhaps changed.
    virtual void handleListenerJoin(const Mrp::MrpParameters& join, const AttributeValue& value) = 0;
  };

  explicit BridgeMrpLib(Owner* owner) : owner_(owner) {}

  // Keeps every join: the bridge admits what it hears.
  bool mrpJoinIndication(const Mrp::MrpParameters& indication) override;
  void mrpLeaveIndication(const Mrp::MrpParameters& indication) override;
  void mrpListenerJoinWithoutIndication(const Mrp::MrpParameters& join) override;

 private:
  Owner* owner_;
};

}  // namespace MrpAgent
