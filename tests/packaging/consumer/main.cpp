// An embedding agent in one file, built against the installed library only:
// two MVRP engines over fresh records, their ports joined by an in-memory
// wire on a simulated clock. One declares VLAN 10; the other must register it.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmRecords.h"
#include "quarn/Clock.h"
#include "quarn/ClockScope.h"
#include "velo/MemPam.h"
#include "velo/PamFactoryScope.h"

namespace {

constexpr std::uint16_t kVlan = 10;
const auto kVlanVector = static_cast<std::uint8_t>(Mrp::MvrpAttrType::vlanVector);

class Agent : public Mrp::MrpLib {
 public:
  bool mrpJoinIndication(const Mrp::MrpParameters& p) override {
    joinedVlans.push_back(mvrpVlanVectorRx().vlanId());
    joinedKeys.push_back(p.attributeKey);
    return false;
  }
  void mrpLeaveIndication(const Mrp::MrpParameters&) override {}

  std::vector<std::uint16_t> joinedVlans;
  std::vector<std::uint64_t> joinedKeys;
};

struct Switch {
  Switch() : agent(new Agent) {
    agent->applicationWithDefaultFramingIs(Mrp::MrpApplication::mvrp);
    engine = Mrp::mrpSmFactory(Mrp::mrpSmRecordsNew(agent), /*standbyMode=*/false);
  }

  Quarn::Ptr<Agent> agent;
  Quarn::Ptr<Mrp::MrpSm> engine;
};

// Declares VLAN 10 on one switch's port; true when only the switch at the
// other end of the wire registers it.
bool vlanPropagates(const Quarn::Ptr<Quarn::SimClock>& clock, Velo::MemPamFactory& pams) {
  Quarn::Ptr<Velo::MemWire> wire = new Velo::MemWire(Velo::IntfId("left1"), Velo::EthAddr(0x02, 0, 0, 0, 0, 1),
                                                     Velo::IntfId("right1"), Velo::EthAddr(0x02, 0, 0, 0, 0, 2), clock);
  pams.pamIs(wire->a());
  pams.pamIs(wire->b());

  Switch left;
  Switch right;
  left.agent->mrpInterfaceEnable(Velo::IntfId("left1"));
  right.agent->mrpInterfaceEnable(Velo::IntfId("right1"));

  left.agent->mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(kVlan);
  left.agent->mrpOutIntfQueueEnq(Velo::IntfId("left1"));
  left.agent->mrpSendAttribute(
      {Velo::IntfId("left1"), kVlanVector, static_cast<std::uint8_t>(Mrp::MrpThreePackedEvent::joinIn)});
  clock->advance(1.0);

  std::printf("right registered %zu value(s), left %zu\n", right.agent->joinedVlans.size(),
              left.agent->joinedVlans.size());
  return right.agent->joinedVlans == std::vector<std::uint16_t>{kVlan} &&
         right.agent->joinedKeys == std::vector<std::uint64_t>{kVlan} && left.agent->joinedVlans.empty();
}

}  // namespace

int main() {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> pams = new Velo::MemPamFactory;
  const Quarn::System::ClockScope clockScope(clock);
  const Velo::PamFactoryScope pamFactoryScope(pams);
  const bool propagated = vlanPropagates(clock, *pams);
  if (!propagated) std::printf("VLAN %u was not registered across the wire\n", unsigned{kVlan});
  return propagated ? 0 : 1;
}
