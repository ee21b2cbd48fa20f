#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpCounters.h"
#include "MrpModel/MrpParseContext.h"
#include "MrpModel/MrpStatus.h"
#include "MrpSm/MrpApplicantSm.h"
#include "MrpSm/MrpAttrIter.h"
#include "MrpSm/MrpAttrLogSm.h"
#include "MrpSm/MrpDatabaseAddSm.h"
#include "MrpSm/MrpDatabaseDeleteSm.h"
#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpRegistrarSm.h"
#include "MrpSm/MrpStpStatusReactor.h"
#include "MrpSm/MrpStpiStatusReactor.h"
#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "brisk/TimerWheel.h"
#include "hive/EntityManager.h"
#include "interface/AllEthPhyIntfStatusDir.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "stp/MstiPortStatus.h"
#include "stp/Status.h"
#include "velo/IntfId.h"

namespace Mrp {

// The MRP engine of one application. It is built inactive (standby) or
// active; only an active engine creates its counters, timers and machines.
// It is driven by change notifications, timers and socket readability.
class MrpSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // The engine's timer wheel: 100 ms ticks.
  static constexpr std::uint32_t kTickMsecs = 100;
  static constexpr std::uint32_t kInitialMaxTicks = 60000;
  static constexpr bool kPreserveOrder = true;
  static constexpr std::uint32_t kDefaultBucketSize = 1024;

  MrpSm(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib, Quarn::Ptr<MrpConfig> mrpConfig,
        Quarn::Ptr<MrpStatus> mrpStatus, Quarn::Ptr<Stp::Status> stpStatus,
        Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
        Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
        Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode);
  MrpSm(const MrpSm&) = delete;
  MrpSm& operator=(const MrpSm&) = delete;

  // Given at construction.
  const Quarn::Ptr<Bridging::Config>& brConfig() const { return brConfig_; }
  const Quarn::Ptr<MrpLib>& mrpLib() const { return mrpLib_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }
  const Quarn::Ptr<MrpStatus>& mrpStatus() const { return mrpStatus_; }
  const Quarn::Ptr<Stp::Status>& stpStatus() const { return stpStatus_; }
  const Quarn::Ptr<Bridging::Topology::Config>& brTopoConfig() const { return brTopoConfig_; }
  const Quarn::Ptr<Interface::AllEthPhyIntfStatusDir>& ethPhyIntfStatusDir() const {
    return ethPhyIntfStatusDir_;
  }
  const Quarn::Ptr<Hive::EntityManager>& entityManager() const { return entityManager_; }

  bool standbyMode() const { return standbyMode_; }
  // Stores the flag only; the agent then calls handleStandbyMode().
  void standbyModeIs(bool standbyMode) { standbyMode_ = standbyMode; }

  void handleInitialized();
  // Leaves standby: rebuilds the attribute index from the store and creates
  // counters, parse context, timer wheel and machines. Deliberately does
  // nothing on an engine that is active already, or that is still standby.
  void handleStandbyMode();

  // Created by the engine.
  const Quarn::Ptr<MrpPamSm>& mrpPamSm() const { return mrpPamSm_; }
  const Quarn::Ptr<MrpCounters>& mrpCounters() const { return mrpCounters_; }
  const Quarn::Ptr<MrpParseContext>& parseContext() const { return parseContext_; }
  const Quarn::Ptr<Brisk::TimerWheel>& timerWheel() const { return timerWheel_; }
  const Quarn::Ptr<MrpAttrLogSm>& mrpAttrLogSm() const { return mrpAttrLogSm_; }
  const Quarn::Ptr<MrpDatabaseDeleteSm>& mrpDatabaseDeleteSm() const { return mrpDatabaseDeleteSm_; }
  const Quarn::Ptr<MrpDatabaseAddSm>& mrpDatabaseAddSm() const { return mrpDatabaseAddSm_; }
  const Quarn::Ptr<MrpApplicantSm>& applicantSm() const { return applicantSm_; }
  const Quarn::Ptr<MrpRegistrarSm>& registrarSm() const { return registrarSm_; }
  const Quarn::Ptr<MrpLeaveAllSm>& leaveAllSm() const { return leaveAllSm_; }

  // Attribute types of the application: 4 for MSRP, 1 for MVRP, else 0.
  std::uint8_t maxAttrTypes() const { return maxAttrTypes_; }
  static std::uint8_t maxAttrTypesOf(MrpApplication application);

  bool recycledPkt() const { return recycledPkt_; }
  void recycledPktIs(bool recycled) { recycledPkt_ = recycled; }
  // The MRP protocol version this engine parses and writes.
  std::uint8_t protocolVersion() const { return protocolVersion_; }

  // Attribute types whose received vectors carried a LeaveAll.
  const std::map<std::uint8_t, bool>& mrpRxLeaveAll() const { return mrpRxLeaveAll_; }
  void mrpRxLeaveAllIs(std::uint8_t attributeType, bool leaveAll) { mrpRxLeaveAll_[attributeType] = leaveAll; }
  void mrpRxLeaveAllDelAll() { mrpRxLeaveAll_.clear(); }

