#pragma once

namespace MrpCli {

// The network `mrp sim` runs without a scenario file, as scenario JSON:
// h1 - sw1 - sw2 - sw3 - h2, where h1 declares a VLAN and talks a stream that
// h2 listens to; both reach the far end and stay through LeaveAll cycles,
// the VLAN is withdrawn, the link sw2 - sw3 is cut and restored, and the
// stream ends.
const char* defaultScenarioJson();

}  // namespace MrpCli
