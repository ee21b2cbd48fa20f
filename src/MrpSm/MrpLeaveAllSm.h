#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpRegistrarEvent.h"
#include "MrpSm/MrpIntfLeaveAllSm.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpSm;

// The LeaveAll coordinator: one per engine, over one LeaveAll machine per
// port with LeaveAll timing. It follows the configured LeaveAll periods and
// delivers LeaveAll-like events to every registration of a port and type.
class MrpLeaveAllSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  using IntfLeaveAllSmMap = std::unordered_map<Velo::IntfId, Quarn::Ptr<MrpIntfLeaveAllSm>>;

  MrpLeaveAllSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpLeaveAllSm(const MrpLeaveAllSm&) = delete;
  MrpLeaveAllSm& operator=(const MrpLeaveAllSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }
  const Quarn::Ptr<Brisk::TimerWheel>& timerWheel() const { return timerWheel_; }

  void handleInitialized();

  // Starts and stops the LeaveAll timing of every attribute type of the
  // application on a port (MSRP 1 to 4, MVRP 1). A type already enabled is
  // neither restarted nor republished.
  void mrpEnableLeaveAllPending(const Velo::IntfId& intfId);
  void mrpEnableLeaveAllPendingAttrType(const Velo::IntfId& intfId, std::uint8_t attrType,
                                        const Quarn::Seconds& period);
  void mrpDisableLeaveAllPending(const Velo::IntfId& intfId);
  void mrpDisableLeaveAllPendingAttrType(const Velo::IntfId& intfId, std::uint8_t attrType);
  // The port's type restarts its LeaveAll period at now + `period`, if the
  // port has LeaveAll timing for it.
  void mrpRestartLeaveAllTimer(const Velo::IntfId& intfId, std::uint8_t attrType, Quarn::Seconds period);

  // The events to every registration of the port and type, in ascending
  // key order, the applicant before the registrar. The received LeaveAll is
  // never posted this way.
  void mrpPostLeaveAllToSm(const Velo::IntfId& intfId, std::uint8_t attrType, MrpApplicantEvent applicantEvent,
                           MrpRegistrarEvent registrarEvent);

  void handleCfgLeaveAllTime();
  void handleCfgIntfLeaveAllTime(const Velo::IntfId& intfId);
  void handleCfgTimersEnabled();

  const IntfLeaveAllSmMap& intfLeaveAllSms() const { return intfLeaveAllSm_; }
  Quarn::Ptr<MrpIntfLeaveAllSm> intfLeaveAllSm(const Velo::IntfId& intfId) const;
  Quarn::Ptr<MrpIntfLeaveAllSm> intfLeaveAllSmIs(const Velo::IntfId& intfId);
  void intfLeaveAllSmDel(const Velo::IntfId& intfId) { intfLeaveAllSm_.erase(intfId); }
  void intfLeaveAllSmDelAll() { intfLeaveAllSm_.clear(); }

 protected:
  ~MrpLeaveAllSm() override = default;

 private:
  class ConfigReactor : public MrpConfig::Notifiee {
   public:
    explicit ConfigReactor(MrpLeaveAllSm* owner) : owner_(owner) {}
    void onLeaveAllTime() override { owner_->handleCfgLeaveAllTime(); }
    void onIntfLeaveAllTime(const Velo::IntfId& intfId) override { owner_->handleCfgIntfLeaveAllTime(intfId); }
    void onTimersEnabled() override { owner_->handleCfgTimersEnabled(); }

   private:
    MrpLeaveAllSm* owner_;
  };

  // The attribute types of the engine's application.
  std::vector<std::uint8_t> attrTypes() const;

  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  IntfLeaveAllSmMap intfLeaveAllSm_;
  ConfigReactor configReactor_;
};

// The LeaveAll period of a port, drawn afresh on every call: its own
// intfLeaveAllTime when set and not 0, else leaveAllTime (a time that is not
// finite or is negative counting as 0), times a factor in [1.0, 1.5) unless
// the environment has DISABLE_LEAVE_ALL_RANDOMIZATION.
Quarn::Seconds getLeaveAllTime(const MrpSm& mrpSm, const Velo::IntfId& intfId);

}  // namespace Mrp
