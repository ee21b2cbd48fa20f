#pragma once

#include <cstdint>
#include <map>

#include <nlohmann/json.hpp>

#include "MrpModel/MrpCounters.h"

namespace MrpCli {

// What one application's worker counted on one port since it started. The
// frame checks and the parse count in the engine, which counts per
// application only: the share of a port is what the engine counted while it
// handled the frames of that port (add()). Frames sent and the LeaveAlls in
// both directions are counted at the port's socket, leave indications and
// Talker Failed declarations from what the bridge tells its observer.
struct PortCounters {
  // Frames that passed the frame checks.
  std::uint64_t framesReceived = 0;
  std::uint64_t framesSent = 0;
  std::uint64_t droppedWrongDestination = 0;
  std::uint64_t droppedWrongEtherType = 0;
  std::uint64_t droppedBadVersion = 0;
  std::uint64_t droppedMalformed = 0;
  std::uint64_t droppedUnknownType = 0;
  std::uint64_t droppedUnknownApplication = 0;
  std::uint64_t joinIndications = 0;
  std::uint64_t leaveIndications = 0;
  // Attribute types a LeaveAll was declared for, frame by frame.
  std::uint64_t leaveAllsReceived = 0;
  std::uint64_t leaveAllsSent = 0;
  // The bridge's Talker Failed declarations on the port, by failure code.
  std::map<unsigned, std::uint64_t> talkerFailedDeclared;

  // Adds what the engine counted between `before` and `after`, while it
  // handled a frame of this port.
  void add(const Mrp::MrpCounters& before, const Mrp::MrpCounters& after);

  // {"framesReceived": 3, ..., "dropped": {"wrongDestination": 0, ...},
  //  ..., "talkerFailedDeclared": {"1": 2}}
  nlohmann::ordered_json json() const;
};

}  // namespace MrpCli
