#include "bridging/TopologyConfig.h"

namespace Bridging::Topology {

Quarn::Ptr<Topology> Config::topologyIs(const std::string& name, std::uint32_t number) {
  Quarn::Ptr<Topology> existing = topology_.find(name);
  if (existing && existing->number() == number) return existing;
  Quarn::Ptr<Topology> entry = new Topology(name, number);
  topology_.assign(name, entry);
  notifyTopology(name);
  return entry;
}

void Config::topologyDel(std::string name) {
  if (topology_.erase(name)) notifyTopology(name);
}

void Config::vlanTopologyIs(std::uint16_t vlanId, const std::string& name) {
  auto [it, inserted] = vlanTopology_.try_emplace(vlanId, name);
  if (!inserted) {
    if (it->second == name) return;
    it->second = name;
  }
  notifyVlanTopology(vlanId);
}

std::optional<std::string> Config::vlanTopology(std::uint16_t vlanId) const {
  auto it = vlanTopology_.find(vlanId);
  if (it == vlanTopology_.end()) return std::nullopt;
  return it->second;
}

void Config::vlanTopologyDel(std::uint16_t vlanId) {
  if (vlanTopology_.erase(vlanId)) notifyVlanTopology(vlanId);
}

Quarn::Ptr<Topology> Config::topologyOfVlan(std::uint16_t vlanId) const {
  std::optional<std::string> name = vlanTopology(vlanId);
  return name ? topology(*name) : nullptr;
}

void Config::notifyTopology(const std::string& name) {
  notifiees_.forEach([&](Notifiee& n) { n.onTopology(name); });
}

void Config::notifyVlanTopology(std::uint16_t vlanId) {
  notifiees_.forEach([&](Notifiee& n) { n.onVlanTopology(vlanId); });
}

}  // namespace Bridging::Topology
