// Drives an MSRP and an MVRP engine, set up with registrations and
// declarations, through a sequence of steps read from the input: frames of
// any bytes on their ports (whole, or behind a valid Ethernet header of the
// application, tagged or not), clock advances, the agent's requests, port
// role changes, ports going down and up, and management LeaveAlls (the
// format is in tests/support/ReceivePathSteps.h). After every step the
// invariants of both engines' data structures are checked
// (tests/support/EngineInvariants.h); a broken one is printed and aborts.
// Run it with the sanitizers.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "support/EngineInvariants.h"
#include "support/ReceivePathRig.h"
#include "support/ReceivePathSteps.h"

namespace {

void abortOnBroken(MrpTest::EngineInvariants& invariants, const char* engine, std::size_t step) {
  const std::vector<std::string> broken = invariants.violations();
  if (broken.empty()) return;
  for (const std::string& what : broken) std::fprintf(stderr, "%s engine, after step %zu: %s\n", engine, step, what.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The same input draws the same LeaveAll periods.
  std::srand(1);
  MrpTest::ReceivePathRig rig;
  MrpTest::EngineInvariants msrp(*rig.msrp().sm);
  MrpTest::EngineInvariants mvrp(*rig.mvrp().sm);
  abortOnBroken(msrp, "MSRP", 0);
  abortOnBroken(mvrp, "MVRP", 0);
  MrpTest::ReceivePath::StepReader steps(rig, std::span(data, size));
  for (std::size_t step = 1; steps.next(); ++step) {
    abortOnBroken(msrp, "MSRP", step);
    abortOnBroken(mvrp, "MVRP", step);
  }
  return 0;
}
