#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpCounters.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpVectorEncoder.h"

namespace MrpTest {

// Checks what an active engine's data structures promise between two events
// of its reactor (a frame handled, timers run, a request or a port change
// done), whatever the frames it received. Each check says why it must hold.
// Header-only, so that the fuzz targets share it with the tests.
//
//   EngineInvariants invariants(*engine);
//   ... an event ...
//   for (const std::string& broken : invariants.violations()) ...
class EngineInvariants {
 public:
  explicit EngineInvariants(const Mrp::MrpSm& sm) : sm_(sm) { countersSeen_ = counters(); }

  // The invariants that do not hold now, one line each; empty when all hold.
  // The counters are remembered for the next call.
  std::vector<std::string> violations() {
    broken_.clear();
    const Store store = storeOf();
    checkStoreAndIndex(store);
    checkPendingMaps(store);
    checkEntries(store);
    checkLeaveTiming(store);
    checkLeaveAllTiming();
    checkTimerWheel();
    checkTxPacketContexts();
    checkReceiveScratch();
    checkCounters();
    return std::move(broken_);
  }

 private:
  using Store = std::map<Mrp::MrpAttribute, Quarn::Ptr<Mrp::MrpAttrDatabase>>;

  // Every registration in the store, by attribute.
  Store storeOf() const {
    Store store;
    const auto database = sm_.mrpStatus()->applicationDatabase(sm_.mrpLib()->application());
    if (!database) return store;
    for (const auto& [intfId, intf] : database->attrDatabases()) {
      for (const auto& [type, typeApplicant] : intf->intfTypeApplicants()) {
        for (const auto& [key, entry] : typeApplicant->mrpAttributes()) store[{intfId, type, key}] = entry;
      }
    }
    return store;
  }

  std::set<Mrp::MrpAttribute> indexed() const {
    std::set<Mrp::MrpAttribute> keys;
    for (const auto& [iterKey, iter] : sm_.attributeStore().mrpAttrIters()) {
      for (std::uint64_t key : iter->attributeKeys()) keys.insert({iterKey.intfId, iterKey.attributeType, key});
    }
    return keys;
  }

  // Where the engine's walks over a port (LeaveAll, Flush!, a port going
  // down) find attributes, and what they find there. Together the first two
  // checks make the store and the index list the same attributes once no
  // change is pending.
  void checkStoreAndIndex(const Store& store) {
    const std::set<Mrp::MrpAttribute> index = indexed();
    // A key joins the index with its first addition and leaves it only
    // when the addition is dropped uncommitted or the deletion is committed.
    for (const Mrp::MrpAttribute& attribute : index) {
      if (!store.count(attribute) && !sm_.attributeStore().addPendingAttrs().count(attribute)) {
        report("index holds an attribute neither stored nor pending addition", attribute);
      }
    }
    // Otherwise a LeaveAll, Flush! or port clean-up would miss it. A stored
    // attribute pending deletion may already have left the index: it reads
    // as absent, and a LeaveAll drops such keys from the index.
    for (const auto& [attribute, entry] : store) {
      if (!index.count(attribute) && !sm_.attributeStore().deletePendingAttr(attribute)) {
        report("stored attribute missing from the index", attribute);
      }
    }
    for (const auto& [attribute, entry] : sm_.attributeStore().addPendingAttrs()) {
      if (!index.count(attribute)) report("pending addition missing from the index", attribute);
    }
    // An emptied (port, type) entry is deleted with its last key.
    for (const auto& [iterKey, iter] : sm_.attributeStore().mrpAttrIters()) {
      if (iter->attributeKeys().empty()) report("empty index entry", {iterKey.intfId, iterKey.attributeType, 0});
      if (!(iter->key() == iterKey)) report("index entry filed under another key", {iterKey.intfId, iterKey.attributeType, 0});
    }
  }

  void checkPendingMaps(const Store& store) {
    // Adding cancels a pending deletion and deleting drops a pending
    // addition, so the two maps never share an attribute.
    for (const auto& [attribute, pending] : sm_.attributeStore().deletePendingAttrs()) {
      if (sm_.attributeStore().addPendingAttrs().count(attribute)) report("attribute pending both addition and deletion", attribute);
      // Only a stored attribute is queued for deletion, with the value true,
      // and the store loses it only when the deletion is committed.
      if (!pending) report("deletion pending with the value false", attribute);
      if (!store.count(attribute)) report("deletion pending for an attribute not stored", attribute);
    }
    // A pending change that no review is scheduled for is never committed.
    if (!sm_.attributeStore().addPendingAttrs().empty() && !sm_.mrpDatabaseAddSm()->reviewTimer()->reviewPending()) {
      report("additions pending with no review scheduled", {});
    }
    if (!sm_.attributeStore().deletePendingAttrs().empty() && !sm_.mrpDatabaseDeleteSm()->reviewTimer()->reviewPending()) {
      report("deletions pending with no review scheduled", {});
    }
  }

