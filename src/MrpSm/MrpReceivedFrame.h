#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpParsedAttribute.h"
#include "MrpModel/MrpParsedAttributeKey.h"
#include "MrpSm/MrpParsedAttributeTable.h"
#include "MrpSm/MrpParsedRuns.h"
#include "quarn/IndexedFifo.h"
#include "quarn/Ptr.h"

namespace Mrp {

// What the parser collected from one received frame for the dispatch: its
// values, the attribute types that carried a LeaveAll, and the frame's flags.
//
// The values are collected vector by vector (runs) as long as no key
// repeats. The value-by-value collections (the table of parsed attributes
// and the key queues) are filled from the runs when first asked for, or
// once a key repeats; from then on the frame is collected value by value.
class MrpReceivedFrame {
 public:
  // Keys in order of receipt, one entry per occurrence.
  using KeyQueue = Quarn::IndexedFifo<MrpParsedAttributeKey>;
  using ValueOctets = std::array<std::uint8_t, MrpParsedRuns::kMaxValueOctets>;

  // The application names the value records of the attribute types and
  // whether Domain keys are queued apart.
  explicit MrpReceivedFrame(MrpApplication application) : application_(application) {}

  // ==== Value by value ====
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

  // MSRP Domain keys apart, every other key in mrpParsedAttributeKey.
  const KeyQueue& mrpParsedAttributeKey() const {
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
  const KeyQueue& msrpParsedDomainKey() const {
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
  // Into the Domain queue or the other one, by the key's attribute type.
  void parsedKeyEnq(const MrpParsedAttributeKey& key) {
    materializeParsedRuns();
    keyQueueOf(key.attributeType).enq(key);
  }

  // ==== Vector by vector ====
  const MrpParsedRuns& runs() const { return parsedRuns_; }
  // Drops the runs alone, once the dispatch has applied them.
  void runsDelAll() { parsedRuns_.clear(); }
  // Whether a vector may be collected as a run: nothing of the frame is
  // value by value yet.
  bool collectsRuns() const;
  // Takes a vector as a run (see MrpParsedRuns::add); false when its keys
  // would repeat, and the vector is then to be collected value by value.
  bool collectRun(std::uint8_t attributeType, std::span<const std::uint8_t> firstValue, std::uint64_t firstKey,
                  std::uint64_t keyLimit, std::span<const std::uint8_t> events,
                  std::span<const std::uint8_t> declarations) {
    return parsedRuns_.add(attributeType, firstValue, firstKey, keyLimit, events, declarations);
  }
  // The octets of the run's value `index`, as a parsed attribute saves
  // them; returns how many.
  std::size_t parsedRunValue(const MrpParsedRuns::Run& run, std::size_t index, ValueOctets& octets) const;
  // The event this frame carries for the attribute, if any.
  std::optional<std::uint8_t> parsedEventOf(std::uint8_t attributeType, std::uint64_t key) const;

  // ==== LeaveAll marks: attribute types whose vectors carried a LeaveAll ====
  const std::map<std::uint8_t, bool>& mrpRxLeaveAll() const { return mrpRxLeaveAll_; }
  void mrpRxLeaveAllIs(std::uint8_t attributeType, bool leaveAll) { mrpRxLeaveAll_[attributeType] = leaveAll; }
  void mrpRxLeaveAllDel(std::uint8_t attributeType) { mrpRxLeaveAll_.erase(attributeType); }
  void mrpRxLeaveAllDelAll() { mrpRxLeaveAll_.clear(); }

  // ==== Flags ====
  // A ProtocolVersion other than 0: kept until the frame has been handled.
  bool futureProtocolVersion() const { return futureProtocolVersion_; }
  void futureProtocolVersionIs(bool future) { futureProtocolVersion_ = future; }
  // The frame is parsed a second time: nothing is collected.
  bool recycledPkt() const { return recycledPkt_; }
  void recycledPktIs(bool recycled) { recycledPkt_ = recycled; }
  // A read ran past the frame's end: counted once, so no level above counts
  // it again.
  bool parseEndedEarly() const { return parseEndedEarly_; }
  void parseEndedEarlyIs(bool endedEarly) { parseEndedEarly_ = endedEarly; }

  // Turns the runs into the value-by-value collections: from then on the
  // frame is collected value by value.
  void materializeParsedRuns() const;

  // Drops everything the frame left for the dispatch (its runs, records,
  // keys and LeaveAll marks) and the future-version mode.
  void parseResultsDelAll();

 private:
  friend class MrpSmParsePeer;

  KeyQueue& keyQueueOf(std::uint8_t attributeType) const;

  MrpApplication application_;
  // The frame vector by vector, while no key repeats.
  mutable MrpParsedRuns parsedRuns_;
  // The frame value by value: filled from the runs when asked for or once a
  // key repeats.
  mutable MrpParsedAttributeTable mrpParsedAttribute_;
  mutable KeyQueue mrpParsedAttributeKey_;
  mutable KeyQueue msrpParsedDomainKey_;
  std::map<std::uint8_t, bool> mrpRxLeaveAll_;
  bool futureProtocolVersion_ = false;
  bool recycledPkt_ = false;
  bool parseEndedEarly_ = false;
  // Off only for tests that compare with the value-by-value collection.
  bool parsedRunsEnabled_ = true;
};

}  // namespace Mrp
