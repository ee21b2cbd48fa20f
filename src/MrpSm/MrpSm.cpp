#include "MrpSm/MrpSm.h"

#include "MrpSm/MrpSmTrace.h"
#include "quarn/Collection.h"
#include "quarn/NboAttrLog.h"
#include "quarn/System.h"

namespace Mrp {

MrpSm::MrpSm(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib, Quarn::Ptr<MrpConfig> mrpConfig,
             Quarn::Ptr<MrpStatus> mrpStatus, Quarn::Ptr<Stp::Status> stpStatus,
             Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
             Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
             Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode)
    : brConfig_(std::move(brConfig)),
      mrpLib_(std::move(mrpLib)),
      mrpConfig_(std::move(mrpConfig)),
      mrpStatus_(std::move(mrpStatus)),
      stpStatus_(std::move(stpStatus)),
      brTopoConfig_(std::move(brTopoConfig)),
      ethPhyIntfStatusDir_(std::move(ethPhyIntfStatusDir)),
      entityManager_(std::move(entityManager)),
      standbyMode_(standbyMode),
      stpStatusReactor_(this) {
  stpStatusReactor_.notifierIs(stpStatus_.ptr());
  // A new engine has no watchers yet, so there are none of vanished
  // instances to remove.
  for (const auto& [name, status] : stpStatus_->stpiStatuses()) stpiStatusIs(name);
  handleInitialized();
}

MrpSm::~MrpSm() {
  // Silence the reactors first so nothing reaches a half-destroyed engine.
  stpStatusReactor_.notifierIs(nullptr);
  stpStatusReactor_.mrpSmIs(nullptr);
  for (auto& [name, reactor] : stpiStatus_) {
    reactor->notifierIs(nullptr);
    reactor->mrpSmIs(nullptr);
  }
  // Packet access goes before the machines, so no frame arrives while they
  // are going away.
  deviceIntfStatusDir_ = nullptr;
  intfStatusManagerRoot_ = nullptr;
  desiredIntfDir_ = nullptr;
  pamCollection_ = nullptr;
  pamMan_ = nullptr;
  mrpPamSm_ = nullptr;
  timerWheel_ = nullptr;
  applicantSm_ = nullptr;
  registrarSm_ = nullptr;
  leaveAllSm_ = nullptr;
  pduParser_.reset();
  parseContext_ = nullptr;
  mrpCounters_ = nullptr;
  mrpParsedAttributeDelAll();
  mrpAttrLogSm_ = nullptr;
  mrpAttrIterDelAll();
  mrpDatabaseDeleteSm_ = nullptr;
  mrpDatabaseAddSm_ = nullptr;
  if (mrpLib_->mrpSm() == this) mrpLib_->mrpSmIs(nullptr);
}

void MrpSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpSm::handleInitialized()");
  initializedIs();
  mrpStatus_->applicationIs(mrpLib_->application());
  mrpLib_->mrpSmIs(this);
  doInitializePamMan();
  handleStandbyMode();
}

void MrpSm::handleStandbyMode() {
  MRP_TRACE(8, "void Mrp::MrpSm::handleStandbyMode()");
  // An active engine stays active: only leaving standby does anything.
  if (standbyMode_ || active()) return;
  doRebuildAttrIter();
  doInitializeCounters();
  parseContext_ = new MrpParseContext("MrpParseContext");
  parseContext_->eventsCounterIs(0);
  pduParser_.emplace(*this, receivedFrame_, *mrpLib_, *mrpConfig_, *parseContext_, *mrpCounters_);
  Quarn::Ptr<Quarn::Clock> clock = Quarn::System::clockPtr();
  timerWheel_ = new Brisk::TimerWheel(clock, kTickMsecs, kInitialMaxTicks, kPreserveOrder, kDefaultBucketSize);
  mrpAttrLogSm_ = new MrpAttrLogSm(attrLogOutput());
  mrpDatabaseDeleteSm_ = new MrpDatabaseDeleteSm(this, mrpAttrLogSm_.ptr(), clock);
  mrpDatabaseAddSm_ = new MrpDatabaseAddSm(this, mrpAttrLogSm_.ptr(), clock);
  applicantSm_ = new MrpApplicantSm(this, mrpConfig_);
  registrarSm_ = new MrpRegistrarSm(this, mrpConfig_, timerWheel_);
  leaveAllSm_ = new MrpLeaveAllSm(this, mrpConfig_, timerWheel_);
  maxAttrTypes_ = maxAttrTypesOf(mrpLib_->application());
  if (mrpPamSm_->standbyMode() != standbyMode_) {
    mrpPamSm_->standbyModeIs(standbyMode_);
    mrpPamSm_->handleStandbyMode();
  }
}