  // The entries themselves: the key they are filed under is the one their
  // value gives (lookups by key find the value the machines send), and the
  // states are ones the machines know.
  void checkEntries(const Store& store) {
    const auto check = [&](const Mrp::MrpAttribute& attribute, const Mrp::MrpAttrDatabase& entry) {
      if (entry.attributeKey() != attribute.attributeKey) report("entry filed under another key", attribute);
      if (const auto key = keyOfValue(attribute.attributeType, entry); key && *key != attribute.attributeKey) {
        report("entry whose value has another key", attribute);
      }
      if (static_cast<unsigned>(entry.applicantState()) > static_cast<unsigned>(Mrp::MrpApplicantState::lo)) {
        report("applicant state out of range", attribute);
      }
      if (static_cast<unsigned>(entry.registrarState()) > static_cast<unsigned>(Mrp::MrpRegistrarState::mt)) {
        report("registrar state out of range", attribute);
      }
    };
    for (const auto& [attribute, entry] : store) check(attribute, *entry);
    for (const auto& [attribute, entry] : sm_.attributeStore().addPendingAttrs()) check(attribute, *entry);
  }

  // The key rule over a stored value: the stream id, the SR class id or the
  // VLAN id at the start of the value octets.
  std::optional<std::uint64_t> keyOfValue(std::uint8_t type, const Mrp::MrpAttrDatabase& entry) const {
    const auto& octets = entry.attributeValues();
    const auto bigEndian = [&](std::size_t n) {
      std::uint64_t key = 0;
      for (std::size_t i = 0; i < n; ++i) key = (key << 8) | octets[i];
      return key;
    };
    switch (sm_.mrpLib()->application()) {
      case Mrp::MrpApplication::msrp:
        if (type >= 1 && type <= 3) return bigEndian(8);
        if (type == 4) return bigEndian(1);
        break;
      case Mrp::MrpApplication::mvrp:
        if (type == 1) return bigEndian(2);
        break;
    }
    return std::nullopt;
  }

  void checkLeaveTiming(const Store& store) {
    const Mrp::MrpRegistrarSm& registrar = *sm_.registrarSm();
    // A registration in LV leaves only through leavetimer!: without its key
    // pending in a leave machine of its port and type (a LeaveAll's) or of
    // its own (a received Lv's) it would stay registered for ever. The
    // converse does not hold: Flush! takes LV to MT and a New or Join
    // brings MT back to IN while the key stays pending, and the expiry then
    // ignores it.
    const auto check = [&](const Mrp::MrpAttribute& attribute) {
      const auto entry = sm_.mrpGetAttrFromDatabase(attribute.intfId, attribute.attributeType,
                                                    attribute.attributeKey, true);
      if (!entry || entry->registrarState() != Mrp::MrpRegistrarState::lv) return;
      const auto general = registrar.leaveSm({attribute.intfId, attribute.attributeType, 0});
      const auto own = registrar.explicitLeaveSm(attribute);
      if (!(general && general->leavePending(attribute.attributeKey)) &&
          !(own && own->leavePending(attribute.attributeKey))) {
        report("registrar in LV with no leave timer pending for it", attribute);
      }
    };
    for (const auto& [attribute, entry] : store) check(attribute);
    for (const auto& [attribute, entry] : sm_.attributeStore().addPendingAttrs()) check(attribute);

    // A machine is found by its key; it is discarded when its one timer
    // fires, so every machine in the maps has its timer armed.
    for (const auto& [attribute, machine] : registrar.leaveSms()) {
      if (!(machine->mrpAttribute() == attribute) || attribute.attributeKey != 0) {
        report("port leave machine filed under another key", attribute);
      }
      if (machine->leaveTimerTime() == Quarn::kInfinity) report("leave machine with no timer", attribute);
    }
    for (const auto& [attribute, machine] : registrar.explicitLeaveSms()) {
      if (!(machine->mrpAttribute() == attribute)) report("attribute leave machine filed under another key", attribute);
      for (std::uint64_t key : machine->leavePendingKeys()) {
        if (key != attribute.attributeKey) report("attribute leave machine times another key", attribute);
      }
      if (machine->leaveTimerTime() == Quarn::kInfinity) report("leave machine with no timer", attribute);
    }
  }

