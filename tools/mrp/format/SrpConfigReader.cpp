#include "format/SrpConfigReader.h"

#include <algorithm>
#include <limits>

#include "BridgeId.h"
#include "SrClass.h"
#include "format/AttributeValueReader.h"

namespace MrpCli {

namespace {

// From 1 Mb/s to 1 Tb/s.
constexpr std::uint64_t kMinPortSpeed = 1'000'000;
constexpr std::uint64_t kMaxPortSpeed = 1'000'000'000'000;

// Each member of a {"port": number} object, checked against the ports.
template <class Read>
void readPerPort(const JsonNode& node, const std::vector<std::string>& ports, Read read) {
  node.object();
  for (const auto& [name, member] : node.json().items()) {
    const JsonNode value(member, node.place() + "." + name);
    if (std::find(ports.begin(), ports.end(), name) == ports.end()) {
      value.fail("not one of the bridge's ports (" + commaListed(ports) + ")");
    }
    read(name, value);
  }
}

}  // namespace

void readBridgeSrp(const JsonNode& bridge, const std::vector<std::string>& ports, MrpAgent::BridgeConfig& config) {
  // null: the default, an id made from the bridge's name.
  if (bridge.has("bridgeId") && !bridge["bridgeId"].json().is_null()) {
    const JsonNode id = bridge["bridgeId"];
    config.bridgeId = MrpAgent::bridgeIdFromText(id.string());
    if (!config.bridgeId) id.fail("not a bridge id (eight hex octets, e.g. 80:00:02:00:00:00:00:01)");
  }
  if (bridge.has("portSpeed")) {
    readPerPort(bridge["portSpeed"], ports, [&](const std::string& port, const JsonNode& value) {
      config.portSpeed[port] = value.whole(kMinPortSpeed, kMaxPortSpeed, "a speed in bit/s");
    });
  }
  if (bridge.has("portLatency")) {
    readPerPort(bridge["portLatency"], ports, [&](const std::string& port, const JsonNode& value) {
      config.portLatency[port] =
          static_cast<std::uint32_t>(value.whole(0, std::numeric_limits<std::uint32_t>::max(), "a latency in ns"));
    });
  }
  if (bridge.has("domains")) {
    const JsonNode domains = bridge["domains"];
    config.msrpDomains.clear();
    for (std::size_t i = 0; i < domains.listSize(); ++i) {
      const JsonNode item = domains.item(i);
      const Mrp::MsrpDomainAttribute domain = msrpDomainOf(item);
      if (!MrpAgent::srClassOfId(domain.srClassId())) {
        item["classId"].fail("not an SR class this bridge knows (6 for A, 5 for B)");
      }
      for (const Mrp::MsrpDomainAttribute& other : config.msrpDomains) {
        if (other.srClassId() == domain.srClassId()) {
          item.fail("a second domain of SR class id " + std::to_string(domain.srClassId()));
        }
        // A stream's priority names its class.
        if (other.srClassPriority() == domain.srClassPriority()) {
          item["priority"].fail("priority " + std::to_string(domain.srClassPriority()) + " is SR class id " +
                                std::to_string(other.srClassId()) + "'s already");
        }
      }
      config.msrpDomains.push_back(domain);
    }
  }
}

void readSrp(const JsonNode& srp, MrpAgent::BridgeConfig& config) {
  srp.object({"deltaBandwidth"});
  if (!srp.has("deltaBandwidth")) return;
  const JsonNode delta = srp["deltaBandwidth"];
  delta.object({"A", "B"});
  unsigned total = 0;
  for (const MrpAgent::SrClass& srClass : MrpAgent::kSrClasses) {
    const char name[] = {srClass.name, '\0'};
    unsigned& percent = config.deltaBandwidth[MrpAgent::srClassIndex(srClass)];
    if (delta.has(name)) percent = static_cast<unsigned>(delta[name].whole(0, 100, "a percent"));
    total += percent;
  }
  if (total > 100) delta.fail("the classes' shares add up to " + std::to_string(total) + "%, more than the port");
}

}  // namespace MrpCli
