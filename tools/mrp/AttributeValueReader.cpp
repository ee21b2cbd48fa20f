#include "AttributeValueReader.h"

#include <algorithm>

#include "Applications.h"
#include "Hex.h"
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

MrpAgent::AttributeValue domainOf(const JsonNode& node) {
  node.object({"classId", "priority", "vid"});
  return MrpAgent::AttributeValue(
      Mrp::MsrpDomainAttribute(static_cast<std::uint8_t>(node["classId"].whole(0, 0xff, "a class id")),
                               static_cast<std::uint8_t>(node["priority"].whole(0, 7, "a priority")),
                               vlanOf(node["vid"])));
}

}  // namespace

MrpAgent::AttributeValue attributeValueOf(const JsonNode& node, const std::vector<Mrp::MrpApplication>& applications) {
  const JsonNode app = node["app"];
  const std::string name = app.string();
  const auto application = applicationNamed(name);
  if (!application) app.fail("unknown application '" + name + "' (mvrp or msrp)");
  if (std::find(applications.begin(), applications.end(), *application) == applications.end()) {
    app.fail("'" + name + "' is not among the applications");
  }
  const bool mvrp = *application == Mrp::MrpApplication::mvrp;
  const char* kinds = mvrp ? "vlan" : "talkerAdvertise, listener or domain";
  std::vector<const char*> given;
  for (const char* kind : {"vlan", "talkerAdvertise", "listener", "domain"}) {
    if (node.has(kind)) given.push_back(kind);
  }
  if (given.size() != 1) node.fail(std::string("one value is needed: ") + kinds);
  const std::string kind = given.front();
  if (mvrp != (kind == "vlan")) node[given.front()].fail(std::string("a ") + name + " value is " + kinds);
  if (kind == "vlan") return MrpAgent::AttributeValue(Mrp::MvrpVlanAttribute(vlanOf(node["vlan"])));
  if (kind == "talkerAdvertise") return talkerOf(node["talkerAdvertise"]);
  if (kind == "listener") return listenerOf(node["listener"]);
  return domainOf(node["domain"]);
}

}  // namespace MrpCli
