#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpCounters.h"
#include "MrpModel/MrpParseContext.h"
#include "MrpModel/MrpParseStatus.h"
#include "MrpModel/MrpParsedAttribute.h"
#include "MrpModel/MrpParsedAttributeKey.h"
#include "MrpModel/MrpStatus.h"
#include "MrpSm/MrpApplicantSm.h"
#include "MrpSm/MrpAttrIter.h"
#include "MrpSm/MrpAttributeStore.h"
#include "MrpSm/MrpAttrLogSm.h"
#include "MrpSm/MrpDatabaseAddSm.h"
#include "MrpSm/MrpDatabaseDeleteSm.h"
#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpPduParser.h"
#include "MrpSm/MrpReceivedFrame.h"
#include "MrpSm/MrpRegistrarSm.h"
#include "MrpSm/MrpPortRoles.h"
#include "MrpSm/MrpSmRecords.h"
#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "brisk/TimerWheel.h"
#include "hive/EntityManager.h"
#include "interface/AllEthPhyIntfStatusDir.h"
#include "interface/AllIntfStatusDir.h"
#include "interface/DeviceIntfStatusDir.h"
#include "interface/EthDevPamCollection.h"
#include "interface/EthDevPamManager.h"
#include "interface/PamDesiredIntfDir.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "stp/MstiPortStatus.h"
#include "stp/Status.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"
#include "velo/PamFilter.h"

namespace Mrp {

// The MRP engine of one application. It is built inactive (standby) or
// active; only an active engine creates its counters, timers and machines.
// It is driven by change notifications, timers and socket readability.
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
  // Whether the engine has left standby and runs its machines.
  bool active() const { return mrpCounters_ != nullptr; }

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

  // The MRP protocol version this engine parses and writes.
  std::uint8_t protocolVersion() const { return protocolVersion_; }

  // ==== Spanning-tree port roles ====
  // A forwarding port that becomes alternate flushes its registrations
  // (Flush!); an alternate port that forwards again declares everything
  // again (Re-declare!).
  MrpPortRoles& portRoles() { return portRoles_; }
  const MrpPortRoles& portRoles() const { return portRoles_; }
  const MrpPortRoles::RoleMap& oldPortRole() const { return portRoles_.oldPortRole(); }
  void handleRole(const std::string& portName, const std::string& mstiName, const std::string& stpiName) {
    portRoles_.handleRole(portName, mstiName, stpiName);
  }
  MrpStpiStatusReactor* stpiStatus(const std::string& name) const { return portRoles_.stpiStatus(name); }
  void handleStpiStatus(const std::string& name) { portRoles_.handleStpiStatus(name); }

  // The 64-bit key of the current attribute type's value in the service
  // object's transmit (Tx) or receive (Rx) fields: the stream id for Talkers
  // and Listeners, the class id for Domains, the VLAN id; 0 otherwise.
  std::uint64_t mrpGetTxAttributeKey() const;
  std::uint64_t mrpGetRxAttributeKey() const;
  std::uint64_t msrpGetTxAttributeKey() const;
  std::uint64_t msrpGetRxAttributeKey() const;
  std::uint64_t mvrpGetTxAttributeKey() const;
  std::uint64_t mvrpGetRxAttributeKey() const;

  // ==== Received frame and its parser (MrpReceivedFrame, MrpPduParser) ====
  // What the parser collected from the current frame for the dispatch.
  const MrpReceivedFrame& receivedFrame() const { return receivedFrame_; }
  MrpReceivedFrame& receivedFrame() { return receivedFrame_; }

