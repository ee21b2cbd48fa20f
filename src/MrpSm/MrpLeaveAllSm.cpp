#include "MrpSm/MrpLeaveAllSm.h"

#include <cstdlib>
#include <ios>

#include "MrpSm/MrpConfigTime.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"
#include "quarn/Collection.h"

namespace Mrp {

namespace {

// The randomisation factor is 1.0 + rand() x 2^-32, which lies in [1.0, 1.5).
constexpr double kLeaveAllRandomScale = 2.3283064365386963e-10;

}  // namespace

Quarn::Seconds getLeaveAllTime(const MrpSm& mrpSm, const Velo::IntfId& intfId) {
  const MrpConfig& config = *mrpSm.mrpConfig();
  const Quarn::Seconds base = mrpConfigIntfTime("intfLeaveAllTime", intfId, config.intfLeaveAllTime(intfId),
                                                "leaveAllTime", config.leaveAllTime());
  if (std::getenv("DISABLE_LEAVE_ALL_RANDOMIZATION")) return base;
  return base * (1.0 + std::rand() * kLeaveAllRandomScale);
}

MrpLeaveAllSm::MrpLeaveAllSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel)
    : mrpSm_(mrpSm), mrpConfig_(std::move(mrpConfig)), timerWheel_(std::move(timerWheel)), configReactor_(this) {
  configReactor_.notifierIs(mrpConfig_.ptr());
  handleInitialized();
}

void MrpLeaveAllSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::handleInitialized()");
  initializedIs();
}

std::vector<std::uint8_t> MrpLeaveAllSm::attrTypes() const {
  switch (mrpSm_->mrpLib()->application()) {
    case MrpApplication::msrp:
      return {1, 2, 3, 4};
    case MrpApplication::mvrp:
      return {1};
  }
  return {};
}

Quarn::Ptr<MrpIntfLeaveAllSm> MrpLeaveAllSm::intfLeaveAllSm(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(intfLeaveAllSm_, intfId);
}

Quarn::Ptr<MrpIntfLeaveAllSm> MrpLeaveAllSm::intfLeaveAllSmIs(const Velo::IntfId& intfId) {
  return Quarn::entryIs(intfLeaveAllSm_, intfId, [&] { return new MrpIntfLeaveAllSm(intfId, mrpSm_, timerWheel_); });
}

void MrpLeaveAllSm::mrpEnableLeaveAllPending(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::mrpEnableLeaveAllPending(Velo::IntfId)");
  const Quarn::Seconds period = getLeaveAllTime(*mrpSm_, intfId);
  for (std::uint8_t attrType : attrTypes()) mrpEnableLeaveAllPendingAttrType(intfId, attrType, period);
}

void MrpLeaveAllSm::mrpEnableLeaveAllPendingAttrType(const Velo::IntfId& intfId, std::uint8_t attrType,
                                                     const Quarn::Seconds& period) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::mrpEnableLeaveAllPendingAttrType(Velo::IntfId, U8, const Seconds&)"
                   << "intf: " << intfId);
  const Quarn::Ptr<MrpIntfLeaveAllSm> machine = intfLeaveAllSmIs(intfId);
  if (machine->leaveAllPending(attrType)) return;
  machine->leaveAllPendingIs(attrType);
  machine->doRestartLeaveAllTimer(attrType, period);
}

void MrpLeaveAllSm::mrpDisableLeaveAllPending(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::mrpDisableLeaveAllPending(Velo::IntfId)");
  for (std::uint8_t attrType : attrTypes()) mrpDisableLeaveAllPendingAttrType(intfId, attrType);
}

void MrpLeaveAllSm::mrpDisableLeaveAllPendingAttrType(const Velo::IntfId& intfId, std::uint8_t attrType) {
  if (const Quarn::Ptr<MrpIntfLeaveAllSm> machine = intfLeaveAllSm(intfId)) {
    machine->leaveAllPendingDel(attrType);
    if (machine->leaveAllPendings().empty()) intfLeaveAllSmDel(intfId);
  }
  mrpSm_->mrpStatus()->applicationDatabaseIs(mrpSm_->mrpLib()->application())->leaveAllTimeDel({intfId, attrType});
}

void MrpLeaveAllSm::mrpRestartLeaveAllTimer(const Velo::IntfId& intfId, std::uint8_t attrType,
                                            Quarn::Seconds period) {
  if (const Quarn::Ptr<MrpIntfLeaveAllSm> machine = intfLeaveAllSm(intfId)) {
    machine->doRestartLeaveAllTimer(attrType, period);
  }
}

void MrpLeaveAllSm::mrpPostLeaveAllToSm(const Velo::IntfId& intfId, std::uint8_t attrType,
                                        MrpApplicantEvent applicantEvent, MrpRegistrarEvent registrarEvent) {
  // The received LeaveAll has its own walk, with the registrar look-ahead.
  constexpr MrpApplicantEvent rxLvAll_ = MrpApplicantEvent::rxLvAll_;
  constexpr MrpRegistrarEvent regLvAll_ = MrpRegistrarEvent::regLvAll_;
  QASSERT(applicantEvent != rxLvAll_ && registrarEvent != regLvAll_);
  MrpSm& sm = *mrpSm_;
  sm.mrpAttrIterWalk(intfId, attrType, [&](std::uint64_t key) {
    MRP_TRACE(8, "PostLeaveAllToSm: attributeKey = 0x" << std::hex << key << std::dec
                 << " Type= " << static_cast<unsigned>(attrType) << "interface = " << intfId);
    // Found once; without an entry the applicant makes one, which the
    // registrar then finds.
    const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttrFromDatabase(intfId, attrType, key, true);
    sm.mrpFillContextFromDatabase({intfId, attrType, key}, entry.ptr());
    sm.applicantSm()->applicantEventIs(applicantEvent);
    entry ? sm.applicantSm()->handleApplicantEvent(*entry) : sm.applicantSm()->handleApplicantEvent();
    sm.registrarSm()->registrarEventIs(registrarEvent);
    entry ? sm.registrarSm()->handleRegistrarEvent(*entry) : sm.registrarSm()->handleRegistrarEvent();
  });
}

void MrpLeaveAllSm::handleCfgLeaveAllTime() {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::handleCfgLeaveAllTime()");
  std::vector<Velo::IntfId> ports;
  for (const auto& [intfId, machine] : intfLeaveAllSm_) ports.push_back(intfId);
  for (const Velo::IntfId& intfId : ports) handleCfgIntfLeaveAllTime(intfId);
}

void MrpLeaveAllSm::handleCfgIntfLeaveAllTime(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::handleCfgIntfLeaveAllTime(Velo::IntfId)");
  if (const Quarn::Ptr<MrpIntfLeaveAllSm> machine = intfLeaveAllSm(intfId)) machine->handleCfgIntfLeaveAllTime();
}

void MrpLeaveAllSm::handleCfgTimersEnabled() { MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::handleCfgTimersEnabled()"); }

}  // namespace Mrp