  // The last role seen per port, kept for the port-role coupling.
  const std::map<Velo::IntfId, Stp::MstiPortStatus::Role>& oldPortRole() const { return oldPortRole_; }

  // One watcher per spanning-tree instance present in stpStatus.
  MrpStpiStatusReactor* stpiStatus(const std::string& name) const;
  std::size_t stpiStatusCount() const { return stpiStatus_.size(); }
  void stpiStatusIs(const std::string& name);
  void stpiStatusDel(const std::string& name) { stpiStatus_.erase(name); }
  // An instance appeared in or left stpStatus.
  void handleStpiStatus(const std::string& name);

  // The attribute index: one entry per (port, attribute type).
  using AttrIterMap = std::unordered_map<MrpAttrIter::Key, Quarn::Ptr<MrpAttrIter>>;
  const AttrIterMap& mrpAttrIters() const { return mrpAttrIter_; }
  Quarn::Ptr<MrpAttrIter> mrpAttrIter(const MrpAttrIter::Key& key) const;
  Quarn::Ptr<MrpAttrIter> mrpAttrIterIs(const MrpAttrIter::Key& key);
  void mrpAttrIterDel(const MrpAttrIter::Key& key) { mrpAttrIter_.erase(key); }
  void mrpAttrIterDelAll() { mrpAttrIter_.clear(); }

  // The 64-bit key of the current attribute type's value in the service
  // object's transmit (Tx) or receive (Rx) fields: the stream id for Talkers
  // and Listeners, the class id for Domains, the VLAN id; 0 otherwise.
  std::uint64_t mrpGetTxAttributeKey() const;
  std::uint64_t mrpGetRxAttributeKey() const;
  std::uint64_t msrpGetTxAttributeKey() const;
  std::uint64_t msrpGetRxAttributeKey() const;
  std::uint64_t mvrpGetTxAttributeKey() const;
  std::uint64_t mvrpGetRxAttributeKey() const;

  // ==== Receive parser (MrpSmParse.cpp) ====
  // ==== end of receive parser ====

  // ==== Attribute database and batched updates (MrpSmDatabase.cpp, MrpSmPending.cpp) ====
  // ==== end of attribute database ====

  // ==== Packet access (MrpSmPam.cpp) ====
  // ==== end of packet access ====

 protected:
  ~MrpSm() override;

 private:
  void doInitializePamMan();
  void doInitializeCounters();
  void doRebuildAttrIter();
  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> attrLogOutput() const;

  Quarn::Ptr<Bridging::Config> brConfig_;
  Quarn::Ptr<MrpLib> mrpLib_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<MrpStatus> mrpStatus_;
  Quarn::Ptr<Stp::Status> stpStatus_;
  Quarn::Ptr<Bridging::Topology::Config> brTopoConfig_;
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir_;
  Quarn::Ptr<Hive::EntityManager> entityManager_;
  bool standbyMode_;

  MrpStpStatusReactor stpStatusReactor_;
  std::map<std::string, std::unique_ptr<MrpStpiStatusReactor>> stpiStatus_;
  std::map<Velo::IntfId, Stp::MstiPortStatus::Role> oldPortRole_;

  Quarn::Ptr<MrpPamSm> mrpPamSm_;
  Quarn::Ptr<MrpCounters> mrpCounters_;
  Quarn::Ptr<MrpParseContext> parseContext_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  Quarn::Ptr<MrpAttrLogSm> mrpAttrLogSm_;
  Quarn::Ptr<MrpDatabaseDeleteSm> mrpDatabaseDeleteSm_;
  Quarn::Ptr<MrpDatabaseAddSm> mrpDatabaseAddSm_;
  Quarn::Ptr<MrpApplicantSm> applicantSm_;
  Quarn::Ptr<MrpRegistrarSm> registrarSm_;
  Quarn::Ptr<MrpLeaveAllSm> leaveAllSm_;
  std::uint8_t maxAttrTypes_ = 0;
  bool recycledPkt_ = false;
  std::uint8_t protocolVersion_ = 0;
  std::map<std::uint8_t, bool> mrpRxLeaveAll_;
  AttrIterMap mrpAttrIter_;

  // ==== Receive parser fields ====
  // ==== end of receive parser fields ====

  // ==== Attribute database fields ====
  // ==== end of attribute database fields ====

  // ==== Packet access fields ====
  // ==== end of packet access fields ====
};

// A new engine, initialised: active unless `standbyMode`.
Quarn::Ptr<MrpSm> mrpSmFactory(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib,
                               Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<MrpStatus> mrpStatus,
                               Quarn::Ptr<Stp::Status> stpStatus,
                               Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
                               Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
                               Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode);

}  // namespace Mrp
