#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "bridging/Topology.h"
#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"

namespace Bridging::Topology {

// The configured topologies and the topology each VLAN belongs to.
class Config : public Quarn::PtrInterface {
 public:
  using TopologyMap = Quarn::PtrMap<std::string, Topology>::Map;
  using VlanTopologyMap = std::map<std::uint16_t, std::string>;

  // onTopology(name) reports a topology added, renumbered or removed;
  // onVlanTopology(vlanId) a VLAN's topology set, changed or removed.
  class Notifiee : public Quarn::BaseNotifiee<Config> {
   public:
    virtual void onTopology(const std::string& /*name*/) {}
    virtual void onVlanTopology(std::uint16_t /*vlanId*/) {}
  };

  // The topology `name` with `number`; a different number replaces the record.
  Quarn::Ptr<Topology> topologyIs(const std::string& name, std::uint32_t number);
  // Null when absent.
  Quarn::Ptr<Topology> topology(const std::string& name) const { return topology_.find(name); }
  // By value: `name` may be the key of the entry being removed.
  void topologyDel(std::string name);
  std::size_t topologyCount() const { return topology_.size(); }
  const TopologyMap& topologies() const { return topology_.map(); }

  void vlanTopologyIs(std::uint16_t vlanId, const std::string& name);
  // Nullopt when the VLAN is in no topology.
  std::optional<std::string> vlanTopology(std::uint16_t vlanId) const;
  void vlanTopologyDel(std::uint16_t vlanId);
  std::size_t vlanTopologyCount() const { return vlanTopology_.size(); }
  const VlanTopologyMap& vlanTopologies() const { return vlanTopology_; }

  // The topology of `vlanId`; null when it has none or names an unknown one.
  Quarn::Ptr<Topology> topologyOfVlan(std::uint16_t vlanId) const;

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyTopology(const std::string& name);
  void notifyVlanTopology(std::uint16_t vlanId);

  Quarn::PtrMap<std::string, Topology> topology_;
  VlanTopologyMap vlanTopology_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Bridging::Topology
