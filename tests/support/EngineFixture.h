#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmRecords.h"
#include "quarn/Clock.h"
#include "quarn/ClockScope.h"

namespace MrpTest {

// A service object that records the indications it hears; it discards the
// joins while `discardJoins` is set.
class RecordingMrpLib : public Mrp::MrpLib {
 public:
  bool mrpJoinIndication(const Mrp::MrpParameters& p) override {
    joins.push_back(p);
    return discardJoins;
  }
  void mrpLeaveIndication(const Mrp::MrpParameters& p) override { leaves.push_back(p); }
  void mrpLeaveAllIndication(const Mrp::MrpParameters& p) override { leaveAlls.push_back(p); }
  void mrpListenerJoinWithoutIndication(const Mrp::MrpParameters& p) override {
    listenerJoins.push_back({p, msrpListenerVectorRx()});
  }

  // A Listener join the registrar took without an indication, and the
  // received value the hook found in the receive field.
  struct ListenerJoin {
    Mrp::MrpParameters parameters;
    Mrp::MsrpListenerAttribute received;
    friend bool operator==(const ListenerJoin&, const ListenerJoin&) = default;
  };

  std::vector<Mrp::MrpParameters> joins;
  std::vector<ListenerJoin> listenerJoins;
  std::vector<Mrp::MrpParameters> leaves;
  std::vector<Mrp::MrpParameters> leaveAlls;
  bool discardJoins = false;
};

// The records an agent hands to an engine, on a simulated clock installed as
// the process clock for the test's duration.
class EngineFixture : public ::testing::Test {
 protected:
  EngineFixture();

  // An engine for `application` over the fixture's records.
  Quarn::Ptr<Mrp::MrpSm> engineNew(Mrp::MrpApplication application, bool standbyMode);

  Quarn::Ptr<Quarn::SimClock> clock;
  Quarn::Ptr<RecordingMrpLib> mrpLib;
  // Shared by the fixture's engines and the test; their service object is mrpLib.
  Mrp::MrpSmRecords records;

 private:
  Quarn::System::ClockScope clockScope_{clock};
};

}  // namespace MrpTest
