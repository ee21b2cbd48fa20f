#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpCounters.h"
#include "MrpModel/MrpParseContext.h"
#include "MrpModel/MrpParsedAttribute.h"
#include "MrpModel/MrpStatus.h"
#include "MrpSm/MrpApplicantSm.h"
#include "MrpSm/MrpAttributeStore.h"
#include "MrpSm/MrpAttrLogSm.h"
#include "MrpSm/MrpDatabaseAddSm.h"
#include "MrpSm/MrpDatabaseDeleteSm.h"
#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpPduParser.h"
#include "MrpSm/MrpPortRoles.h"
#include "MrpSm/MrpReceivedFrame.h"
#include "MrpSm/MrpRegistrarSm.h"
#include "MrpSm/MrpSmRecords.h"
#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "brisk/TimerWheel.h"
#include "hive/EntityManager.h"
#include "interface/AllEthPhyIntfStatusDir.h"
#include "interface/DeviceIntfStatusDir.h"
#include "interface/EthDevPamCollection.h"
#include "interface/PamDesiredIntfDir.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "stp/Status.h"
#include "velo/IntfId.h"

namespace Mrp {

// The MRP engine of one application: the hub every machine calls back into.
// It is built inactive (standby) or active; only an active engine creates
// its counters, timers and machines. It owns the parts that do the work
// (the received frame and its parser, the attribute store, the port roles,
// packet access) and forwards to them; transmission is the service object's
// transmitter. It is driven by change notifications, timers and socket
// readability.
class MrpSm : public Quarn::PtrInterface, public Quarn::Lifecycle, private MrpPortRoles::Owner {
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

  // ==== Inputs, given at construction ====
  const Quarn::Ptr<Bridging::Config>& brConfig() const { return brConfig_; }
  const Quarn::Ptr<MrpLib>& mrpLib() const { return mrpLib_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }
  const Quarn::Ptr<MrpStatus>& mrpStatus() const { return mrpStatus_; }
  const Quarn::Ptr<Stp::Status>& stpStatus() const { return stpStatus_; }
  const Quarn::Ptr<Bridging::Topology::Config>& brTopoConfig() const { return brTopoConfig_; }
  const Quarn::Ptr<Interface::AllEthPhyIntfStatusDir>& ethPhyIntfStatusDir() const { return ethPhyIntfStatusDir_; }
  const Quarn::Ptr<Hive::EntityManager>& entityManager() const { return entityManager_; }

  // ==== Lifecycle ====
  bool standbyMode() const { return standbyMode_; }
  // Stores the flag only; the agent then calls handleStandbyMode().
  void standbyModeIs(bool standbyMode) { standbyMode_ = standbyMode; }
  void handleInitialized();
  // Leaves standby: rebuilds the attribute index from the store and creates
  // counters, parse context, timer wheel and machines. Deliberately does
  // nothing on an engine that is active already, or that is still standby.
  void handleStandbyMode();
  // Whether the engine has left standby and runs its machines.
  bool active() const { return mrpCounters_ != nullptr; }

  // ==== Created by the engine ====
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
  // The MRP protocol version this engine parses and writes.
  std::uint8_t protocolVersion() const { return protocolVersion_; }

  // ==== Spanning-tree port roles (MrpPortRoles) ====
  // A forwarding port that becomes alternate flushes its registrations;
  // an alternate port that forwards again declares everything again.
  MrpPortRoles& portRoles() { return portRoles_; }
  const MrpPortRoles& portRoles() const { return portRoles_; }
  const MrpPortRoles::RoleMap& oldPortRole() const { return portRoles_.oldPortRole(); }
  void handleRole(const std::string& port, const std::string& msti, const std::string& stpi) {
    portRoles_.handleRole(port, msti, stpi);
  }
  MrpStpiStatusReactor* stpiStatus(const std::string& name) const { return portRoles_.stpiStatus(name); }
  void handleStpiStatus(const std::string& name) { portRoles_.handleStpiStatus(name); }

