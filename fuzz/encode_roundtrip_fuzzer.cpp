// Round-trips the encoder. A sequence of values and events, derived from the
// input, is encoded with the vector primitives into packets laid out as the
// transmit path lays them out; each packet is closed and parsed by the
// engine's own parser, and what the parser collected must be what was
// encoded: the same attribute types, keys, values and events, in the same
// order, and the same LeaveAll flags. Any difference aborts.
//
// Input: octet 0 picks the application (even MSRP, odd MVRP). Then
// operations: an octet whose low 3 bits pick the operation and whose high 5
// bits (x) are its first operand, then any further operands:
//   0-2  the next value of the current vector with event x % 6 (Listener:
//        declaration x / 6 % 4); without a current vector of values: as 3
//   3-4  a new vector with event x % 6: [type, if no message is open,] value
//   5    a new message of type x and its first vector: event, value
//   6    a new message of type x with a LeaveAll-only vector
//   7    ask for a LeaveAll on the next vector written (sendTxLvAll)
// A type octet t is MSRP type 1 + t % 4 (MVRP: always 1). A value is its
// fields in wire order, big-endian: Talker Advertise streamId (8), dmac (6),
// vlanId (2), maxFrameSize (2), maxIntervalFrames (2), priority and rank (1),
// accumulatedLatency (4); Talker Failed adds bridgeId (8) and failureCode
// (1); Listener streamId (8) and declaration (1); Domain srClassId (1),
// srClassPriority (1), srClassVID (2); VLAN vlanId (2). The input ends
// wherever it ends: the operation it cuts short is dropped.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <vector>

#include "../tests/support/EngineBuilder.h"
#include "../tests/support/FrameBuilder.h"
#include "MrpModel/MrpParsedAttributeKey.h"
#include "MrpModel/MrpValueBytes.h"
#include "quarn/Log.h"

namespace {

using Mrp::MrpApplication;
using Mrp::MrpParsedAttributeKey;
using Octets = std::vector<std::uint8_t>;

[[noreturn]] void roundTripFailed(const char* what) {
  std::fprintf(stderr, "encode round trip: %s\n", what);
  std::abort();
}

// Big-endian fields from the fuzz input. Once a read runs past the end, it
// and every later read fail, so checking the last of several reads suffices.
class InputReader {
 public:
  InputReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  std::optional<std::uint64_t> be(std::size_t octets) {
    if (failed_ || size_ - offset_ < octets) {
      failed_ = true;
      return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < octets; ++i) value = (value << 8) | data_[offset_++];
    return value;
  }
  std::optional<std::uint8_t> u8() {
    const auto v = be(1);
    return v ? std::optional<std::uint8_t>(static_cast<std::uint8_t>(*v)) : std::nullopt;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t offset_ = 0;
  bool failed_ = false;
};

enum class Kind { talker, talkerFailed, listener, domain, vlan };

Kind kindOf(MrpApplication application, std::uint8_t type) {
  if (application == MrpApplication::mvrp) return Kind::vlan;
  static constexpr Kind kMsrpKinds[] = {Kind::talker, Kind::talkerFailed, Kind::listener, Kind::domain};
  return kMsrpKinds[type - 1];
}

std::optional<Mrp::MsrpTalkerAdvertiseAttribute> readTalker(InputReader& in) {
  const auto streamId = in.be(8), dmac = in.be(6), vlanId = in.be(2), maxFrameSize = in.be(2),
             maxIntervalFrames = in.be(2), priorityAndRank = in.be(1), latency = in.be(4);
  if (!latency) return std::nullopt;
  const Velo::EthAddr mac(static_cast<std::uint8_t>(*dmac >> 40), static_cast<std::uint8_t>(*dmac >> 32),
                          static_cast<std::uint8_t>(*dmac >> 24), static_cast<std::uint8_t>(*dmac >> 16),
                          static_cast<std::uint8_t>(*dmac >> 8), static_cast<std::uint8_t>(*dmac));
  return Mrp::MsrpTalkerAdvertiseAttribute(
      *streamId, Mrp::DataFrameParameters(mac, static_cast<std::uint16_t>(*vlanId)),
      Mrp::Tspec(static_cast<std::uint16_t>(*maxFrameSize), static_cast<std::uint16_t>(*maxIntervalFrames)),
      Mrp::PriorityAndRank(static_cast<std::uint8_t>(*priorityAndRank >> 5),
                           static_cast<std::uint8_t>((*priorityAndRank >> 4) & 1)),
      static_cast<std::uint32_t>(*latency));
}

// One value as the parser must report it.
struct Occurrence {
  MrpParsedAttributeKey key;
  std::uint8_t event;
  Octets value;
};

// Encodes one packet at a time and checks each against the parser.
class RoundTrip {
 public:
  RoundTrip(Mrp::MrpSm& engine, MrpApplication application)
      : engine_(engine), application_(application), scratch_(Mrp::mrpLibFactory()) {
    packetNew();
  }

