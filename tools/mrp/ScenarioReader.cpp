#include "ScenarioReader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <map>
#include <set>

#include "Applications.h"
#include "Hex.h"
#include "velo/EthAddr.h"
#include "velo/EthHdr.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

// A member of the scenario with the place it has in the file, for messages.
class Node {
 public:
  Node(const Json& json, std::string place) : json_(json), place_(std::move(place)) {}

  const Json& json() const { return json_; }
  const std::string& place() const { return place_; }

  [[noreturn]] void fail(const std::string& message) const {
    throw ScenarioError((place_.empty() ? "" : place_ + ": ") + message);
  }

  bool has(const char* name) const { return json_.contains(name); }
  Node operator[](const char* name) const {
    if (!has(name)) Node(json_, child(name)).fail("missing");
    return Node(json_.at(name), child(name));
  }
  Node item(std::size_t index) const {
    return Node(json_.at(index), place_ + "[" + std::to_string(index) + "]");
  }

  void object() const {
    if (!json_.is_object()) fail("an object is needed");
  }
  // An object whose members are all among `names`.
  const Node& object(std::initializer_list<std::string_view> names) const {
    object();
    for (const auto& [name, member] : json_.items()) {
      if (std::find(names.begin(), names.end(), name) == names.end()) Node(member, child(name)).fail("unknown field");
    }
    return *this;
  }
  std::size_t listSize() const {
    if (!json_.is_array()) fail("a list is needed");
    return json_.size();
  }
  std::string string() const {
    if (!json_.is_string()) fail("a string is needed");
    return json_.get<std::string>();
  }
  bool boolean() const {
    if (!json_.is_boolean()) fail("true or false is needed");
    return json_.get<bool>();
  }
  double seconds() const {
    if (!json_.is_number()) fail("a number of seconds is needed");
    const double value = json_.get<double>();
    if (!(value >= 0) || !std::isfinite(value)) fail(json_.dump() + " is not a time (seconds, 0 or more)");
    return value;
  }
  // A whole number in [lo, hi]; `noun` names what it is for the message,
  // `meanings` what the numbers stand for, if they stand for names.
  std::uint64_t whole(std::uint64_t lo, std::uint64_t hi, const char* noun, const char* meanings = nullptr) const {
    const bool inRange = json_.is_number_unsigned() && json_.get<std::uint64_t>() >= lo &&
                         json_.get<std::uint64_t>() <= hi;
    if (inRange) return json_.get<std::uint64_t>();
    if (!json_.is_number_integer()) fail("a whole number is needed");
    fail(json_.dump() + " is not " + noun + " (" + std::to_string(lo) + ".." + std::to_string(hi) +
         (meanings ? std::string(": ") + meanings : "") + ")");
  }

 private:
  std::string child(std::string_view name) const { return (place_.empty() ? "" : place_ + ".") + std::string(name); }

  const Json& json_;
  std::string place_;
};

constexpr std::uint16_t kMaxVlanId = 4094;

// Names become ports and file names: letters, digits, '-', '_' and '.'.
bool goodName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.';
  });
}

std::uint64_t streamIdOf(const Node& node) {
  const std::string text = node.string();
  std::string error;
  const auto octets = hexDecode(text, error);
  if (!octets || octets->size() != 8) {
    node.fail("'" + text + "' is not a stream id (8 octets in hex, e.g. 00:1b:21:00:00:01:00:01)");
  }
  std::uint64_t id = 0;
  for (std::uint8_t octet : *octets) id = id << 8 | octet;
  return id;
}

Velo::EthAddr macOf(const Node& node) {
  const std::string text = node.string();
  const auto addr = Velo::EthAddr::fromString(text);
  if (!addr) node.fail("'" + text + "' is not a MAC address (e.g. 91:e0:f0:00:fe:01)");
  return *addr;
}

std::uint16_t vlanOf(const Node& node) {
  return static_cast<std::uint16_t>(node.whole(1, kMaxVlanId, "a VLAN id"));
}

