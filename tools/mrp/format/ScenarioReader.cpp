#include "format/ScenarioReader.h"

#include <algorithm>
#include <set>

#include "common/Applications.h"
#include "common/Hex.h"
#include "format/AttributeValueReader.h"
#include "format/SrpConfigReader.h"
#include "velo/EthHdr.h"

namespace MrpCli {

namespace {

using Node = JsonNode;

// Names become ports and file names: letters, digits, '-', '_' and '.'.
bool goodName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.';
  });
}

class Reader {
 public:
  Scenario read(const Node& root) {
    root.object({"applications", "config", "bridges", "links", "until", "events"});
    if (root.has("applications")) {
      readApplications(root["applications"]);
    } else {
      scenario_.applications = {Mrp::MrpApplication::mvrp, Mrp::MrpApplication::msrp};
    }
    if (root.has("config")) readConfig(root["config"]);
    readBridges(root["bridges"]);
    if (root.has("links")) readLinks(root["links"]);
    if (root.has("until")) {
      scenario_.until = root["until"].seconds();
      if (scenario_.until > Scenario::kLongestRun) {
        root["until"].fail(root.json()["until"].dump() + " is longer than a week of simulated time (" +
                           std::to_string(static_cast<long>(Scenario::kLongestRun)) + " s at most)");
      }
    }
    if (root.has("events")) readEvents(root["events"]);
    return std::move(scenario_);
  }

 private:
  void readApplications(const Node& node) {
    if (node.listSize() == 0) node.fail("at least one application is needed (mvrp, msrp)");
    for (std::size_t i = 0; i < node.listSize(); ++i) {
      const std::string name = node.item(i).string();
      const auto application = applicationNamed(name);
      if (!application) node.item(i).fail("unknown application '" + name + "' (mvrp or msrp)");
      if (!runs(*application)) scenario_.applications.push_back(*application);
    }
  }

  void readConfig(const Node& node) {
    node.object({"leaveTime", "leaveAllTime", "randomizeLeaveAll", "seed", "srp"});
    Scenario::Config& config = scenario_.config;
    if (node.has("leaveTime")) config.leaveTime = node["leaveTime"].seconds();
    if (node.has("leaveAllTime")) config.leaveAllTime = node["leaveAllTime"].seconds();
    if (node.has("randomizeLeaveAll")) config.randomizeLeaveAll = node["randomizeLeaveAll"].boolean();
    if (node.has("seed")) config.seed = static_cast<unsigned>(node["seed"].whole(0, 0xffffffff, "a seed"));
    if (node.has("srp")) {
      MrpAgent::BridgeConfig shares;
      readSrp(node["srp"], shares);
      config.deltaBandwidth = shares.deltaBandwidth;
    }
  }

  void readBridges(const Node& node) {
    node.object();
    if (node.json().empty()) node.fail("at least one bridge is needed");
    for (const auto& [name, member] : node.json().items()) {
      const Node bridge(member, node.place() + "." + name);
      if (!goodName(name)) bridge.fail("a bridge name is letters, digits, '-', '_' and '.'");
      bridge.object({"ports", "bridgeId", "portSpeed", "portLatency", "domains"});
      const Node ports = bridge["ports"];
      if (ports.listSize() == 0) ports.fail("at least one port is needed");
      Scenario::Bridge& out = scenario_.bridges.emplace_back(Scenario::Bridge{name, {}});
      for (std::size_t i = 0; i < ports.listSize(); ++i) {
        const std::string port = ports.item(i).string();
        if (!goodName(port)) ports.item(i).fail("a port name is letters, digits, '-', '_' and '.'");
        if (std::count(out.ports.begin(), out.ports.end(), port)) ports.item(i).fail("port '" + port + "' is listed twice");
        out.ports.push_back(port);
      }
      if (bridge.has("domains") && !runs(Mrp::MrpApplication::msrp)) {
        bridge["domains"].fail("domains need 'msrp' among the applications");
      }
      readBridgeSrp(bridge, out.ports, out.config);
    }
  }

  void readLinks(const Node& node) {
    std::set<std::string> linked;
    for (std::size_t i = 0; i < node.listSize(); ++i) {
      const Node link = node.item(i);
      if (link.listSize() != 2) link.fail("a link is a list of two ports, e.g. [\"sw1:p2\", \"sw2:p1\"]");
      const Scenario::PortRef a = portRefOf(link.item(0));
      const Scenario::PortRef b = portRefOf(link.item(1));
      for (std::size_t end = 0; end < 2; ++end) {
        const std::string text = (end == 0 ? a : b).text();
        if (!linked.insert(text).second) link.item(end).fail(text + " is already linked");
      }
      scenario_.links.push_back({a, b});
    }
  }

