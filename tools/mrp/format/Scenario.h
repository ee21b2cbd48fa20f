#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "AttributeValue.h"
#include "BridgeConfig.h"
#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpConfig.h"
#include "quarn/Types.h"
#include "stp/MstiPortStatus.h"

namespace MrpCli {

// A network of bridges and what happens to it, as `mrp sim` runs it.
struct Scenario {
  // One end of a link: a bridge's port, written "bridge:port".
  struct PortRef {
    std::string bridge;
    std::string port;
    std::string text() const { return bridge + ":" + port; }
    friend bool operator==(const PortRef&, const PortRef&) = default;
  };
  struct Config {
    Quarn::Seconds leaveTime = Mrp::MrpConfig::kDefaultLeaveTime;
    Quarn::Seconds leaveAllTime = Mrp::MrpConfig::kDefaultLeaveAllTime;
    bool randomizeLeaveAll = true;
    unsigned seed = 1;
    // The share of each port's speed the SR classes may reserve (percent).
    MrpAgent::DeltaBandwidth deltaBandwidth = MrpAgent::kDefaultDeltaBandwidth;
  };
  struct Bridge {
    std::string name;
    std::vector<std::string> ports;
    // Its stream reservation keys (bridge id, port speeds and latencies, SR
    // class domains); the timers and the classes' shares are the scenario's
    // config's. (Initialised, so that a bridge may be written {name, ports}.)
    MrpAgent::BridgeConfig config = {};
  };
  struct Link {
    PortRef a;
    PortRef b;
  };

  // An end station's declaration on its port, or a bridge's own on every
  // port (no port); or their withdrawal.
  struct Declare {
    std::string bridge;
    std::optional<std::string> port;
    MrpAgent::AttributeValue value;
    bool withdraw = false;
  };
  // A link (an index into `links`) is cut or restored.
  struct LinkState {
    std::size_t link = 0;
    bool up = false;
  };
  struct Role {
    std::string bridge;
    std::string port;
    Stp::MstiPortStatus::Role role{};
  };
  // A whole Ethernet frame arrives at a port from its wire.
  struct Inject {
    std::string bridge;
    std::string port;
    std::vector<std::uint8_t> frame;
  };
  struct Event {
    Quarn::Seconds at = 0;
    std::variant<Declare, LinkState, Role, Inject> action;
  };

  // Every bridge runs these.
  std::vector<Mrp::MrpApplication> applications;
  Config config;
  std::vector<Bridge> bridges;
  std::vector<Link> links;
  Quarn::Seconds until = 60;
  // The longest run a scenario or --until may ask for: a week of simulated time.
  static constexpr Quarn::Seconds kLongestRun = 7 * 24 * 3600;
  // In time order; events at the same time in the order of the file.
  std::vector<Event> events;
};

}  // namespace MrpCli