// A VLAN list as switches write one: ids and ranges joined by commas,
// "1-4094" or "10, 20-29", in the order they are to be declared.
std::vector<std::uint16_t> vlanListOf(const Node& node) {
  const std::string text = node.string();
  const auto badItem = [&](std::string_view item) {
    node.fail("'" + std::string(item) + "' is not a VLAN id or range (e.g. 1-4094 or 10,20-29)");
  };
  // One id of an item; the text is digits only.
  const auto idOf = [&](std::string_view item, std::string_view digits) -> std::uint16_t {
    unsigned long id = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
    if (digits.empty() || end != digits.data() + digits.size()) badItem(item);
    if (error != std::errc() || id < 1 || id > kMaxVlanId) {
      node.fail(std::string(digits) + " is not a VLAN id (1.." + std::to_string(kMaxVlanId) + ")");
    }
    return static_cast<std::uint16_t>(id);
  };
  std::vector<bool> listed(kMaxVlanId + 1);
  std::vector<std::uint16_t> vlans;
  std::string_view rest = text;
  while (true) {
    const std::size_t comma = rest.find(',');
    std::string_view item = rest.substr(0, comma);
    while (!item.empty() && item.front() == ' ') item.remove_prefix(1);
    while (!item.empty() && item.back() == ' ') item.remove_suffix(1);
    const std::size_t dash = item.find('-');
    const std::uint16_t first = idOf(item, item.substr(0, dash));
    const std::uint16_t last = dash == std::string_view::npos ? first : idOf(item, item.substr(dash + 1));
    if (last < first) node.fail("'" + std::string(item) + "' runs backwards");
    for (std::uint16_t vlan = first; vlan <= last; ++vlan) {
      if (listed[vlan]) node.fail("VLAN " + std::to_string(vlan) + " is listed twice");
      listed[vlan] = true;
      vlans.push_back(vlan);
    }
    if (comma == std::string_view::npos) return vlans;
    rest.remove_prefix(comma + 1);
  }
}

MrpAgent::AttributeValue talkerOf(const Node& node) {
  node.object({"streamId", "destination", "vlan", "maxFrameSize", "maxIntervalFrames", "priority", "rank", "latency"});
  const auto u16 = [&](const char* name, const char* noun) {
    return static_cast<std::uint16_t>(node[name].whole(0, 0xffff, noun));
  };
  const auto u8 = [&](const char* name, std::uint64_t hi, const char* noun) {
    return static_cast<std::uint8_t>(node[name].whole(0, hi, noun));
  };
  return MrpAgent::AttributeValue(Mrp::MsrpTalkerAdvertiseAttribute(
      streamIdOf(node["streamId"]), Mrp::DataFrameParameters(macOf(node["destination"]), vlanOf(node["vlan"])),
      Mrp::Tspec(u16("maxFrameSize", "a frame size"), u16("maxIntervalFrames", "a frame count")),
      Mrp::PriorityAndRank(u8("priority", 7, "a priority"), u8("rank", 1, "a rank")),
      static_cast<std::uint32_t>(node["latency"].whole(0, 0xffffffff, "a latency"))));
}

MrpAgent::AttributeValue listenerOf(const Node& node) {
  node.object({"streamId", "declaration"});
  const Node declaration = node["declaration"];
  const std::string text = declaration.string();
  const auto event = Mrp::msrpListenerEventFromText(text);
  if (!event || *event == Mrp::MsrpListenerEvent::ignore) {
    declaration.fail("'" + text + "' is not a declaration (ready, readyFailed or askingFailed)");
  }
  return MrpAgent::AttributeValue(Mrp::MsrpListenerAttribute(streamIdOf(node["streamId"]), *event));
}

