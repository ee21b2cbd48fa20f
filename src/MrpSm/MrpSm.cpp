#include "MrpSm/MrpSm.h"

#include "MrpSm/MrpConfigTime.h"
#include "MrpSm/MrpSmTrace.h"
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
      portRoles_(stpStatus_, *this),
      attributeStore_(mrpStatus_, mrpLib_->application()) {
  handleInitialized();
}

MrpSm::~MrpSm() {
  // Silence the reactors first so nothing reaches a half-destroyed engine.
  portRoles_.detach();
  // Packet access goes before the machines, so no frame arrives while they
  // are going away.
  if (mrpPamSm_) mrpPamSm_->wiringDel();
  mrpPamSm_ = nullptr;
  timerWheel_ = nullptr;
  applicantSm_ = nullptr;
  registrarSm_ = nullptr;
  leaveAllSm_ = nullptr;
  pduParser_.reset();
  parseContext_ = nullptr;
  mrpCounters_ = nullptr;
  receivedFrame_.mrpParsedAttributeDelAll();
  mrpAttrLogSm_ = nullptr;
  attributeStore_.mrpAttrIterDelAll();
  attributeStore_.reviewMachinesIs(nullptr, nullptr);
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
  portRoles_.judgingIs();
}

void MrpSm::handleStandbyMode() {
  MRP_TRACE(8, "void Mrp::MrpSm::handleStandbyMode()");
  // An active engine stays active: only leaving standby does anything.
  if (standbyMode_ || active()) return;
  attributeStore_.doRebuildAttrIter();
  doInitializeCounters();
  parseContext_ = new MrpParseContext("MrpParseContext");
  parseContext_->eventsCounterIs(0);
  pduParser_.emplace(*this, receivedFrame_, *mrpLib_, *mrpConfig_, *parseContext_, *mrpCounters_);
  Quarn::Ptr<Quarn::Clock> clock = Quarn::System::clockPtr();
  timerWheel_ = new Brisk::TimerWheel(clock, kTickMsecs, kInitialMaxTicks, kPreserveOrder, kDefaultBucketSize);
  mrpAttrLogSm_ = new MrpAttrLogSm(attrLogOutput());
  mrpDatabaseDeleteSm_ = new MrpDatabaseDeleteSm(this, mrpAttrLogSm_.ptr(), clock);
  mrpDatabaseAddSm_ = new MrpDatabaseAddSm(this, mrpAttrLogSm_.ptr(), clock);
  attributeStore_.reviewMachinesIs(mrpDatabaseAddSm_.ptr(), mrpDatabaseDeleteSm_.ptr());
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
  return mrpConfigIntfTime("intfLeaveTime", intfId, mrpConfig_->intfLeaveTime(intfId), "leaveTime",
                           mrpConfig_->leaveTime());
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

void MrpSm::doInitializePamMan() {
  auto wiring = std::make_unique<MrpPamWiring>(*entityManager_, mrpLib_->applicationMacAddr(),
                                               mrpLib_->applicationEtype());
  mrpPamSm_ = new MrpPamSm(std::move(wiring), standbyMode_, this);
  mrpPamSm_->handleInitialized();
}

Interface::PamDesiredIntfDir* MrpSm::desiredIntfDir() const {
  const MrpPamWiring* wiring = pamWiring();
  return wiring ? wiring->desiredIntfDir().ptr() : nullptr;
}

Interface::EthDevPamCollection* MrpSm::pamCollection() const {
  const MrpPamWiring* wiring = pamWiring();
  return wiring ? wiring->pamCollection().ptr() : nullptr;
}

Interface::DeviceIntfStatusDir* MrpSm::deviceIntfStatusDir() const {
  const MrpPamWiring* wiring = pamWiring();
  return wiring ? wiring->deviceIntfStatusDir().ptr() : nullptr;
}

Quarn::String MrpSm::baseSpanningTreeTopo(const Velo::IntfId& intfId) const {
  return mrpLib_->baseSpanningTreeTopo(intfId);
}

bool MrpSm::portWanted(const Velo::IntfId& intfId) const {
  // Before packet access is set up no port is wanted.
  const Interface::PamDesiredIntfDir* wanted = desiredIntfDir();
  return wanted && wanted->intfDesired(intfId);
}

void MrpSm::roleActionIs(const Velo::IntfId& intfId, MrpPortRoles::RoleAction action) {
  const bool flush = action == MrpPortRoles::RoleAction::flush;
  for (std::uint8_t type = 1; type <= maxAttrTypes_; ++type) {
    leaveAllSm_->mrpPostLeaveAllToSm(intfId, type, flush ? MrpApplicantEvent::flush : MrpApplicantEvent::redeclare,
                                     flush ? MrpRegistrarEvent::flush : MrpRegistrarEvent::redeclare);
  }
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

Quarn::Ptr<MrpSm> mrpSmFactory(const MrpSmRecords& records, bool standbyMode) {
  return mrpSmFactory(records.brConfig, records.mrpLib, records.mrpConfig, records.mrpStatus, records.stpStatus,
                      records.brTopoConfig, records.ethPhyIntfStatusDir, records.entityManager, standbyMode);
}

}  // namespace Mrp