  // ==== Received frame (MrpReceivedFrame) and its parser (MrpPduParser) ====
  MrpReceivedFrame& receivedFrame() { return receivedFrame_; }
  const MrpReceivedFrame& receivedFrame() const { return receivedFrame_; }
  // Made when the engine leaves standby.
  MrpPduParser& pduParser() { return *pduParser_; }
  // Parses one MRPDU in place from the packet's head (the ProtocolVersion
  // octet) into the received frame. Faults are counted and traced; a
  // malformed PDU keeps what it collected before.
  void parseMrpdu(const Quarn::Ptr<Velo::Pkt>& pkt) { pduParser_->parseMrpdu(pkt); }

  // ==== Received-event dispatch (MrpSmDispatch.cpp) ====
  // Applies what was parsed from a port's frame: its LeaveAlls first (each
  // restarting the port's LeaveAll timer of the type), then what they made
  // the port send, then MSRP Domain attributes, then every other attribute
  // in arrival order. Each value's registration is found, or created, once
  // and the machines act on it. Clears the frame's parse results.
  void processParsedAttributes(const Velo::IntfId& intfId);
  // One parsed attribute: made current, then applicant, then registrar.
  void processParsedAttribute(const MrpParsedAttributeKey& key, const Velo::IntfId& intfId);
  // rLA! to every registration of the port and type. The applicant answers
  // as if the registrar already held what the same frame declares.
  void mrpProcessRxLeaveAll(const Velo::IntfId& intfId, std::uint8_t attributeType);
  // Makes a parsed attribute current: its saved value into the service
  // object's receive and transmit fields of its type; a Domain's transmit
  // field then takes the port's stored Domain, if any.
  void fillMrpLibFromSavedValue(const Velo::IntfId& intfId, const MrpParsedAttribute& parsedAttribute);

