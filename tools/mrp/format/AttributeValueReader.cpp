#include "format/AttributeValueReader.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "common/Applications.h"
#include "common/Hex.h"
#include "velo/EthAddr.h"

namespace MrpCli {

namespace {

constexpr std::uint16_t kMaxVlanId = 4094;

std::uint64_t streamIdOf(const JsonNode& node) {
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

Velo::EthAddr macOf(const JsonNode& node) {
  const std::string text = node.string();
  const auto addr = Velo::EthAddr::fromString(text);
  if (!addr) node.fail("'" + text + "' is not a MAC address (e.g. 91:e0:f0:00:fe:01)");
  return *addr;
}

std::uint16_t vlanOf(const JsonNode& node) {
  return static_cast<std::uint16_t>(node.whole(1, kMaxVlanId, "a VLAN id"));
}

// A VLAN list as switches write one: ids and ranges joined by commas,
// "1-4094" or "10, 20-29", in the order they are to be declared.
std::vector<std::uint16_t> vlanListOf(const JsonNode& node) {
  const std::string text = node.string();
  const auto badItem = [&](std::string_view item) {
    node.fail(std::string("'").append(item).append("' is not a VLAN id or range (e.g. 1-4094 or 10,20-29)"));
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
    if (last < first) node.fail(std::string("'").append(item).append("' runs backwards"));
    for (std::uint16_t vlan = first; vlan <= last; ++vlan) {
      if (listed[vlan]) node.fail(std::string("VLAN ").append(std::to_string(vlan)).append(" is listed twice"));
      listed[vlan] = true;
      vlans.push_back(vlan);
    }
    if (comma == std::string_view::npos) return vlans;
    rest.remove_prefix(comma + 1);
  }
}

MrpAgent::AttributeValue talkerOf(const JsonNode& node) {
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

MrpAgent::AttributeValue listenerOf(const JsonNode& node) {
  node.object({"streamId", "declaration"});
  const JsonNode declaration = node["declaration"];
  const std::string text = declaration.string();
  const auto event = Mrp::msrpListenerEventFromText(text);
  if (!event || *event == Mrp::MsrpListenerEvent::ignore) {
    declaration.fail("'" + text + "' is not a declaration (ready, readyFailed or askingFailed)");
  }
  return MrpAgent::AttributeValue(Mrp::MsrpListenerAttribute(streamIdOf(node["streamId"]), *event));
}

// The values of a declaration; a VLAN list, where `lists` allows one, gives
// one value per VLAN.
std::vector<MrpAgent::AttributeValue> valuesOf(const JsonNode& node, const std::vector<Mrp::MrpApplication>& applications,
                                               bool lists) {
  const JsonNode app = node["app"];
  const std::string name = app.string();
  const auto application = applicationNamed(name);
  if (!application) app.fail("unknown application '" + name + "' (mvrp or msrp)");
  if (std::find(applications.begin(), applications.end(), *application) == applications.end()) {
    app.fail("'" + name + "' is not among the applications");
  }
  const bool mvrp = *application == Mrp::MrpApplication::mvrp;
  const char* kinds = mvrp ? (lists ? "vlan or vlans" : "vlan") : "talkerAdvertise, listener or domain";
  std::vector<const char*> given;
  for (const char* kind : {"vlan", "vlans", "talkerAdvertise", "listener", "domain"}) {
    if (node.has(kind) && (lists || std::string_view(kind) != "vlans")) given.push_back(kind);
  }
  if (given.size() != 1) node.fail(std::string("one value is needed: ") + kinds);
  const std::string kind = given.front();
  if (mvrp != (kind == "vlan" || kind == "vlans")) node[given.front()].fail(std::string("a ") + name + " value is " + kinds);
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
    values.push_back(MrpAgent::AttributeValue(msrpDomainOf(node["domain"])));
  }
  return values;
}

}  // namespace

MrpAgent::AttributeValue attributeValueOf(const JsonNode& node, const std::vector<Mrp::MrpApplication>& applications) {
  return valuesOf(node, applications, false).front();
}

std::optional<std::uint64_t> talkerNamedByStreamId(const JsonNode& node,
                                                   const std::vector<Mrp::MrpApplication>& applications) {
  if (!node.has("talkerAdvertise") || !node.has("app") || node.json()["app"] != "msrp") return std::nullopt;
  if (std::find(applications.begin(), applications.end(), Mrp::MrpApplication::msrp) == applications.end()) {
    return std::nullopt;
  }
  const JsonNode talker = node["talkerAdvertise"];
  if (!talker.json().is_object() || talker.json().size() != 1 || !talker.has("streamId")) return std::nullopt;
  return streamIdOf(talker["streamId"]);
}

std::vector<MrpAgent::AttributeValue> attributeValuesOf(const JsonNode& node,
                                                        const std::vector<Mrp::MrpApplication>& applications) {
  return valuesOf(node, applications, true);
}

Mrp::MsrpDomainAttribute msrpDomainOf(const JsonNode& node) {
  node.object({"classId", "priority", "vid"});
  return Mrp::MsrpDomainAttribute(static_cast<std::uint8_t>(node["classId"].whole(0, 0xff, "a class id")),
                                  static_cast<std::uint8_t>(node["priority"].whole(0, 7, "a priority")),
                                  vlanOf(node["vid"]));
}

}  // namespace MrpCli