  // A port's LeaveAll timing runs exactly while the port has packet access
  // (its port object starts it and stops it) and covers every attribute
  // type of the application; its one timer is armed while it has types.
  void checkLeaveAllTiming() {
    const Mrp::MrpLeaveAllSm& leaveAll = *sm_.leaveAllSm();
    for (const auto& [intfId, port] : sm_.mrpPamSm()->mrpIntfPamSms()) {
      const auto machine = leaveAll.intfLeaveAllSm(intfId);
      if (!machine) {
        report("port with packet access but no LeaveAll timing", {intfId, 0, 0});
        continue;
      }
      if (machine->leaveAllPendings().size() != sm_.maxAttrTypes()) {
        report("LeaveAll timing without every attribute type", {intfId, 0, 0});
      }
    }
    for (const auto& [intfId, machine] : leaveAll.intfLeaveAllSms()) {
      if (!sm_.mrpPamSm()->mrpIntfPamSmHas(intfId)) report("LeaveAll timing of a port without packet access", {intfId, 0, 0});
      if (machine->leaveAllTimerTime() == Quarn::kInfinity) report("LeaveAll timing with no timer", {intfId, 0, 0});
    }
  }

  // What is armed on the engine's wheel is the transmit cycle, one timer per
  // leave machine and one per port's LeaveAll timing: a count that differs
  // means a timer was lost (it never fires) or outlived its owner.
  void checkTimerWheel() {
    const Mrp::MrpRegistrarSm& registrar = *sm_.registrarSm();
    const std::size_t armed = 1 + registrar.leaveSms().size() + registrar.explicitLeaveSms().size() +
                              sm_.leaveAllSm()->intfLeaveAllSms().size();
    if (sm_.timerWheel()->scheduledCount() != armed) {
      std::ostringstream text;
      text << "timer wheel schedules " << sm_.timerWheel()->scheduledCount() << " timers, the engine armed " << armed;
      broken_.push_back(text.str());
    }
  }

  // A packet under construction holds at least one message (an empty one
  // is not kept: it would go out empty), belongs to a port that can send it
  // (sends to a port without a socket are refused, and a port going down
  // sends and drops its packets first), and stays below the size at which
  // it is sent.
  void checkTxPacketContexts() {
    const Mrp::MrpLib& lib = *sm_.mrpLib();
    for (const auto* contexts : {&lib.mrpTxPacketContexts(), &lib.mrpTxSecondPacketContexts()}) {
      for (const auto& [intfId, context] : *contexts) {
        const Mrp::MrpAttribute port{intfId, context->currentAttrType(), 0};
        if (!(context->intfId() == intfId)) report("packet filed under another port", port);
        if (!context->curMessage()) report("packet under construction without a message", port);
        if (!sm_.pamCollection()->intfPam(intfId)) report("packet under construction for a port without a socket", port);
        const std::size_t size = Mrp::mrpGetNumOfPackedBytes(*context, static_cast<std::uint8_t>(lib.application())) +
                                 Mrp::MrpTransmitter::kTxHeadroom;
        if (size >= Mrp::MrpTransmitter::kTxPktBytes) report("packet under construction past its size limit", port);
      }
    }
  }

  // The receive path's scratch state belongs to one frame: the dispatch
  // empties it and the packet access clears the version flag, so nothing
  // of one frame is applied again with the next. LeaveAll transmission
  // sets sendTxLvAll only while it encodes.
  void checkReceiveScratch() {
    if (!sm_.receivedFrame().mrpParsedAttributes().empty()) broken_.push_back("parsed attributes left after the frame");
    if (!sm_.receivedFrame().mrpParsedAttributeKey().empty()) broken_.push_back("parsed attribute keys left after the frame");
    if (!sm_.receivedFrame().msrpParsedDomainKey().empty()) broken_.push_back("parsed Domain keys left after the frame");
    if (!sm_.receivedFrame().mrpRxLeaveAll().empty()) broken_.push_back("received LeaveAlls left after the frame");
    if (sm_.receivedFrame().futureProtocolVersion()) broken_.push_back("future protocol version flag left set");
    if (sm_.parseContext()->sendTxLvAll()) broken_.push_back("sendTxLvAll left set");
  }

  using Counts = std::vector<std::pair<const char*, std::uint64_t>>;
  Counts counters() const {
    const Mrp::MrpCounters& c = *sm_.mrpCounters();
#define MRP_INVARIANT_COUNTER(counter) {#counter, c.counter()},
    return {MRP_COUNTERS(MRP_INVARIANT_COUNTER)};
#undef MRP_INVARIANT_COUNTER
  }

  // Counters only count: an active engine never resets them.
  void checkCounters() {
    Counts now = counters();
    for (std::size_t i = 0; i < now.size(); ++i) {
      if (now[i].second < countersSeen_[i].second) {
        broken_.push_back(std::string("counter ") + now[i].first + " went down");
      }
    }
    countersSeen_ = std::move(now);
  }

  void report(const char* what, const Mrp::MrpAttribute& attribute) {
    std::ostringstream text;
    text << what << ": port " << attribute.intfId << " type " << unsigned{attribute.attributeType} << " key 0x"
         << std::hex << attribute.attributeKey;
    broken_.push_back(text.str());
  }

  const Mrp::MrpSm& sm_;
  Counts countersSeen_;
  std::vector<std::string> broken_;
};

}  // namespace MrpTest
