#include "MrpModel/MrpConfig.h"

namespace Mrp {

template <class T, class OnChange>
void MrpConfig::fieldIs(T& field, const T& value, OnChange onChange) {
  if (field == value) return;
  field = value;
  notifiees_.forEach([&](Notifiee& n) { (n.*onChange)(); });
}

void MrpConfig::intfTimeIs(IntfTimeMap& map, const Velo::IntfId& intfId, Quarn::Seconds t,
                           void (Notifiee::*onChange)(const Velo::IntfId&)) {
  auto [it, inserted] = map.try_emplace(intfId, t);
  if (!inserted) {
    if (it->second == t) return;
    it->second = t;
  }
  notifiees_.forEach([&](Notifiee& n) { (n.*onChange)(intfId); });
}

void MrpConfig::intfTimeDel(IntfTimeMap& map, const Velo::IntfId& intfId,
                            void (Notifiee::*onChange)(const Velo::IntfId&)) {
  if (map.erase(intfId) == 0) return;
  notifiees_.forEach([&](Notifiee& n) { (n.*onChange)(intfId); });
}

namespace {

std::optional<Quarn::Seconds> intfTime(const MrpConfig::IntfTimeMap& map, const Velo::IntfId& intfId) {
  auto it = map.find(intfId);
  if (it == map.end()) return std::nullopt;
  return it->second;
}

}  // namespace

void MrpConfig::leaveTimeIs(Quarn::Seconds t) { fieldIs(leaveTime_, t, &Notifiee::onLeaveTime); }

std::optional<Quarn::Seconds> MrpConfig::intfLeaveTime(const Velo::IntfId& intfId) const {
  return intfTime(intfLeaveTime_, intfId);
}
void MrpConfig::intfLeaveTimeIs(const Velo::IntfId& intfId, Quarn::Seconds t) {
  intfTimeIs(intfLeaveTime_, intfId, t, &Notifiee::onIntfLeaveTime);
}
void MrpConfig::intfLeaveTimeDel(const Velo::IntfId& intfId) {
  intfTimeDel(intfLeaveTime_, intfId, &Notifiee::onIntfLeaveTime);
}

void MrpConfig::leaveAllTimeIs(Quarn::Seconds t) { fieldIs(leaveAllTime_, t, &Notifiee::onLeaveAllTime); }

std::optional<Quarn::Seconds> MrpConfig::intfLeaveAllTime(const Velo::IntfId& intfId) const {
  return intfTime(intfLeaveAllTime_, intfId);
}
void MrpConfig::intfLeaveAllTimeIs(const Velo::IntfId& intfId, Quarn::Seconds t) {
  intfTimeIs(intfLeaveAllTime_, intfId, t, &Notifiee::onIntfLeaveAllTime);
}
void MrpConfig::intfLeaveAllTimeDel(const Velo::IntfId& intfId) {
  intfTimeDel(intfLeaveAllTime_, intfId, &Notifiee::onIntfLeaveAllTime);
}

void MrpConfig::txLeaveAllExpiryTimeIs(Quarn::Seconds t) {
  fieldIs(txLeaveAllExpiryTime_, t, &Notifiee::onTxLeaveAllExpiryTime);
}

void MrpConfig::mrpFloodingIs(bool flooding) { fieldIs(mrpFlooding_, flooding, &Notifiee::onMrpFlooding); }

void MrpConfig::timersEnabledIs(bool enabled) { fieldIs(timersEnabled_, enabled, &Notifiee::onTimersEnabled); }

}  // namespace Mrp