  void readEvents(const Node& node) {
    for (std::size_t i = 0; i < node.listSize(); ++i) {
      const Node event = node.item(i);
      event.object({"at", "declare", "withdraw", "link", "up", "role", "inject"});
      const Quarn::Seconds at = event["at"].seconds();
      std::vector<const char*> actions;
      for (const char* action : {"declare", "withdraw", "link", "role", "inject"}) {
        if (event.has(action)) actions.push_back(action);
      }
      if (actions.size() != 1) event.fail("one of declare, withdraw, link, role or inject is needed");
      const std::string action = actions.front();
      if (event.has("up") && action != "link") event["up"].fail("unknown field");
      if (action == "declare" || action == "withdraw") {
        for (Scenario::Declare& declare : declaresOf(event[actions.front()], action == "withdraw")) {
          scenario_.events.push_back({at, std::move(declare)});
        }
      } else if (action == "link") {
        scenario_.events.push_back({at, Scenario::LinkState{linkIndexOf(event["link"]), event["up"].boolean()}});
      } else if (action == "role") {
        scenario_.events.push_back({at, roleOf(event["role"])});
      } else {
        scenario_.events.push_back({at, injectOf(event["inject"])});
      }
    }
    std::stable_sort(scenario_.events.begin(), scenario_.events.end(),
                     [](const Scenario::Event& a, const Scenario::Event& b) { return a.at < b.at; });
  }

  // One declaration or withdrawal per value: a VLAN list gives one per VLAN.
  std::vector<Scenario::Declare> declaresOf(const Node& node, bool withdraw) {
    node.object({"bridge", "port", "app", "vlan", "vlans", "talkerAdvertise", "listener", "domain"});
    const std::string bridge = bridgeOf(node["bridge"]);
    std::optional<std::string> port;
    if (node.has("port")) port = portOf(bridge, node["port"]);
    std::vector<Scenario::Declare> declares;
    for (MrpAgent::AttributeValue& value : attributeValuesOf(node, scenario_.applications)) {
      declares.push_back({bridge, port, std::move(value), withdraw});
    }
    return declares;
  }

  Scenario::Role roleOf(const Node& node) {
    node.object({"bridge", "port", "role"});
    const std::string bridge = bridgeOf(node["bridge"]);
    const std::string port = portOf(bridge, node["port"]);
    const auto role = node["role"].whole(0, 4, "a port role", "disabled, root, designated, alternate, backup");
    return {bridge, port, static_cast<Stp::MstiPortStatus::Role>(role)};
  }

  Scenario::Inject injectOf(const Node& node) {
    node.object({"bridge", "port", "frame"});
    const std::string bridge = bridgeOf(node["bridge"]);
    const std::string port = portOf(bridge, node["port"]);
    const Node frame = node["frame"];
    std::string error;
    const auto octets = hexDecode(frame.string(), error);
    if (!octets) frame.fail(error);
    if (octets->size() < Velo::EthHdr::kSize) {
      frame.fail(std::to_string(octets->size()) + " octets is shorter than an Ethernet header (14)");
    }
    return {bridge, port, *octets};
  }

  std::size_t linkIndexOf(const Node& node) {
    if (node.listSize() != 2) node.fail("a link is a list of two ports, e.g. [\"sw1:p2\", \"sw2:p1\"]");
    const Scenario::PortRef a = portRefOf(node.item(0));
    const Scenario::PortRef b = portRefOf(node.item(1));
    for (std::size_t i = 0; i < scenario_.links.size(); ++i) {
      const Scenario::Link& link = scenario_.links[i];
      if ((link.a == a && link.b == b) || (link.a == b && link.b == a)) return i;
    }
    node.fail(a.text() + " - " + b.text() + " is not a link");
  }

  Scenario::PortRef portRefOf(const Node& node) const {
    const std::string text = node.string();
    const auto colon = text.find(':');
    if (colon == std::string::npos) node.fail("'" + text + "' is not bridge:port");
    const std::string bridge = text.substr(0, colon);
    const std::string port = text.substr(colon + 1);
    const Scenario::Bridge* found = bridgeNamed(bridge);
    if (!found) node.fail("no bridge '" + bridge + "'");
    if (!std::count(found->ports.begin(), found->ports.end(), port)) node.fail(bridge + " has no port '" + port + "'");
    return {bridge, port};
  }

  std::string bridgeOf(const Node& node) const {
    const std::string name = node.string();
    if (!bridgeNamed(name)) node.fail("no bridge '" + name + "'");
    return name;
  }

  std::string portOf(const std::string& bridge, const Node& node) const {
    const std::string port = node.string();
    const std::vector<std::string>& ports = bridgeNamed(bridge)->ports;
    if (!std::count(ports.begin(), ports.end(), port)) node.fail(bridge + " has no port '" + port + "'");
    return port;
  }

  const Scenario::Bridge* bridgeNamed(const std::string& name) const {
    for (const Scenario::Bridge& bridge : scenario_.bridges) {
      if (bridge.name == name) return &bridge;
    }
    return nullptr;
  }

  bool runs(Mrp::MrpApplication application) const {
    return std::count(scenario_.applications.begin(), scenario_.applications.end(), application) != 0;
  }

  Scenario scenario_;
};

}  // namespace

Scenario scenarioFromJson(std::string_view text) {
  const nlohmann::ordered_json json = jsonParsed(text);
  return Reader().read(Node(json, ""));
}

}  // namespace MrpCli