  void run(InputReader& in) {
    while (const auto op = in.u8()) {
      if (!step(*op & 7u, static_cast<std::uint8_t>(*op >> 3), in)) break;
      if (builder_->packedBytes() + kTransmitHeadroom >= kPacketBytes) packetSent();
    }
    if (messageOpen_) packetSent();
  }

 private:
  static constexpr std::size_t kPacketBytes = 1500;
  // The transmit path sends a packet once its packed bytes + 64 reach 1500.
  static constexpr std::size_t kTransmitHeadroom = 64;

  // Returns false when the input ran out.
  bool step(unsigned op, std::uint8_t x, InputReader& in) {
    switch (op) {
      case 0:
      case 1:
      case 2:
        if (vectorHasValues_) {
          nextValue(static_cast<std::uint8_t>(x % 6), static_cast<Mrp::MsrpListenerEvent>(x / 6 % 4));
          return true;
        }
        return newVector(x, std::nullopt, in);
      case 3:
      case 4:
        return newVector(x, std::nullopt, in);
      case 5: {
        const auto event = in.u8();
        return event && newVector(*event, typeOf(x), in);
      }
      case 6: {
        const std::uint8_t type = typeOf(x);
        messageIs(type);
        encodeNew(kMrpLeaveAllOnly);
        leaveAllTypes_[type] = true;
        vectorHasValues_ = false;
        return true;
      }
      default:
        engine_.parseContext()->sendTxLvAllIs(true);
        return true;
    }
  }

  std::uint8_t typeOf(std::uint8_t operand) const {
    return static_cast<std::uint8_t>(application_ == MrpApplication::msrp ? 1 + operand % 4 : 1);
  }

  void messageIs(std::uint8_t type) {
    // An MVRP message is closed behind its last vector alone, which ends the
    // list only for a message of one vector: send such a packet first.
    if (application_ == MrpApplication::mvrp && vectorsInMessage_ > 1) packetSent();
    builder_->message(type);
    messageOpen_ = true;
    type_ = type;
    vectorsInMessage_ = 0;
    vectorHasValues_ = false;
  }

  // A new vector with event `x` % 6, in a new message of `newMessageType` if
  // given (or if no message is open: then a type octet is read first). Its
  // operands are read before anything is written, so that input cut short
  // leaves no empty message behind.
  bool newVector(std::uint8_t x, std::optional<std::uint8_t> newMessageType, InputReader& in) {
    if (!newMessageType && !messageOpen_) {
      const auto type = in.u8();
      if (!type) return false;
      newMessageType = typeOf(*type);
    }
    const std::uint8_t type = newMessageType ? *newMessageType : type_;
    if (!readValue(kindOf(application_, type), in)) return false;
    if (newMessageType) messageIs(*newMessageType);
    const auto event = static_cast<std::uint8_t>(x % 6);
    const bool leaveAll = engine_.parseContext()->sendTxLvAll();
    encodeNew(event);
    if (leaveAll) leaveAllTypes_[type_] = true;
    expected_.push_back({{type_, key()}, event, value()});
    vectorHasValues_ = true;
    return true;
  }

  void nextValue(std::uint8_t event, Mrp::MsrpListenerEvent declaration) {
    if (kind() == Kind::listener) {
      scratch_->msrpListenerVectorRx() = listener_;
      scratch_->mrpIncrementListenerVector();
      listener_ = scratch_->msrpListenerVectorRx();
      listener_.listenerEventIs(declaration);
      builder_->appendListener(event, declaration);
    } else {
      increment();
      builder_->append(event);
    }
    expected_.push_back({{type_, key()}, event, value()});
  }

