#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "MrpModel/MrpAttribute.h"
#include "brisk/TimerWheel.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpExplicitLeaveSm;

// The registrar's leave machines of attributes that a received Lv put in
// LV, one per attribute, kept per port and type in key order. A switch may
// have every registration of every port leaving at once, so a machine is a
// small record with its timer built in, and its key is stored once.
//
// A machine leaves the map when its timer has fired or it is cancelled; it
// is freed later, in batches, so that the machines of a port leaving one by
// one in key order do not shift the rest each time, and never while a
// machine's expiry runs, which may cancel the machine itself.
class MrpExplicitLeaveSmMap {
 public:
  // What the machines need of their engine.
  class Engine {
   public:
    virtual ~Engine() = default;
    // The time a new machine first arms its timer with.
    virtual Quarn::Seconds leaveTime() const = 0;
    // Before a machine acts on its expiry: the frame waiting on the port.
    virtual void drainPort(const Velo::IntfId& intfId) = 0;
    // leavetimer! for a key pending at expiry.
    virtual void leaveTimer(const MrpAttribute& attribute) = 0;
  };

  // The machines of one port and attribute type.
  class Group {
   public:
    Group(MrpExplicitLeaveSmMap* map, Velo::IntfId intfId, std::uint8_t attributeType);
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;
    ~Group();

    MrpExplicitLeaveSmMap& map() const { return *map_; }
    const Velo::IntfId& intfId() const { return intfId_; }
    std::uint8_t attributeType() const { return attributeType_; }

   private:
    friend class MrpExplicitLeaveSmMap;
    MrpExplicitLeaveSmMap* map_;
    Velo::IntfId intfId_;
    std::uint8_t attributeType_;
    // By ascending key; a key may repeat behind machines that left the map.
    std::vector<std::unique_ptr<MrpExplicitLeaveSm>> machines_;
    std::size_t left_ = 0;  // machines that left the map and are not yet freed
  };

  // Walks the machines in the map by port, type and key, as (attribute,
  // machine) pairs.
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::pair<MrpAttribute, const MrpExplicitLeaveSm*>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = value_type;

    const_iterator() = default;
    value_type operator*() const;
    const_iterator& operator++();
    friend bool operator==(const const_iterator& a, const const_iterator& b) {
      return a.group_ == b.group_ && a.index_ == b.index_;
    }

   private:
    friend class MrpExplicitLeaveSmMap;
    using GroupIt = std::map<std::pair<Velo::IntfId, std::uint8_t>, Group>::const_iterator;
    const_iterator(GroupIt group, GroupIt end, std::size_t index);
    // Moves on to a machine in the map, or the end.
    void skip();
    GroupIt group_;
    GroupIt end_;
    std::size_t index_ = 0;
  };

  MrpExplicitLeaveSmMap(Engine* engine, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpExplicitLeaveSmMap(const MrpExplicitLeaveSmMap&) = delete;
  MrpExplicitLeaveSmMap& operator=(const MrpExplicitLeaveSmMap&) = delete;
  ~MrpExplicitLeaveSmMap();

  Engine& engine() const { return *engine_; }
  Brisk::TimerWheel* timerWheel() const { return timerWheel_.ptr(); }

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const_iterator begin() const { return {groups_.begin(), groups_.end(), 0}; }
  const_iterator end() const { return {groups_.end(), groups_.end(), 0}; }

  // The machine of the attribute; null when it has none.
  MrpExplicitLeaveSm* machine(const MrpAttribute& attribute) const;
  // The machine of the attribute, made (its timer armed with the engine's
  // leave time) when it has none.
  MrpExplicitLeaveSm& machineIs(const MrpAttribute& attribute);
  void machineDel(const MrpAttribute& attribute);
  // The machines of the port, by type and key.
  std::vector<MrpExplicitLeaveSm*> machinesOf(const Velo::IntfId& intfId) const;
  void machinesOfDel(const Velo::IntfId& intfId);
  void machineDelAll();

  // Brackets a machine's expiry: the machine that fires, then whether it
  // leaves the map; nothing is freed in between. The second call may free
  // the machine.
  MrpExplicitLeaveSm* firingIs(MrpExplicitLeaveSm* machine) { return std::exchange(firing_, machine); }
  void firingDone(MrpExplicitLeaveSm& machine, MrpExplicitLeaveSm* outer);

 private:
  using GroupKey = std::pair<Velo::IntfId, std::uint8_t>;
  using Groups = std::map<GroupKey, Group>;

  Group* group(const Velo::IntfId& intfId, std::uint8_t attributeType) const;
  // The first position of `key` in the group.
  static std::vector<std::unique_ptr<MrpExplicitLeaveSm>>::const_iterator lowerBound(const Group& group,
                                                                                      std::uint64_t key);
  // Takes the machine out of the map: its timer stops, it is found no more.
  void leave(MrpExplicitLeaveSm& machine);
  // Frees the group's machines that left, once they are half of it, and the
  // group when none is left; later while a machine fires.
  void tidy(Group& group);
  void tidyAll();

  Engine* engine_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  Groups groups_;
  std::size_t size_ = 0;
  MrpExplicitLeaveSm* firing_ = nullptr;
  bool tidyPending_ = false;
};

}  // namespace Mrp