MrpAgent::AttributeValue domainOf(const Node& node) {
  node.object({"classId", "priority", "vid"});
  return MrpAgent::AttributeValue(
      Mrp::MsrpDomainAttribute(static_cast<std::uint8_t>(node["classId"].whole(0, 0xff, "a class id")),
                               static_cast<std::uint8_t>(node["priority"].whole(0, 7, "a priority")),
                               vlanOf(node["vid"])));
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
    if (root.has("until")) scenario_.until = root["until"].seconds();
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
    node.object({"leaveTime", "leaveAllTime", "randomizeLeaveAll", "seed"});
    Scenario::Config& config = scenario_.config;
    if (node.has("leaveTime")) config.leaveTime = node["leaveTime"].seconds();
    if (node.has("leaveAllTime")) config.leaveAllTime = node["leaveAllTime"].seconds();
    if (node.has("randomizeLeaveAll")) config.randomizeLeaveAll = node["randomizeLeaveAll"].boolean();
    if (node.has("seed")) config.seed = static_cast<unsigned>(node["seed"].whole(0, 0xffffffff, "a seed"));
  }

  void readBridges(const Node& node) {
    node.object();
    if (node.json().empty()) node.fail("at least one bridge is needed");
    for (const auto& [name, member] : node.json().items()) {
      const Node bridge(member, node.place() + "." + name);
      if (!goodName(name)) bridge.fail("a bridge name is letters, digits, '-', '_' and '.'");
      bridge.object({"ports"});
      const Node ports = bridge["ports"];
      if (ports.listSize() == 0) ports.fail("at least one port is needed");
      Scenario::Bridge& out = scenario_.bridges.emplace_back(Scenario::Bridge{name, {}});
      for (std::size_t i = 0; i < ports.listSize(); ++i) {
        const std::string port = ports.item(i).string();
        if (!goodName(port)) ports.item(i).fail("a port name is letters, digits, '-', '_' and '.'");
        if (std::count(out.ports.begin(), out.ports.end(), port)) ports.item(i).fail("port '" + port + "' is listed twice");
        out.ports.push_back(port);
      }
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
    const Node app = node["app"];
    const std::string name = app.string();
    const auto application = applicationNamed(name);
    if (!application) app.fail("unknown application '" + name + "' (mvrp or msrp)");
    if (!runs(*application)) app.fail("'" + name + "' is not among the applications");
    const bool mvrp = *application == Mrp::MrpApplication::mvrp;
    const char* kinds = mvrp ? "vlan or vlans" : "talkerAdvertise, listener or domain";
    std::vector<const char*> given;
    for (const char* kind : {"vlan", "vlans", "talkerAdvertise", "listener", "domain"}) {
      if (node.has(kind)) given.push_back(kind);
    }
    if (given.size() != 1) node.fail(std::string("one value is needed: ") + kinds);
    const std::string kind = given.front();
    if (mvrp != (kind == "vlan" || kind == "vlans")) {
      node[given.front()].fail(std::string("a ") + name + " value is " + kinds);
    }
    std::vector<MrpAgent::AttributeValue> values;
    if (kind == "vlan") {
      values.emplace_back(Mrp::MvrpVlanAttribute(vlanOf(node["vlan"])));
    } else if (kind == "vlans") {
      for (std::uint16_t vlan : vlanListOf(node["vlans"])) values.emplace_back(Mrp::MvrpVlanAttribute(vlan));
    } else if (kind == "talkerAdvertise") {
      values.push_back(talkerOf(node["talkerAdvertise"]));
    } else if (kind == "listener") {
      values.push_back(listenerOf(node["listener"]));
    } else {
      values.push_back(domainOf(node["domain"]));
    }
    std::vector<Scenario::Declare> declares;
    for (MrpAgent::AttributeValue& value : values) declares.push_back({bridge, port, std::move(value), withdraw});
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

// nlohmann's message without its "[json.exception.parse_error.101] " tag.
std::string parseMessage(const nlohmann::json::parse_error& error) {
  const std::string what = error.what();
  const auto tagEnd = what.find("] ");
  return tagEnd == std::string::npos ? what : what.substr(tagEnd + 2);
}

}  // namespace

Scenario scenarioFromJson(std::string_view text) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    throw ScenarioError("not JSON: " + parseMessage(error));
  }
  return Reader().read(Node(json, ""));
}

}  // namespace MrpCli