  // Reads a value of `kind` into its slot; the slot changes only on success.
  bool readValue(Kind kind, InputReader& in) {
    switch (kind) {
      case Kind::talker: {
        const auto talker = readTalker(in);
        if (talker) talker_ = *talker;
        return talker.has_value();
      }
      case Kind::talkerFailed: {
        const auto talker = readTalker(in);
        const auto bridgeId = in.be(8), failureCode = in.be(1);
        if (!failureCode) return false;
        talkerFailed_ = {*talker, Mrp::FailureInformation(*bridgeId, static_cast<std::uint8_t>(*failureCode))};
        return true;
      }
      case Kind::listener: {
        const auto streamId = in.be(8), declaration = in.be(1);
        if (!declaration) return false;
        listener_ = {*streamId, static_cast<Mrp::MsrpListenerEvent>(*declaration % 4)};
        return true;
      }
      case Kind::domain: {
        const auto id = in.be(1), priority = in.be(1), vid = in.be(2);
        if (!vid) return false;
        domain_ = {static_cast<std::uint8_t>(*id), static_cast<std::uint8_t>(*priority),
                   static_cast<std::uint16_t>(*vid)};
        return true;
      }
      case Kind::vlan: {
        const auto vid = in.be(2);
        if (!vid) return false;
        vlan_ = Mrp::MvrpVlanAttribute(static_cast<std::uint16_t>(*vid));
        return true;
      }
    }
    return false;
  }

  // The next value of the vector, by the library's own increment rules.
  void increment() {
    switch (kind()) {
      case Kind::talker:
        scratch_->msrpTalkerAdvertiseRx() = talker_;
        scratch_->mrpIncrementTalkerAdvertise();
        talker_ = scratch_->msrpTalkerAdvertiseRx();
        return;
      case Kind::talkerFailed:
        scratch_->msrpTalkerFailedRx() = talkerFailed_;
        scratch_->mrpIncrementTalkerFailed();
        talkerFailed_ = scratch_->msrpTalkerFailedRx();
        return;
      case Kind::domain:
        scratch_->msrpDomainVectorRx() = domain_;
        scratch_->mrpIncrementDomainVector();
        domain_ = scratch_->msrpDomainVectorRx();
        return;
      case Kind::vlan:
        scratch_->mvrpVlanVectorRx() = vlan_;
        scratch_->mrpIncrementVlanVector();
        vlan_ = scratch_->mvrpVlanVectorRx();
        return;
      case Kind::listener:
        return;
    }
  }

  void encodeNew(std::uint8_t event) {
    switch (kind()) {
      case Kind::talker:
        builder_->talker(talker_, event);
        break;
      case Kind::talkerFailed:
        builder_->talkerFailed(talkerFailed_, event);
        break;
      case Kind::listener:
        builder_->listener(listener_, event);
        break;
      case Kind::domain:
        builder_->domain(domain_, event);
        break;
      case Kind::vlan:
        builder_->vlan(vlan_, event);
        break;
    }
    ++vectorsInMessage_;
  }

  Kind kind() const { return kindOf(application_, type_); }

  std::uint64_t key() const {
    switch (kind()) {
      case Kind::talker:
        return talker_.streamId();
      case Kind::talkerFailed:
        return talkerFailed_.talkerAdvertiseAttribute().streamId();
      case Kind::listener:
        return listener_.streamId();
      case Kind::domain:
        return domain_.srClassId();
      case Kind::vlan:
        return vlan_.vlanId();
    }
    return 0;
  }

  template <class Record>
  static Octets octetsOf(const Record& record) {
    const auto bytes = Mrp::valueBytes(record);
    return {bytes.begin(), bytes.end()};
  }

  Octets value() const {
    switch (kind()) {
      case Kind::talker:
        return octetsOf(talker_);
      case Kind::talkerFailed:
        return octetsOf(talkerFailed_);
      case Kind::listener:
        return octetsOf(listener_);
      case Kind::domain:
        return octetsOf(domain_);
      case Kind::vlan:
        return octetsOf(vlan_);
    }
    return {};
  }

  void packetNew() {
    builder_.emplace(*engine_.mrpLib(), application_, kPacketBytes);
    expected_.clear();
    leaveAllTypes_.clear();
    messageOpen_ = false;
    vectorsInMessage_ = 0;
    vectorHasValues_ = false;
  }

  // Closes the packet as the transmit path does, parses it and compares.
  void packetSent() {
    const Octets pdu = builder_->mrpdu();
    engine_.parseMrpdu(Velo::Pkt::pktNew(pdu.data(), pdu.size()));
    check();
    engine_.receivedFrame().parseResultsDelAll();
    packetNew();
  }