  // Parses one MRPDU in place from the packet's head (the ProtocolVersion
  // octet), collecting every value through processMrpEvent. Faults are
  // counted and traced; a malformed PDU keeps what it collected before.
  void parseMrpdu(const Quarn::Ptr<Velo::Pkt>& pkt) { pduParser_->parseMrpdu(pkt); }
  MrpParseStatus parseMessage(const Quarn::Ptr<Velo::Pkt>& pkt) { return pduParser_->parseMessage(pkt); }
  void skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>& pkt) {
    pduParser_->skipMessageDueToFutureProtocolVersion(pkt);
  }
  MrpParseStatus parseAttributeList(const Quarn::Ptr<Velo::Pkt>& pkt) { return pduParser_->parseAttributeList(pkt); }
  MrpParseStatus parseVectorAttribute(const Quarn::Ptr<Velo::Pkt>& pkt) {
    return pduParser_->parseVectorAttribute(pkt);
  }
  MrpParseStatus parseMsrpVector(const Quarn::Ptr<Velo::Pkt>& pkt) { return pduParser_->parseMsrpVector(pkt); }
  MrpParseStatus parseMvrpVector(const Quarn::Ptr<Velo::Pkt>& pkt) { return pduParser_->parseMvrpVector(pkt); }
  MrpParseStatus parseThreePackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt) {
    return pduParser_->parseThreePackedEvents(pkt);
  }
  MrpParseStatus parseThreeFourPackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt) {
    return pduParser_->parseThreeFourPackedEvents(pkt);
  }
  void processThreeAndFourPacked(const Quarn::Ptr<Velo::Pkt>& pkt, std::uint8_t event, std::uint16_t valueIndex,
                                 std::uint16_t threePackedOctets) {
    pduParser_->processThreeAndFourPacked(pkt, event, valueIndex, threePackedOctets);
  }
  void processMrpEvent(std::uint8_t event, std::uint16_t valueIndex) { pduParser_->processMrpEvent(event, valueIndex); }
  void saveParsedMrpAttribute() { pduParser_->saveParsedMrpAttribute(); }
  void saveParsedMrpAttributeValue(MrpParsedAttribute& parsed) { pduParser_->saveParsedMrpAttributeValue(parsed); }
  void saveParsedMsrpAttributeValue(MrpParsedAttribute& parsed) { pduParser_->saveParsedMsrpAttributeValue(parsed); }
  void saveParsedMvrpAttributeValue(MrpParsedAttribute& parsed) { pduParser_->saveParsedMvrpAttributeValue(parsed); }

  // The received frame's collections, value by value.
  using ParsedKeyQueue = MrpReceivedFrame::KeyQueue;
  const MrpParsedAttributeTable& mrpParsedAttributes() const { return receivedFrame_.mrpParsedAttributes(); }
  Quarn::Ptr<MrpParsedAttribute> mrpParsedAttribute(const MrpParsedAttributeKey& key) const {
    return receivedFrame_.mrpParsedAttribute(key);
  }
  Quarn::Ptr<MrpParsedAttribute> mrpParsedAttributeIs(const MrpParsedAttributeKey& key) {
    return receivedFrame_.mrpParsedAttributeIs(key);
  }
  void mrpParsedAttributeDel(const MrpParsedAttributeKey& key) { receivedFrame_.mrpParsedAttributeDel(key); }
  void mrpParsedAttributeDelAll() { receivedFrame_.mrpParsedAttributeDelAll(); }
  const ParsedKeyQueue& mrpParsedAttributeKey() const { return receivedFrame_.mrpParsedAttributeKey(); }
  std::uint32_t mrpParsedAttributeKeyEnq(const MrpParsedAttributeKey& key) {
    return receivedFrame_.mrpParsedAttributeKeyEnq(key);
  }
  MrpParsedAttributeKey mrpParsedAttributeKeyDeq() { return receivedFrame_.mrpParsedAttributeKeyDeq(); }
  void mrpParsedAttributeKeyDelAll() { receivedFrame_.mrpParsedAttributeKeyDelAll(); }
  const ParsedKeyQueue& msrpParsedDomainKey() const { return receivedFrame_.msrpParsedDomainKey(); }
  std::uint32_t msrpParsedDomainKeyEnq(const MrpParsedAttributeKey& key) {
    return receivedFrame_.msrpParsedDomainKeyEnq(key);
  }
  MrpParsedAttributeKey msrpParsedDomainKeyDeq() { return receivedFrame_.msrpParsedDomainKeyDeq(); }
  void msrpParsedDomainKeyDelAll() { receivedFrame_.msrpParsedDomainKeyDelAll(); }
  const std::map<std::uint8_t, bool>& mrpRxLeaveAll() const { return receivedFrame_.mrpRxLeaveAll(); }
  void mrpRxLeaveAllIs(std::uint8_t type, bool leaveAll) { receivedFrame_.mrpRxLeaveAllIs(type, leaveAll); }
  void mrpRxLeaveAllDel(std::uint8_t attributeType) { receivedFrame_.mrpRxLeaveAllDel(attributeType); }
  void mrpRxLeaveAllDelAll() { receivedFrame_.mrpRxLeaveAllDelAll(); }
  bool futureProtocolVersion() const { return receivedFrame_.futureProtocolVersion(); }
  void futureProtocolVersionIs(bool future) { receivedFrame_.futureProtocolVersionIs(future); }
  bool recycledPkt() const { return receivedFrame_.recycledPkt(); }
  void recycledPktIs(bool recycled) { receivedFrame_.recycledPktIs(recycled); }
  // For a frame that is parsed but not dispatched.
  void parseResultsDelAll() { receivedFrame_.parseResultsDelAll(); }
  // ==== end of received frame ====

  // ==== Attribute database and batched updates ====
  // The store with its pending additions and deletions and its index; the
  // forwards below keep its operations on the engine for the machines.
  MrpAttributeStore& attributeStore() { return attributeStore_; }
  const MrpAttributeStore& attributeStore() const { return attributeStore_; }

  // Look-ups.
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttrFromDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                     const std::uint64_t& key, bool useLocalCopy) const {
    return attributeStore_.mrpGetAttrFromDatabase(intfId, attributeType, key, useLocalCopy);
  }
  Quarn::Ptr<MrpAttrDatabase> createEntryInDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                    const std::uint64_t& key) {
    return attributeStore_.createEntryInDatabase(intfId, attributeType, key);
  }
  Quarn::Ptr<MrpIntfTypeApplicant> mrpIntfTypeApplicant(const Velo::IntfId& intfId,
                                                        std::uint8_t attributeType) const {
    return attributeStore_.mrpIntfTypeApplicant(intfId, attributeType);
  }

  // The attribute index.
  using AttrIterMap = MrpAttributeStore::AttrIterMap;
  const AttrIterMap& mrpAttrIters() const { return attributeStore_.mrpAttrIters(); }
  Quarn::Ptr<MrpAttrIter> mrpAttrIter(const MrpAttrIter::Key& key) const { return attributeStore_.mrpAttrIter(key); }
  Quarn::Ptr<MrpAttrIter> mrpAttrIterIs(const MrpAttrIter::Key& key) { return attributeStore_.mrpAttrIterIs(key); }
  void mrpAttrIterDel(const MrpAttrIter::Key& key) { attributeStore_.mrpAttrIterDel(key); }
  void mrpAttrIterDelAll() { attributeStore_.mrpAttrIterDelAll(); }
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

  // Batched updates, committed by the review machines.
  using AddPendingAttrMap = MrpAttributeStore::AddPendingAttrMap;
  using DeletePendingAttrMap = MrpAttributeStore::DeletePendingAttrMap;
  Quarn::Ptr<MrpAttrDatabase> addAttrToAddPending(const MrpAttribute& attribute) {
    return attributeStore_.addAttrToAddPending(attribute);
  }
  void removeAttrFromAddPending(const MrpAttribute& attribute) { attributeStore_.removeAttrFromAddPending(attribute); }
  void addAttrToDeletePending(const MrpAttribute& attribute) { attributeStore_.addAttrToDeletePending(attribute); }
  const AddPendingAttrMap& addPendingAttrs() const { return attributeStore_.addPendingAttrs(); }
  Quarn::Ptr<MrpAttrDatabase> addPendingAttr(const MrpAttribute& attribute) const {
    return attributeStore_.addPendingAttr(attribute);
  }
  void addPendingAttrIs(const MrpAttribute& attribute, Quarn::Ptr<MrpAttrDatabase> entry) {
    attributeStore_.addPendingAttrIs(attribute, std::move(entry));
  }
  void addPendingAttrDel(const MrpAttribute& attribute) { attributeStore_.addPendingAttrDel(attribute); }
  void addPendingAttrDelAll() { attributeStore_.addPendingAttrDelAll(); }
  const DeletePendingAttrMap& deletePendingAttrs() const { return attributeStore_.deletePendingAttrs(); }
  bool deletePendingAttr(const MrpAttribute& attribute) const { return attributeStore_.deletePendingAttr(attribute); }
  void deletePendingAttrIs(const MrpAttribute& attribute, bool pending) {
    attributeStore_.deletePendingAttrIs(attribute, pending);
  }
  void deletePendingAttrDel(const MrpAttribute& attribute) { attributeStore_.deletePendingAttrDel(attribute); }
  void deletePendingAttrDelAll() { attributeStore_.deletePendingAttrDelAll(); }

  // The operations below act on the current attribute: the port, type and
  // key of the parse context, which the caller sets first (MrpSmDatabase.cpp).

  // The current attribute's entry; when missing and `create`, a new VO/MT
  // entry holding the received value.
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
  void mrpPopulateMsrpValueInDatabase(const Quarn::Ptr<MrpAttrDatabase>& entry, bool txAttribute);
  void mrpPopulateMvrpValueInDatabase(const Quarn::Ptr<MrpAttrDatabase>& entry, bool txAttribute);

  // Makes `attribute` current and decodes its stored value (pending
  // additions included) into the transmit field of its type, so it can be
  // sent; an absent attribute leaves the transmit fields unchanged.
  void mrpFillContextFromDatabase(const MrpAttribute& attribute);
  // The same with the attribute's entry, found by the caller (null if absent).
  void mrpFillContextFromDatabase(const MrpAttribute& attribute, const MrpAttrDatabase* entry);
  void mrpFillMsrpContextFromDatabase(const MrpAttrDatabase& entry);
  void mrpFillMvrpContextFromDatabase(const MrpAttrDatabase& entry);

  // Whether the received value of the current attribute is the stored one;
  // false when it is not stored.
  bool mrpRxVectorSameAsDatabaseAttr() const;
  // The same against the current attribute's entry, found by the caller.
  bool mrpRxVectorSameAsDatabaseAttr(const MrpAttrDatabase& entry) const;
  bool msrpRxVectorSameAsDatabaseAttr() const;
  bool msrpRxVectorSameAsDatabaseAttr(const MrpAttrDatabase& entry) const;
  bool mvrpRxVectorSameAsDatabaseAttr() const;

  // ==== end of attribute database ====

  // ==== Packet access: its wiring lives in mrpPamSm ====
  // Ports listed true get a socket (MrpLib::mrpInterfaceEnable).
  // Each null once packet access has gone.
  Interface::PamDesiredIntfDir* desiredIntfDir() const;
  Interface::EthDevPamCollection* pamCollection() const;
  Interface::DeviceIntfStatusDir* deviceIntfStatusDir() const;

  // ==== Received-event dispatch (MrpSmDispatch.cpp) ====
  // Applies what was parsed from a port's frame: its LeaveAlls first (each
  // restarting the port's LeaveAll timer of the type), then what they made
  // the port send, then MSRP Domain attributes, then every other attribute
  // in arrival order. Clears the frame's parse results.
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
  // The same for the saved octets of a parsed attribute, whose registration
  // the caller found (null when it has none).
  void fillMrpLibFromSavedValue(const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets,
                                const MrpAttrDatabase* stored);
  void fillMsrpLibFromSavedValue(const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets,
                                 const MrpAttrDatabase* stored);
  void fillMvrpLibFromSavedValue(const MrpParsedAttributeKey& key, std::span<const std::uint8_t> octets);
  // ==== end of received-event dispatch ====

  // ==== Transmit, done by the service object's transmitter ====
  MrpTransmitter& transmitter() const { return mrpLib_->transmitter(); }
  void mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter().mrpTransmitTxPacket(intfId, secondPktContext);
  }
  void mrpTransmitTxAttributes(const Velo::IntfId& intfId) { transmitter().mrpTransmitTxAttributes(intfId); }
  void mrpTransmitTxAttributes() { transmitter().mrpTransmitTxAttributes(); }
  // ==== end of transmit ====

  // The port's leave timer period: its own intfLeaveTime when set and not 0,
  // else leaveTime; a time that is not finite or is negative counts as 0.
  Quarn::Seconds mrpGetLeaveTime(const Velo::IntfId& intfId) const;

 protected:
  ~MrpSm() override;

 private:
  void doInitializePamMan();
  const MrpPamWiring* pamWiring() const { return mrpPamSm_ ? mrpPamSm_->wiring() : nullptr; }
  // What the port roles ask of the engine.
  Quarn::String baseSpanningTreeTopo(const Velo::IntfId& intfId) const override;
  bool portWanted(const Velo::IntfId& intfId) const override;
  bool rolesAct() const override { return !standbyMode_ && active(); }
  void roleActionIs(const Velo::IntfId& intfId, MrpPortRoles::RoleAction action) override;
  void doInitializeCounters();
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

  // ==== Received frame fields ====
  MrpReceivedFrame receivedFrame_{mrpLib_->application()};
  // Made with the parse context, when the engine leaves standby.
  std::optional<MrpPduParser> pduParser_;
  // ==== end of received frame fields ====

  void processParsedRuns(const Velo::IntfId& intfId);
  // Makes one received value current, `fill(stored)` putting it into the
  // service object's fields, then applicant and registrar on its entry.
  template <class Fill>
  void processParsedValue(const Velo::IntfId& intfId, const MrpIntfTypeApplicant* registrations,
                          const MrpParsedAttributeKey& key, std::uint8_t event, Fill&& fill);
  // The run's value `index` into the receive and transmit fields of its type.
  void fillMrpLibFromRun(const MrpParsedRuns::Run& run, std::size_t index, const MrpAttrDatabase* stored);
  // A received Domain's transmit field from its stored registration.
  void answerDomainWithStored(std::uint8_t attributeType, const MrpAttrDatabase* stored);

};

// A new engine, initialised: active unless `standbyMode`.
Quarn::Ptr<MrpSm> mrpSmFactory(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib,
                               Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<MrpStatus> mrpStatus,
                               Quarn::Ptr<Stp::Status> stpStatus,
                               Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
                               Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
                               Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode);
Quarn::Ptr<MrpSm> mrpSmFactory(const MrpSmRecords& records, bool standbyMode);

}  // namespace Mrp