Quarn::Seconds MrpSm::mrpGetLeaveTime(const Velo::IntfId& intfId) const {
  const std::optional<Quarn::Seconds> intfLeaveTime = mrpConfig_->intfLeaveTime(intfId);
  return intfLeaveTime && *intfLeaveTime != 0 ? *intfLeaveTime : mrpConfig_->leaveTime();
}

std::uint8_t MrpSm::maxAttrTypesOf(MrpApplication application) {
  switch (application) {
    case MrpApplication::msrp:
      return 4;
    case MrpApplication::mvrp:
      return 1;
  }
  return 0;
}

// Registrations stored by an earlier active engine survive a switch from
// standby to active: index every (port, type) of the store with its keys.
void MrpSm::doRebuildAttrIter() {
  Quarn::Ptr<MrpApplicationDatabase> database = mrpStatus_->applicationDatabase(mrpLib_->application());
  if (!database) return;
  for (const auto& [intfId, intfApplicant] : database->attrDatabases()) {
    for (const auto& [attributeType, typeApplicant] : intfApplicant->intfTypeApplicants()) {
      Quarn::Ptr<MrpAttrIter> iter = mrpAttrIterIs({intfId, attributeType});
      for (const auto& [attributeKey, entry] : typeApplicant->mrpAttributes()) iter->attributeKeyIs(attributeKey, true);
    }
  }
}

void MrpSm::doInitializeCounters() {
  mrpCounters_ = new MrpCounters("MrpCounters");
#define MRP_COUNTER_RESET(counter) mrpCounters_->counter##Is(0);
  MRP_COUNTERS(MRP_COUNTER_RESET)
#undef MRP_COUNTER_RESET
}

// The attribute log output named after the entity manager, if the process has one.
Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> MrpSm::attrLogOutput() const {
  return Quarn::ptr_cast<Quarn::NboAttrLog::SocketOutSm>(Quarn::NboAttrLog::output(entityManager_->name()));
}

MrpStpiStatusReactor* MrpSm::stpiStatus(const std::string& name) const {
  auto it = stpiStatus_.find(name);
  return it == stpiStatus_.end() ? nullptr : it->second.get();
}

void MrpSm::stpiStatusIs(const std::string& name) {
  if (stpiStatus_.count(name)) return;
  Quarn::Ptr<Stp::StpiStatus> status = stpStatus_->stpiStatus(name);
  if (!status) return;
  stpiStatus_.emplace(name, std::make_unique<MrpStpiStatusReactor>(status, this));
}

void MrpSm::handleStpiStatus(const std::string& name) {
  if (stpStatus_->stpiStatus(name)) {
    stpiStatusIs(name);
  } else {
    stpiStatusDel(name);
  }
}

Quarn::Ptr<MrpAttrIter> MrpSm::mrpAttrIter(const MrpAttrIter::Key& key) const {
  return Quarn::entryOf(mrpAttrIter_, key);
}

Quarn::Ptr<MrpAttrIter> MrpSm::mrpAttrIterIs(const MrpAttrIter::Key& key) {
  return Quarn::entryIs(mrpAttrIter_, key, [&key] { return new MrpAttrIter(key); });
}

Quarn::Ptr<MrpSm> mrpSmFactory(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib,
                               Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<MrpStatus> mrpStatus,
                               Quarn::Ptr<Stp::Status> stpStatus, Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
                               Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
                               Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode) {
  return new MrpSm(std::move(brConfig), std::move(mrpLib), std::move(mrpConfig), std::move(mrpStatus),
                   std::move(stpStatus), std::move(brTopoConfig), std::move(ethPhyIntfStatusDir),
                   std::move(entityManager), standbyMode);
}

}  // namespace Mrp
