#include "MrpSm/MrpExplicitLeaveSmMap.h"

#include <algorithm>

#include "MrpSm/MrpExplicitLeaveSm.h"

namespace Mrp {

MrpExplicitLeaveSmMap::Group::Group(MrpExplicitLeaveSmMap* map, Velo::IntfId intfId, std::uint8_t attributeType)
    : map_(map), intfId_(std::move(intfId)), attributeType_(attributeType) {}

MrpExplicitLeaveSmMap::Group::~Group() = default;

MrpExplicitLeaveSmMap::const_iterator::const_iterator(GroupIt group, GroupIt end, std::size_t index)
    : group_(group), end_(end), index_(index) {
  skip();
}

MrpExplicitLeaveSmMap::const_iterator::value_type MrpExplicitLeaveSmMap::const_iterator::operator*() const {
  const MrpExplicitLeaveSm& machine = *group_->second.machines_[index_];
  return {machine.mrpAttribute(), &machine};
}

MrpExplicitLeaveSmMap::const_iterator& MrpExplicitLeaveSmMap::const_iterator::operator++() {
  ++index_;
  skip();
  return *this;
}

void MrpExplicitLeaveSmMap::const_iterator::skip() {
  for (; group_ != end_; ++group_, index_ = 0) {
    const auto& machines = group_->second.machines_;
    while (index_ < machines.size() && !machines[index_]->filed()) ++index_;
    if (index_ < machines.size()) return;
  }
  index_ = 0;
}

MrpExplicitLeaveSmMap::MrpExplicitLeaveSmMap(Engine* engine, Quarn::Ptr<Brisk::TimerWheel> timerWheel)
    : engine_(engine), timerWheel_(std::move(timerWheel)) {}

MrpExplicitLeaveSmMap::~MrpExplicitLeaveSmMap() = default;

MrpExplicitLeaveSmMap::Group* MrpExplicitLeaveSmMap::group(const Velo::IntfId& intfId,
                                                           std::uint8_t attributeType) const {
  auto it = groups_.find({intfId, attributeType});
  return it == groups_.end() ? nullptr : const_cast<Group*>(&it->second);
}

std::vector<std::unique_ptr<MrpExplicitLeaveSm>>::const_iterator MrpExplicitLeaveSmMap::lowerBound(
    const Group& group, std::uint64_t key) {
  const auto& machines = group.machines_;
  // A received vector leaves its keys in ascending order: most land behind the last.
  if (machines.empty() || machines.back()->key_ < key) return machines.end();
  return std::lower_bound(machines.begin(), machines.end(), key,
                          [](const std::unique_ptr<MrpExplicitLeaveSm>& m, std::uint64_t k) { return m->key_ < k; });
}

MrpExplicitLeaveSm* MrpExplicitLeaveSmMap::machine(const MrpAttribute& attribute) const {
  const Group* g = group(attribute.intfId, attribute.attributeType);
  if (!g) return nullptr;
  for (auto it = lowerBound(*g, attribute.attributeKey); it != g->machines_.end() && (*it)->key_ == attribute.attributeKey;
       ++it) {
    if ((*it)->filed()) return it->get();
  }
  return nullptr;
}

MrpExplicitLeaveSm& MrpExplicitLeaveSmMap::machineIs(const MrpAttribute& attribute) {
  if (MrpExplicitLeaveSm* found = machine(attribute)) return *found;
  Group& g = groups_.try_emplace({attribute.intfId, attribute.attributeType}, this, attribute.intfId,
                                 attribute.attributeType)
                 .first->second;
  std::unique_ptr<MrpExplicitLeaveSm> made(new MrpExplicitLeaveSm(&g, attribute.attributeKey));
  // Behind the machines of the same key that left the map.
  auto& machines = g.machines_;
  auto at = lowerBound(g, attribute.attributeKey);
  while (at != machines.end() && (*at)->key_ == attribute.attributeKey) ++at;
  ++size_;
  return **machines.insert(at, std::move(made));
}

void MrpExplicitLeaveSmMap::machineDel(const MrpAttribute& attribute) {
  if (MrpExplicitLeaveSm* found = machine(attribute)) {
    leave(*found);
    tidy(*found->group_);
  }
}

std::vector<MrpExplicitLeaveSm*> MrpExplicitLeaveSmMap::machinesOf(const Velo::IntfId& intfId) const {
  std::vector<MrpExplicitLeaveSm*> machines;
  for (auto it = groups_.lower_bound({intfId, 0}); it != groups_.end() && it->first.first == intfId; ++it) {
    for (const auto& machine : it->second.machines_) {
      if (machine->filed()) machines.push_back(machine.get());
    }
  }
  return machines;
}

void MrpExplicitLeaveSmMap::machinesOfDel(const Velo::IntfId& intfId) {
  std::vector<Group*> groups;
  for (auto it = groups_.lower_bound({intfId, 0}); it != groups_.end() && it->first.first == intfId; ++it) {
    groups.push_back(&it->second);
  }
  for (Group* g : groups) {
    for (const auto& machine : g->machines_) {
      if (machine->filed()) leave(*machine);
    }
    tidy(*g);
  }
}

void MrpExplicitLeaveSmMap::machineDelAll() {
  for (auto& [key, g] : groups_) {
    for (const auto& machine : g.machines_) {
      if (machine->filed()) leave(*machine);
    }
  }
  tidyAll();
}

void MrpExplicitLeaveSmMap::firingDone(MrpExplicitLeaveSm& machine, MrpExplicitLeaveSm* outer) {
  if (machine.filed()) leave(machine);
  firing_ = outer;
  if (tidyPending_) {
    tidyAll();
  } else {
    tidy(*machine.group_);
  }
}

void MrpExplicitLeaveSmMap::leave(MrpExplicitLeaveSm& machine) {
  machine.filed_ = false;
  machine.pending_ = false;
  machine.timeIs(Quarn::kInfinity);
  --size_;
  ++machine.group_->left_;
}

void MrpExplicitLeaveSmMap::tidy(Group& group) {
  if (firing_) {
    tidyPending_ = true;
    return;
  }
  if (group.left_ * 2 <= group.machines_.size()) return;
  std::erase_if(group.machines_, [](const std::unique_ptr<MrpExplicitLeaveSm>& m) { return !m->filed(); });
  group.left_ = 0;
  if (group.machines_.empty()) groups_.erase({group.intfId_, group.attributeType_});
}

void MrpExplicitLeaveSmMap::tidyAll() {
  if (firing_) {
    tidyPending_ = true;
    return;
  }
  tidyPending_ = false;
  for (auto it = groups_.begin(); it != groups_.end();) {
    Group& g = (it++)->second;
    tidy(g);
  }
}

}  // namespace Mrp