  // ==== Attribute store (MrpAttributeStore): look-ups, index, batched updates ====
  MrpAttributeStore& attributeStore() { return attributeStore_; }
  const MrpAttributeStore& attributeStore() const { return attributeStore_; }
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttrFromDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                     const std::uint64_t& key, bool useLocalCopy) const {
    return attributeStore_.mrpGetAttrFromDatabase(intfId, attributeType, key, useLocalCopy);
  }
  Quarn::Ptr<MrpAttrDatabase> createEntryInDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                    const std::uint64_t& key) {
    return attributeStore_.createEntryInDatabase(intfId, attributeType, key);
  }
  void addToAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key) {
    attributeStore_.addToAttrIter(intfId, attributeType, key);
  }
  void removeFromAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key) {
    attributeStore_.removeFromAttrIter(intfId, attributeType, key);
  }
  template <class Handle>
  void mrpAttrIterWalk(const Velo::IntfId& intfId, std::uint8_t attributeType, Handle&& handle) {
    attributeStore_.mrpAttrIterWalk(intfId, attributeType, std::forward<Handle>(handle));
  }
  Quarn::Ptr<MrpAttrDatabase> addAttrToAddPending(const MrpAttribute& attribute) {
    return attributeStore_.addAttrToAddPending(attribute);
  }
  void removeAttrFromAddPending(const MrpAttribute& attribute) { attributeStore_.removeAttrFromAddPending(attribute); }
  void addAttrToDeletePending(const MrpAttribute& attribute) { attributeStore_.addAttrToDeletePending(attribute); }

  // ==== The current attribute (MrpSmDatabase.cpp, MrpSmAttrKey.cpp) ====
  // The port, type and key of the parse context, which the caller sets first.
  // Its entry; when missing and `create`, a new VO/MT entry holding the
  // received value.
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttribute(bool create);
  // Adds the attribute (batched), or resets a stored one, to VO/MT with the
  // current type's transmit (`txAttribute`) or received value.
  Quarn::Ptr<MrpAttrDatabase> mrpAddAttrToDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                   const std::uint64_t& key, bool txAttribute);
  // Queues the current attribute for batched deletion; it reads as absent at once.
  void mrpDeleteAttrFromDatabase();
  // Writes the current type's transmit or received value into the entry's
  // value octets; a type outside the application writes nothing.
  void mrpPopulateValueInDatabase(const Quarn::Ptr<MrpAttrDatabase>& entry, bool txAttribute);
  // Makes `attribute` current and decodes its stored value (pending
  // additions included) into the transmit field of its type, so it can be
  // sent; an absent attribute leaves the transmit fields unchanged. The
  // second form takes the entry the caller found (null if absent).
  void mrpFillContextFromDatabase(const MrpAttribute& attribute);
  void mrpFillContextFromDatabase(const MrpAttribute& attribute, const MrpAttrDatabase* entry);
  // Whether the received value of the current attribute is the stored one
  // (false when it is not stored); the second form against the entry found.
  bool mrpRxVectorSameAsDatabaseAttr() const;
  bool mrpRxVectorSameAsDatabaseAttr(const MrpAttrDatabase& entry) const;
  // The 64-bit key of the current type's value in the service object's
  // transmit (Tx) or receive (Rx) fields: the stream id for Talkers and
  // Listeners, the class id for Domains, the VLAN id; 0 otherwise.
  std::uint64_t mrpGetTxAttributeKey() const;
  std::uint64_t mrpGetRxAttributeKey() const;
  // The port's leave timer period: its own intfLeaveTime when set and not 0,
  // else leaveTime; a time that is not finite or is negative counts as 0.
  Quarn::Seconds mrpGetLeaveTime(const Velo::IntfId& intfId) const;

  // ==== Transmission, done by the service object's transmitter ====
  MrpTransmitter& transmitter() const { return mrpLib_->transmitter(); }
  void mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter().mrpTransmitTxPacket(intfId, secondPktContext);
  }
  void mrpTransmitTxAttributes(const Velo::IntfId& intfId) { transmitter().mrpTransmitTxAttributes(intfId); }
  void mrpTransmitTxAttributes() { transmitter().mrpTransmitTxAttributes(); }

  // ==== Packet access, wired by mrpPamSm; each null once it has gone ====
  // Ports listed true get a socket (MrpLib::mrpInterfaceEnable).
  Interface::PamDesiredIntfDir* desiredIntfDir() const;
  Interface::EthDevPamCollection* pamCollection() const;
  Interface::DeviceIntfStatusDir* deviceIntfStatusDir() const;

 protected:
  ~MrpSm() override;

 private:
  void doInitializePamMan();
  void doInitializeCounters();
  const MrpPamWiring* pamWiring() const { return mrpPamSm_ ? mrpPamSm_->wiring() : nullptr; }
  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> attrLogOutput() const;
  // What the port roles ask of the engine.
  Quarn::String baseSpanningTreeTopo(const Velo::IntfId& intfId) const override;
  bool portWanted(const Velo::IntfId& intfId) const override;
  bool rolesAct() const override { return !standbyMode_ && active(); }
  void roleActionIs(const Velo::IntfId& intfId, MrpPortRoles::RoleAction action) override;
  // The dispatch of a frame collected vector by vector, and of one value
  // whose port and type's registrations the caller looked up: made current,
  // `fill(stored)` putting it into the service object's fields, then
  // applicant and registrar on its entry.
  void processParsedRuns(const Velo::IntfId& intfId);
  template <class Fill>
  void processParsedValue(const Velo::IntfId& intfId, const MrpIntfTypeApplicant* registrations,
                          const MrpParsedAttributeKey& key, std::uint8_t event, Fill&& fill);

  Quarn::Ptr<Bridging::Config> brConfig_;
  Quarn::Ptr<MrpLib> mrpLib_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<MrpStatus> mrpStatus_;
  Quarn::Ptr<Stp::Status> stpStatus_;
  Quarn::Ptr<Bridging::Topology::Config> brTopoConfig_;
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir_;
  Quarn::Ptr<Hive::EntityManager> entityManager_;
  bool standbyMode_;

  MrpPortRoles portRoles_;
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
  std::uint8_t protocolVersion_ = 0;
  MrpAttributeStore attributeStore_;
  MrpReceivedFrame receivedFrame_{mrpLib_->application()};
  std::optional<MrpPduParser> pduParser_;
};

// A new engine, initialised: active unless `standbyMode`.
Quarn::Ptr<MrpSm> mrpSmFactory(const MrpSmRecords& records, bool standbyMode);
Quarn::Ptr<MrpSm> mrpSmFactory(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib,
                               Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<MrpStatus> mrpStatus,
                               Quarn::Ptr<Stp::Status> stpStatus,
                               Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
                               Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
                               Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode);

}  // namespace Mrp
