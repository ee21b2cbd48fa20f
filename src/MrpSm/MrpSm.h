#pragma once

#include <array>
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
#include "MrpSm/MrpAttrLogSm.h"
#include "MrpSm/MrpDatabaseAddSm.h"
#include "MrpSm/MrpDatabaseDeleteSm.h"
#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpParsedAttributeTable.h"
#include "MrpSm/MrpParsedRuns.h"
#include "MrpSm/MrpRegistrarSm.h"
#include "MrpSm/MrpStpStatusReactor.h"
#include "MrpSm/MrpStpiStatusReactor.h"
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
#include "quarn/IndexedFifo.h"
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

  bool recycledPkt() const { return recycledPkt_; }
  void recycledPktIs(bool recycled) { recycledPkt_ = recycled; }
  // The MRP protocol version this engine parses and writes.
  std::uint8_t protocolVersion() const { return protocolVersion_; }

  // Attribute types whose received vectors carried a LeaveAll.
  const std::map<std::uint8_t, bool>& mrpRxLeaveAll() const { return mrpRxLeaveAll_; }
  void mrpRxLeaveAllIs(std::uint8_t attributeType, bool leaveAll) { mrpRxLeaveAll_[attributeType] = leaveAll; }
  void mrpRxLeaveAllDelAll() { mrpRxLeaveAll_.clear(); }

  // ==== Spanning-tree port-role coupling (MrpSmRole.cpp) ====
  // The last role seen per port, also while in standby.
  const std::map<Velo::IntfId, Stp::MstiPortStatus::Role>& oldPortRole() const { return oldPortRole_; }
  // Judges the role of a port in a tree instance of a spanning-tree
  // instance: only the topology of the port's base VLAN counts, and only on
  // a port wanted for packet access. A forwarding port that becomes
  // alternate flushes its registrations (Flush!); an alternate port that
  // forwards again declares everything again (Re-declare!).
  void handleRole(const std::string& portName, const std::string& mstiName, const std::string& stpiName);

  // One watcher per spanning-tree instance present in stpStatus.
  MrpStpiStatusReactor* stpiStatus(const std::string& name) const;
  std::size_t stpiStatusCount() const { return stpiStatus_.size(); }
  void stpiStatusIs(const std::string& name);
  void stpiStatusDel(const std::string& name) { stpiStatus_.erase(name); }
  // An instance appeared in or left stpStatus.
  void handleStpiStatus(const std::string& name);
  // ==== end of port-role coupling ====

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
  // Parses one MRPDU in place from the packet's head (the ProtocolVersion
  // octet), dispatching every value through processMrpEvent. Faults are
  // counted and traced; a malformed PDU keeps what it dispatched before.
  void parseMrpdu(const Quarn::Ptr<Velo::Pkt>& pkt);
  // The parse levels, each consuming what it reads from the packet's head.
  MrpParseStatus parseMessage(const Quarn::Ptr<Velo::Pkt>& pkt);
  void skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseAttributeList(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseVectorAttribute(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseMsrpVector(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseMvrpVector(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseThreePackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseThreeFourPackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt);
  // The head is at the vector's first three-packed octet; the Listener
  // declaration of `valueIndex` is read behind them without consuming it.
  void processThreeAndFourPacked(const Quarn::Ptr<Velo::Pkt>& pkt, std::uint8_t event, std::uint16_t valueIndex,
                                 std::uint16_t threePackedOctets);

  // One received value: derives it from the FirstValue, keys it, writes the
  // parse context and collects it (unless recycled or flooding).
  void processMrpEvent(std::uint8_t event, std::uint16_t valueIndex);
  void saveParsedMrpAttribute();
  void saveParsedMrpAttributeValue(MrpParsedAttribute& parsedAttribute);
  void saveParsedMsrpAttributeValue(MrpParsedAttribute& parsedAttribute);
  void saveParsedMvrpAttributeValue(MrpParsedAttribute& parsedAttribute);

  // Set by parseMrpdu for a ProtocolVersion other than 0; the packet access
  // clears it when it has handled the frame.
  bool futureProtocolVersion() const { return futureProtocolVersion_; }
  void futureProtocolVersionIs(bool future) { futureProtocolVersion_ = future; }

  // The attributes collected from the current frame.
  //
  // The parser collects a frame vector by vector (MrpParsedRuns) as long as
  // no key repeats; these accessors show the frame value by value, as the
  // collections below, which they fill from the runs on first use.
  const MrpParsedAttributeTable& mrpParsedAttributes() const {
    materializeParsedRuns();
    return mrpParsedAttribute_;
  }
  Quarn::Ptr<MrpParsedAttribute> mrpParsedAttribute(const MrpParsedAttributeKey& key) const {
    materializeParsedRuns();
    return mrpParsedAttribute_.find(key);
  }
  // Finds or creates.
  Quarn::Ptr<MrpParsedAttribute> mrpParsedAttributeIs(const MrpParsedAttributeKey& key) {
    materializeParsedRuns();
    return mrpParsedAttribute_.findOrCreate(key);
  }
  void mrpParsedAttributeDel(const MrpParsedAttributeKey& key) {
    materializeParsedRuns();
    mrpParsedAttribute_.erase(key);
  }
  void mrpParsedAttributeDelAll() {
    materializeParsedRuns();
    mrpParsedAttribute_.clear();
  }

  // Drops everything a parsed frame left for the dispatch (its runs,
  // records, keys and LeaveAll marks) and the future-version mode: for a
  // frame that is parsed but not dispatched.
  void parseResultsDelAll();

  // Keys in order of receipt, one entry per occurrence: MSRP Domain keys
  // apart, every other key in mrpParsedAttributeKey.
  using ParsedKeyQueue = Quarn::IndexedFifo<MrpParsedAttributeKey>;
  const ParsedKeyQueue& mrpParsedAttributeKey() const {
    materializeParsedRuns();
    return mrpParsedAttributeKey_;
  }
  std::uint32_t mrpParsedAttributeKeyEnq(const MrpParsedAttributeKey& key) {
    materializeParsedRuns();
    return mrpParsedAttributeKey_.enq(key);
  }
  MrpParsedAttributeKey mrpParsedAttributeKeyDeq() {
    materializeParsedRuns();
    return mrpParsedAttributeKey_.deq();
  }
  void mrpParsedAttributeKeyDelAll() {
    materializeParsedRuns();
    mrpParsedAttributeKey_.delAll();
  }
  const ParsedKeyQueue& msrpParsedDomainKey() const {
    materializeParsedRuns();
    return msrpParsedDomainKey_;
  }
  std::uint32_t msrpParsedDomainKeyEnq(const MrpParsedAttributeKey& key) {
    materializeParsedRuns();
    return msrpParsedDomainKey_.enq(key);
  }
  MrpParsedAttributeKey msrpParsedDomainKeyDeq() {
    materializeParsedRuns();
    return msrpParsedDomainKey_.deq();
  }
  void msrpParsedDomainKeyDelAll() {
    materializeParsedRuns();
    msrpParsedDomainKey_.delAll();
  }
  // ==== end of receive parser ====

  // ==== Attribute database and batched updates (MrpSmDatabase.cpp, MrpSmPending.cpp) ====
  // Most operations act on the current attribute: the port, type and key of
  // the parse context, which the caller sets first.

  // The entry of an attribute, or null; creates nothing. A pending addition
  // is found only with `useLocalCopy`; an attribute pending deletion reads
  // as absent.
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttrFromDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                     const std::uint64_t& key, bool useLocalCopy) const;
  // The current attribute's entry; when missing and `create`, a new VO/MT
  // entry holding the received value.
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttribute(bool create);
  // Adds the attribute (batched), or resets a stored one, to VO/MT with the
  // current type's transmit (`txAttribute`) or received value.
  Quarn::Ptr<MrpAttrDatabase> mrpAddAttrToDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                   const std::uint64_t& key, bool txAttribute);
  // The store's entry, made with any missing level; used to commit additions.
  Quarn::Ptr<MrpAttrDatabase> createEntryInDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                    const std::uint64_t& key);
  // Queues the current attribute for batched deletion; it reads as absent at once.
  void mrpDeleteAttrFromDatabase();
  // The store's collection of one port and type, or null; creates nothing.
  Quarn::Ptr<MrpIntfTypeApplicant> mrpIntfTypeApplicant(const Velo::IntfId& intfId,
                                                        std::uint8_t attributeType) const;

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

  // The attribute index: a key joins with its first addition and leaves
  // with its deletion; an emptied (port, type) entry goes away.
  void addToAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key);
  void removeFromAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key);
  // Calls `handle(key)` for each key indexed for the port and type, in
  // ascending order. The walk survives changes to the index made on the
  // way: each step takes the first key after the one just handled.
  template <class Handle>
  void mrpAttrIterWalk(const Velo::IntfId& intfId, std::uint8_t attributeType, Handle&& handle);

  // Batched updates, committed by the review machines; ordered so batches
  // go port by port in ascending type and key.
  using AddPendingAttrMap = std::map<MrpAttribute, Quarn::Ptr<MrpAttrDatabase>>;
  using DeletePendingAttrMap = std::map<MrpAttribute, bool>;

  // The stored entry, or a new pending one that replaces any earlier
  // pending one and cancels a pending deletion.
  Quarn::Ptr<MrpAttrDatabase> addAttrToAddPending(const MrpAttribute& attribute);
  // Drops a pending addition; the index keeps a key that is also stored.
  void removeAttrFromAddPending(const MrpAttribute& attribute);
  // Queues a stored attribute for deletion; one never committed is simply
  // dropped, one neither stored nor pending is ignored.
  void addAttrToDeletePending(const MrpAttribute& attribute);

  const AddPendingAttrMap& addPendingAttrs() const { return addPendingAttr_; }
  Quarn::Ptr<MrpAttrDatabase> addPendingAttr(const MrpAttribute& attribute) const;
  // The first pending addition not before `attribute`, tried beside the
  // last one found before the whole map is searched.
  AddPendingAttrMap::const_iterator addPendingLowerBound(const MrpAttribute& attribute) const;
  void addPendingAttrIs(const MrpAttribute& attribute, Quarn::Ptr<MrpAttrDatabase> entry);
  void addPendingAttrDel(const MrpAttribute& attribute) {
    ++addPendingErasures_;
    addPendingAttr_.erase(attribute);
  }
  void addPendingAttrDelAll() {
    ++addPendingErasures_;
    addPendingAttr_.clear();
  }

  const DeletePendingAttrMap& deletePendingAttrs() const { return deletePendingAttr_; }
  // False when the attribute is not listed.
  bool deletePendingAttr(const MrpAttribute& attribute) const;
  void deletePendingAttrIs(const MrpAttribute& attribute, bool pending) { deletePendingAttr_[attribute] = pending; }
  void deletePendingAttrDel(const MrpAttribute& attribute) { deletePendingAttr_.erase(attribute); }
  void deletePendingAttrDelAll() { deletePendingAttr_.clear(); }
  // ==== end of attribute database ====

  // ==== Packet access (MrpSmPam.cpp) ====
  // What the application's sockets are opened with.
  static constexpr std::uint16_t kPamEthProtocol = 3;  // all protocols
  static constexpr std::size_t kPamMaxRxPktData = 10000;
  // Names of the engine's local directories, the same for either application.
  static constexpr const char* kDeviceIntfStatusDirName = "deviceIntfStatusDirMsrp";
  static constexpr const char* kDesiredIntfDirName = "desiredIntfDirMsrp";
  static constexpr const char* kPamCollectionName = "pamCollectionMsrp";
  static constexpr const char* kIntfStatusManagerRootName = "intfStatusManagerRoot";

  // The kernel filter of an application's sockets: frames to `dmac` with
  // EtherType `etherType`, untagged or behind one VLAN tag.
  static Velo::PamFilterProgram pamFilterProgramOf(const Velo::EthAddr& dmac, std::uint16_t etherType);
  // The filter all engines of the process attach: made by the first engine
  // that initialises and reused unchanged by later ones, whatever their
  // application.
  static const Velo::PamFilterProgram& pamFilterProgram() { return pamFilterProgram_; }

  // Interface status from the central state database; null when absent.
  const Quarn::Ptr<Interface::AllIntfStatusDir>& allIntfStatusDir() const { return allIntfStatusDir_; }
  const Quarn::Ptr<Interface::AllIntfStatusDir>& allIntfStatusLocalDir() const { return allIntfStatusLocalDir_; }
  // The engine's own directories, kept by name in intfStatusManagerRoot.
  const Quarn::Ptr<Interface::DeviceIntfStatusDir>& deviceIntfStatusDir() const { return deviceIntfStatusDir_; }
  const Quarn::Ptr<Hive::EntityManager>& intfStatusManagerRoot() const { return intfStatusManagerRoot_; }
  // Ports listed true get a socket (MrpLib::mrpInterfaceEnable).
  const Quarn::Ptr<Interface::PamDesiredIntfDir>& desiredIntfDir() const { return desiredIntfDir_; }
  const Quarn::Ptr<Interface::EthDevPamCollection>& pamCollection() const { return pamCollection_; }
  const Quarn::Ptr<Interface::EthDevPamManager>& pamMan() const { return pamMan_; }

  friend class MrpSmPamPeer;
  // ==== end of packet access ====

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

  // ==== Transmit (MrpSmTransmit.cpp) ====
  // Closes the port's first (or second) packet and sends it on the port;
  // the next attribute starts a fresh one. While flooding, the packet is
  // dropped instead; without the port's socket it is kept.
  void mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext);
  // The first packet of the port, then its second.
  void mrpTransmitTxAttributes(const Velo::IntfId& intfId);
  // Every port with a first packet open.
  void mrpTransmitTxAttributes();
  // ==== end of transmit ====

  // The port's leave timer period: its own intfLeaveTime when set and not 0,
  // else leaveTime.
  Quarn::Seconds mrpGetLeaveTime(const Velo::IntfId& intfId) const;

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

  // The stored entry, absent while its deletion is pending.
  Quarn::Ptr<MrpAttrDatabase> storedEntry(const MrpAttribute& attribute) const;

  // ==== Receive parser fields ====
  // A parse step whose read would run past the frame: counts it once as
  // malformed and marks the frame so that no level above counts it again.
  MrpParseStatus parseEndedEarly(const char* what);
  // The packed events of a vector reach past the frame: logged and counted,
  // but the frame has not ended early: the attribute list still looks for
  // its EndMark behind the vector's FirstValue, and counts again without it.
  MrpParseStatus packedEventsTooLong(std::size_t packedOctets, std::size_t bytesLeft);

  bool futureProtocolVersion_ = false;
  // Set while a frame is parsed once one of its reads ran past its end.
  bool parseEndedEarly_ = false;
  // The frame vector by vector, while no key repeats.
  mutable MrpParsedRuns parsedRuns_;
  // The frame value by value: filled from the runs when asked for or once a
  // key repeats.
  mutable MrpParsedAttributeTable mrpParsedAttribute_;
  mutable ParsedKeyQueue mrpParsedAttributeKey_;
  mutable ParsedKeyQueue msrpParsedDomainKey_;
  // Off only for tests that compare with the value-by-value collection.
  bool parsedRunsEnabled_ = true;
  friend class MrpSmParsePeer;
  // One vector's events and Listener declarations while it is collected.
  std::vector<std::uint8_t> vectorEvents_;
  std::vector<std::uint8_t> vectorDeclarations_;

  // Whether the current vector may be collected as a run: the frame is
  // collected at all and nothing of it is value by value yet.
  bool collectsRuns() const;
  // Collects the current vector, whose events (and declarations) are
  // decoded, as a run, leaving the receive slot and the parse context as
  // its last value would; false when its keys would repeat.
  bool collectRun();
  // Turns the runs into the value-by-value collections.
  void materializeParsedRuns() const;
  // The octets of the run's value `index`, as a parsed attribute saves them.
  std::size_t parsedRunValue(const MrpParsedRuns::Run& run, std::size_t index,
                             std::array<std::uint8_t, MrpParsedRuns::kMaxValueOctets>& octets) const;
  // The event this frame carries for the attribute, if any.
  std::optional<std::uint8_t> parsedEventOf(std::uint8_t attributeType, std::uint64_t key) const;
  void processParsedRuns(const Velo::IntfId& intfId);
  // Makes one received value current, `fill(stored)` putting it into the
  // service object's fields, then applicant and registrar on its entry.
  template <class Fill>
  void processParsedValue(const Velo::IntfId& intfId, const MrpParsedAttributeKey& key, std::uint8_t event,
                          Fill&& fill);
  // The run's value `index` into the receive and transmit fields of its type.
  void fillMrpLibFromRun(const MrpParsedRuns::Run& run, std::size_t index, const MrpAttrDatabase* stored);
  // A received Domain's transmit field from its stored registration.
  void answerDomainWithStored(std::uint8_t attributeType, const MrpAttrDatabase* stored);
  // ==== end of receive parser fields ====

  // ==== Attribute database fields ====
  AddPendingAttrMap addPendingAttr_;
  // Where the last look-up or insertion of a pending addition ended, valid
  // while nothing has been erased since: a frame's values come in key order,
  // so the next one is found beside it, not by a walk down the tree.
  struct PendingFinger {
    AddPendingAttrMap::const_iterator at;
    std::uint64_t erasures = ~std::uint64_t{0};
  };
  mutable PendingFinger addPendingFinger_;
  std::uint64_t addPendingErasures_ = 0;
  DeletePendingAttrMap deletePendingAttr_;
  // ==== end of attribute database fields ====

  // ==== Packet access fields ====
  static Velo::PamFilterProgram pamFilterProgram_;
  Quarn::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
  Quarn::Ptr<Interface::AllIntfStatusDir> allIntfStatusLocalDir_;
  Quarn::Ptr<Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
  Quarn::Ptr<Hive::EntityManager> intfStatusManagerRoot_;
  Quarn::Ptr<Interface::PamDesiredIntfDir> desiredIntfDir_;
  Quarn::Ptr<Interface::EthDevPamCollection> pamCollection_;
  Quarn::Ptr<Interface::EthDevPamManager> pamMan_;
  // ==== end of packet access fields ====
};

template <class Handle>
void MrpSm::mrpAttrIterWalk(const Velo::IntfId& intfId, std::uint8_t attributeType, Handle&& handle) {
  const MrpAttrIter::Key iterKey{intfId, attributeType};
  std::optional<std::uint64_t> previous;
  for (;;) {
    const Quarn::Ptr<MrpAttrIter> iter = mrpAttrIter(iterKey);
    if (!iter) return;
    const auto& keys = iter->attributeKeys();
    const auto next = previous ? keys.upper_bound(*previous) : keys.begin();
    if (next == keys.end()) return;
    previous = *next;
    handle(*next);
  }
}

// A new engine, initialised: active unless `standbyMode`.
Quarn::Ptr<MrpSm> mrpSmFactory(Quarn::Ptr<Bridging::Config> brConfig, Quarn::Ptr<MrpLib> mrpLib,
                               Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<MrpStatus> mrpStatus,
                               Quarn::Ptr<Stp::Status> stpStatus,
                               Quarn::Ptr<Bridging::Topology::Config> brTopoConfig,
                               Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir,
                               Quarn::Ptr<Hive::EntityManager> entityManager, bool standbyMode);

}  // namespace Mrp