  void check() {
    const Mrp::MrpCounters& counters = *engine_.mrpCounters();
    if (counters.numOfMalformedPkts() || counters.numOfUnknownAttributeType() || counters.numOfIncorrectPduVersion() ||
        counters.numOfUnknownApplication()) {
      roundTripFailed("the parser counted a fault");
    }
    std::map<MrpParsedAttributeKey, const Occurrence*> last;
    for (const Occurrence& o : expected_) {
      last[o.key] = &o;
      const bool domain = application_ == MrpApplication::msrp && kindOf(application_, o.key.attributeType) == Kind::domain;
      auto& queue = domain ? msrpDomainKeys_ : otherKeys_;
      queue.push_back(o.key);
    }
    checkQueue(otherKeys_, [this] { return engine_.receivedFrame().mrpParsedAttributeKey().empty(); },
               [this] { return engine_.receivedFrame().mrpParsedAttributeKeyDeq(); });
    checkQueue(msrpDomainKeys_, [this] { return engine_.receivedFrame().msrpParsedDomainKey().empty(); },
               [this] { return engine_.receivedFrame().msrpParsedDomainKeyDeq(); });
    if (engine_.receivedFrame().mrpParsedAttributes().size() != last.size()) roundTripFailed("a different number of attributes");
    for (const auto& [key, occurrence] : last) {
      const auto parsed = engine_.receivedFrame().mrpParsedAttribute(key);
      if (!parsed) roundTripFailed("an attribute is missing");
      if (parsed->attributeEvent() != occurrence->event) roundTripFailed("an event differs");
      const Mrp::ValueQueue& value = parsed->attributeValues();
      if (value.size() != occurrence->value.size()) roundTripFailed("a value has a different length");
      for (std::size_t i = 0; i < value.size(); ++i) {
        if (value.at(Mrp::ValueIndex(static_cast<unsigned>(i))) != occurrence->value[i]) roundTripFailed("a value differs");
      }
    }
    if (engine_.receivedFrame().mrpRxLeaveAll() != leaveAllTypes_) roundTripFailed("the LeaveAll flags differ");
  }

  template <class Empty, class Deq>
  void checkQueue(std::vector<MrpParsedAttributeKey>& expected, Empty empty, Deq deq) {
    for (const MrpParsedAttributeKey& key : expected) {
      if (empty() || deq() != key) roundTripFailed("the keys differ in order or number");
    }
    if (!empty()) roundTripFailed("the parser collected more keys");
    expected.clear();
  }

  static constexpr std::uint8_t kMrpLeaveAllOnly = Mrp::kMrpLeaveAllOnlyEvent;

  Mrp::MrpSm& engine_;
  MrpApplication application_;
  Quarn::Ptr<Mrp::MrpLib> scratch_;  // runs the increment rules
  std::optional<MrpTest::FrameBuilder> builder_;
  std::vector<Occurrence> expected_;
  std::vector<MrpParsedAttributeKey> otherKeys_;
  std::vector<MrpParsedAttributeKey> msrpDomainKeys_;
  std::map<std::uint8_t, bool> leaveAllTypes_;
  bool messageOpen_ = false;
  std::uint8_t type_ = 0;
  int vectorsInMessage_ = 0;
  bool vectorHasValues_ = false;

  Mrp::MsrpTalkerAdvertiseAttribute talker_;
  Mrp::MsrpTalkerFailedAttribute talkerFailed_;
  Mrp::MsrpListenerAttribute listener_;
  Mrp::MsrpDomainAttribute domain_;
  Mrp::MvrpVlanAttribute vlan_;
};

// The parser logs every malformed frame; the fuzzer has no use for them.
Quarn::DiscardLogSink discardLogSink;
Quarn::Ptr<Mrp::MrpSm> msrpEngine;
Quarn::Ptr<Mrp::MrpSm> mvrpEngine;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Quarn::logSinkIs(&discardLogSink);
  msrpEngine = MrpTest::EngineBuilder(MrpApplication::msrp).build();
  mvrpEngine = MrpTest::EngineBuilder(MrpApplication::mvrp).build();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool msrp = (data[0] & 1) == 0;
  Mrp::MrpSm& engine = msrp ? *msrpEngine : *mvrpEngine;
  engine.parseContext()->sendTxLvAllIs(false);
  InputReader in(data + 1, size - 1);
  RoundTrip(engine, msrp ? MrpApplication::msrp : MrpApplication::mvrp).run(in);
  return 0;
}
