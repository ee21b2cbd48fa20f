#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "MrpModel/MrpParsedAttributeKey.h"
#include "quarn/Log.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"
#include "support/MrpduFrames.h"

namespace MrpTest {
namespace {

using Frames::Bytes;
using Mrp::MrpApplication;
using Mrp::MrpParsedAttributeKey;
using Mrp::ValueIndex;

// An engine that parses MRPDUs given as annotated byte arrays, with its
// traces and logs captured.
class MrpSmParseTest : public EngineFixture {
 protected:
  MrpSmParseTest() { Quarn::traceLevelsIs("MrpSm/0-9"); }
  ~MrpSmParseTest() override { Quarn::traceLevelsClear(); }

  void engineIs(MrpApplication application) {
    engine = engineNew(application, false);
    engine->parseContext()->intfIdIs(Velo::IntfId("Ethernet1"));
  }

  // Parses `bytes` as one MRPDU; returns the packet as the parser left it.
  Quarn::Ptr<Velo::Pkt> parse(const Bytes& bytes) {
    Quarn::Ptr<Velo::Pkt> pkt = Velo::Pkt::pktNew(bytes.data(), bytes.size());
    engine->parseMrpdu(pkt);
    return pkt;
  }

  bool parsedWith(Mrp::MrpParseStatus status) const {
    std::ostringstream text;
    text << "parse status = " << status;
    return traces.contains(text.str());
  }

  Mrp::MrpCounters& counters() const { return *engine->mrpCounters(); }
  Mrp::MrpParseContext& context() const { return *engine->parseContext(); }

  static std::vector<MrpParsedAttributeKey> keysOf(const Mrp::MrpReceivedFrame::KeyQueue& queue) {
    std::vector<MrpParsedAttributeKey> keys;
    for (const auto& [index, key] : queue) keys.push_back(key);
    return keys;
  }
  std::vector<MrpParsedAttributeKey> keys() const { return keysOf(engine->receivedFrame().mrpParsedAttributeKey()); }
  std::vector<MrpParsedAttributeKey> domainKeys() const { return keysOf(engine->receivedFrame().msrpParsedDomainKey()); }

  Quarn::Ptr<Mrp::MrpParsedAttribute> parsed(std::uint8_t type, std::uint64_t key) const {
    return engine->receivedFrame().mrpParsedAttribute({type, key});
  }
  Bytes valueOf(std::uint8_t type, std::uint64_t key) const {
    Bytes octets;
    const Mrp::ValueQueue& values = parsed(type, key)->attributeValues();
    for (unsigned i = 0; i < values.size(); ++i) octets.push_back(values.at(ValueIndex(i)));
    return octets;
  }

  // How often the parser traced `text`.
  std::size_t traceCount(const std::string& text) const {
    return std::ranges::count(traces.lines(), text, &Quarn::CaptureTraceSink::Line::text);
  }

  bool logged(const std::string& text) const {
    for (const auto& line : logs.lines()) {
      if (line.key == "MRP_ERROR" && line.text == text) return true;
    }
    return false;
  }

  Quarn::CaptureTraceSink traces;
  Quarn::CaptureLogSink logs;
  Quarn::Ptr<Mrp::MrpSm> engine;
};

TEST_F(MrpSmParseTest, MvrpVectorDispatchesEachValueInOrder) {
  engineIs(MrpApplication::mvrp);
  const std::uint32_t eventsBefore = context().eventsCounter();
  Quarn::Ptr<Velo::Pkt> pkt = parse(Frames::kMvrpThreeVlans);

  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}, {1, 11}, {1, 12}}));
  EXPECT_EQ(parsed(1, 10)->attributeEvent(), 1) << "JoinIn";
  EXPECT_EQ(parsed(1, 11)->attributeEvent(), 1) << "JoinIn";
  EXPECT_EQ(parsed(1, 12)->attributeEvent(), 5) << "Lv";
  EXPECT_EQ(valueOf(1, 10), (Bytes{0x00, 0x0A})) << "value index 0 is the FirstValue";
  EXPECT_EQ(valueOf(1, 11), (Bytes{0x00, 0x0B}));
  EXPECT_EQ(valueOf(1, 12), (Bytes{0x00, 0x0C})) << "value index 2 is the FirstValue + 2";
  EXPECT_EQ(context().eventsCounter() - eventsBefore, 3u);
  EXPECT_EQ(context().attributeKey(), 12u);
  EXPECT_TRUE(engine->receivedFrame().mrpRxLeaveAll().empty());
  EXPECT_TRUE(domainKeys().empty());
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(pkt->bytes(), 2u) << "the MRPDU's EndMark is recognised, not consumed";
  EXPECT_TRUE(traces.contains("parseMrpdu payload= 12 bytes! "));
  EXPECT_TRUE(traces.contains("VlanVector vlanId = 10"));
  EXPECT_TRUE(traces.contains("End of Mark/End of Packet reached, coming out \n"));
}

TEST_F(MrpSmParseTest, CollectionsDrainInOrderOfReceipt) {
  engineIs(MrpApplication::msrp);
  parse(Frames::kMsrpAllTypes);
  EXPECT_EQ(engine->receivedFrame().msrpParsedDomainKeyDeq(), (MrpParsedAttributeKey{4, 6}));
  EXPECT_TRUE(engine->receivedFrame().msrpParsedDomainKey().empty());
  EXPECT_EQ(engine->receivedFrame().mrpParsedAttributeKeyDeq(), (MrpParsedAttributeKey{1, 0x0011223344550001ULL}));
  EXPECT_EQ(engine->receivedFrame().mrpParsedAttributeKeyDeq(), (MrpParsedAttributeKey{1, 0x0011223344550002ULL}));
  EXPECT_EQ(engine->receivedFrame().mrpParsedAttributeKey().size(), 6u);

  const std::size_t collected = engine->receivedFrame().mrpParsedAttributes().size();
  engine->receivedFrame().mrpParsedAttributeDel({4, 6});
  EXPECT_EQ(engine->receivedFrame().mrpParsedAttributes().size(), collected - 1);
  EXPECT_FALSE(parsed(4, 6));
  engine->receivedFrame().mrpParsedAttributeDelAll();
  EXPECT_TRUE(engine->receivedFrame().mrpParsedAttributes().empty());
}

TEST_F(MrpSmParseTest, PaddingBehindTheEndMarkIsNeverRead) {
  engineIs(MrpApplication::mvrp);
  Bytes frame = Frames::kMvrpThreeVlans;
  frame.insert(frame.end(), 20, 0x00);  // frame padding
  Quarn::Ptr<Velo::Pkt> pkt = parse(frame);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  EXPECT_EQ(pkt->bytes(), 22u);
  EXPECT_EQ(keys().size(), 3u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(counters().numOfUnknownAttributeType(), 0u);
}

TEST_F(MrpSmParseTest, LeaveAllOnlyVectorMarksTheTypeAndDispatchesNoValue) {
  engineIs(MrpApplication::mvrp);
  const std::uint32_t eventsBefore = context().eventsCounter();
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x20, 0x00,  // VectorHeader: LeaveAll, no values
      0x00, 0x01,  // FirstValue: VLAN 1
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  EXPECT_EQ(traceCount("leaveAllEvent is True for Ethernet1"), 1u) << "mrpRxLeaveAllIs is called once";
  EXPECT_EQ(engine->receivedFrame().mrpRxLeaveAll(), (std::map<std::uint8_t, bool>{{1, true}}));
  EXPECT_TRUE(engine->receivedFrame().mrpParsedAttributes().empty());
  EXPECT_TRUE(keys().empty());
  EXPECT_EQ(context().leaveAll(), 1);
  EXPECT_EQ(context().attributeKey(), 0u);
  EXPECT_EQ(context().attributeEvent(), 2) << "event 6, then 2";
  EXPECT_EQ(context().eventsCounter() - eventsBefore, 1u);
  EXPECT_EQ(traceCount(" leaveAllEvent is True"), 1u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
}

TEST_F(MrpSmParseTest, OnlyBitThirteenOfTheHeaderIsLeaveAll) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x40, 0x05,  // VectorHeader: bit 14 (ignored), 5 values
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x2B,        // JoinIn, JoinIn, JoinIn
      0x2A,        // JoinIn, JoinIn, (unused)
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  EXPECT_TRUE(engine->receivedFrame().mrpRxLeaveAll().empty());
  EXPECT_EQ(context().leaveAll(), 0);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}, {1, 11}, {1, 12}, {1, 13}, {1, 14}}));
}

TEST_F(MrpSmParseTest, LeaveAllWithValuesMarksTheTypeAndDispatchesTheValues) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x20, 0x01,  // VectorHeader: LeaveAll, 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x24,        // JoinIn
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(engine->receivedFrame().mrpRxLeaveAll(), (std::map<std::uint8_t, bool>{{1, true}}));
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}}));
}

TEST_F(MrpSmParseTest, RepeatedAttributeKeepsTheLaterEventAndQueuesItsKeyTwice) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x24,        // JoinIn
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10 again
      0xB4,        // Lv
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(engine->receivedFrame().mrpParsedAttributes().size(), 1u);
  EXPECT_EQ(parsed(1, 10)->attributeEvent(), 5);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}, {1, 10}}));
}

TEST_F(MrpSmParseTest, FloodingWritesTheContextButCollectsNothing) {
  engineIs(MrpApplication::mvrp);
  records.mrpConfig->mrpFloodingIs(true);
  const std::uint32_t eventsBefore = context().eventsCounter();
  parse(Frames::kMvrpThreeVlans);
  EXPECT_EQ(context().eventsCounter() - eventsBefore, 3u);
  EXPECT_EQ(context().attributeKey(), 12u);
  EXPECT_EQ(context().attributeEvent(), 5);
  EXPECT_TRUE(engine->receivedFrame().mrpParsedAttributes().empty());
  EXPECT_TRUE(keys().empty());
  EXPECT_TRUE(traces.contains("Recycled Pkt. Returning after parsing"));
}

TEST_F(MrpSmParseTest, RecycledFrameCollectsNothingAndCoversOneFrameOnly) {
  engineIs(MrpApplication::mvrp);
  const Bytes leaveAllAndValue = {
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x20, 0x01,  // VectorHeader: LeaveAll, 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x24,        // JoinIn
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  };
  engine->receivedFrame().recycledPktIs(true);
  parse(leaveAllAndValue);
  EXPECT_EQ(context().attributeKey(), 10u) << "the context is written all the same";
  EXPECT_TRUE(engine->receivedFrame().mrpRxLeaveAll().empty());
  EXPECT_TRUE(engine->receivedFrame().mrpParsedAttributes().empty());
  EXPECT_FALSE(engine->receivedFrame().recycledPkt());

  parse(leaveAllAndValue);
  EXPECT_EQ(engine->receivedFrame().mrpRxLeaveAll().size(), 1u);
  EXPECT_EQ(keys().size(), 1u);
}

TEST_F(MrpSmParseTest, ListenerDeclarationsComeFromTheFourPackedOctets) {
  engineIs(MrpApplication::msrp);
  parse(Frames::msrpListenerFrame(Frames::kListenerListLength));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  constexpr std::uint64_t kStream = 0x0011223344550001ULL;
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{
                        {3, kStream}, {3, kStream + 1}, {3, kStream + 2}, {3, kStream + 3}, {3, kStream + 4}}));
  struct Expected {
    std::uint8_t event;
    std::uint8_t declaration;
  };
  const Expected expected[] = {{1, 2}, {1, 0}, {1, 1}, {5, 3}, {0, 2}};
  for (std::uint64_t i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(parsed(3, kStream + i)->attributeEvent(), expected[i].event);
    const Bytes value = valueOf(3, kStream + i);
    ASSERT_EQ(value.size(), 12u) << "StreamID, then the declaration as 32 bits, least significant first";
    EXPECT_EQ(value[7], 0x01 + i);
    EXPECT_EQ((Bytes{value.begin() + 8, value.end()}), (Bytes{expected[i].declaration, 0, 0, 0}));
  }
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(traces.contains("AttributeListLength = 16"));
  EXPECT_TRUE(traces.contains(" ListenerVector stream Id =0x 11223344550001"));
  EXPECT_TRUE(traces.contains(" attributeListBytesLeft before accounting this vector =16"));
  EXPECT_TRUE(traces.contains("4  bytes deleted that are three packed and 4 packed"));
  EXPECT_TRUE(traces.contains(" attributeListBytesLeft 2"));
}

TEST_F(MrpSmParseTest, FourPackedDeclarationIsReadWithoutConsumingIt) {
  engineIs(MrpApplication::msrp);
  context().attributeTypeIs(3);
  mrpLib->msrpListenerVectorRx().streamIdIs(7);
  const Bytes packed = {
      0x24,  // three-packed: JoinIn
      0x00,  // four-packed, first octet: values 0-3
      0xC0,  // four-packed, second octet: value 4 is readyFailed
  };
  Quarn::Ptr<Velo::Pkt> pkt = Velo::Pkt::pktNew(packed.data(), packed.size());
  engine->pduParser().processThreeAndFourPacked(pkt, 1, 4, 1);
  EXPECT_EQ(mrpLib->msrpListenerVectorRx().listenerEvent(), Mrp::MsrpListenerEvent::readyFailed);
  EXPECT_EQ(pkt->bytes(), 3u);
  EXPECT_EQ(keys().size(), 1u);
}

TEST_F(MrpSmParseTest, FourPackedDeclarationPastTheFrameIsMalformed) {
  engineIs(MrpApplication::msrp);
  context().attributeTypeIs(3);
  Quarn::Ptr<Velo::Pkt> pkt = Velo::Pkt::pktNew(Bytes{0x24, 0x00}.data(), 2);
  engine->pduParser().processThreeAndFourPacked(pkt, 1, 4, 1);
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(keys().empty());
}

TEST_F(MrpSmParseTest, AllFourMsrpTypesAreCollectedDomainsApart) {
  engineIs(MrpApplication::msrp);
  parse(Frames::kMsrpAllTypes);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 0x0011223344550001ULL},
                                                        {1, 0x0011223344550002ULL},
                                                        {2, 0x0011223344550009ULL},
                                                        {3, 0x0011223344550001ULL},
                                                        {3, 0x0011223344550002ULL},
                                                        {3, 0x0011223344550003ULL},
                                                        {3, 0x0011223344550004ULL},
                                                        {3, 0x0011223344550005ULL}}));
  EXPECT_EQ(engine->receivedFrame().mrpRxLeaveAll(), (std::map<std::uint8_t, bool>{{3, true}}));
  EXPECT_EQ(domainKeys(), (std::vector<MrpParsedAttributeKey>{{4, 6}}));

  const Bytes second = valueOf(1, 0x0011223344550002ULL);
  ASSERT_EQ(second.size(), 25u);
  EXPECT_EQ((Bytes{second.begin() + 8, second.begin() + 14}), (Bytes{0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x01}))
      << "the second talker's address is the first's + 1";
  EXPECT_EQ(second[20], 0x60);

  const Bytes failed = valueOf(2, 0x0011223344550009ULL);
  ASSERT_EQ(failed.size(), 34u);
  EXPECT_EQ((Bytes{failed.begin() + 25, failed.end()}), (Bytes{0x80, 0x00, 0x00, 0x1C, 0x73, 0x00, 0x00, 0x01, 0x05}));
  EXPECT_EQ(parsed(2, 0x0011223344550009ULL)->attributeEvent(), 3);

  EXPECT_EQ(valueOf(4, 6), (Bytes{0x06, 0x03, 0x00, 0x02}));
  EXPECT_EQ(parsed(4, 6)->attributeEvent(), 2);
}

TEST_F(MrpSmParseTest, ListenerMessageOfLengthEightIsConsistentAndOfTwentyFiveIsNot) {
  engineIs(MrpApplication::msrp);
  parse(Frames::msrpListenerFrame(Frames::kListenerListLength));
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);

  Bytes wrongLength = Frames::msrpListenerFrame(Frames::kListenerListLength);
  wrongLength[2] = 25;  // AttributeLength
  engine->receivedFrame().mrpParsedAttributeKeyDelAll();
  parse(wrongLength);
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(keys().empty());
  EXPECT_TRUE(traces.contains(" ######## Invalid attribute length = 25 or Invalid attribute type = 3"));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

// ---- Failure handling, row by row ----

TEST_F(MrpSmParseTest, NewerProtocolVersionIsCountedAndParsed) {
  engineIs(MrpApplication::mvrp);
  Bytes frame = Frames::kMvrpThreeVlans;
  frame[0] = 0x01;  // ProtocolVersion 1
  parse(frame);
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 1u);
  EXPECT_TRUE(traces.contains("MRPDU protocol version1 is greater than the current supported version "));
  EXPECT_TRUE(engine->receivedFrame().futureProtocolVersion());
  EXPECT_EQ(keys().size(), 3u);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, VersionZeroLeavesTheFutureVersionFlagAlone) {
  engineIs(MrpApplication::mvrp);
  parse(Frames::kMvrpThreeVlans);
  EXPECT_FALSE(engine->receivedFrame().futureProtocolVersion());
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 0u);
}

TEST_F(MrpSmParseTest, MsrpAttributeListLengthZeroIsMalformed) {
  engineIs(MrpApplication::msrp);
  parse({
      0x00,                    // ProtocolVersion
      0x04, 0x04, 0x00, 0x00,  // Domain, length 4, list length 0
      0x00, 0x01,              // VectorHeader: 1 value
      0x06, 0x03, 0x00, 0x02,  // FirstValue
      0x24,                    // JoinIn
      0x00, 0x00,              // EndMark of the list
      0x00, 0x00,              // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(domainKeys().empty());
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

// An MSRP message of unknown type 9 and length 7, then a Domain message.
Bytes msrpUnknownThenDomain(std::uint8_t version, std::uint8_t unknownListLength) {
  return {
      version,                                   // ProtocolVersion
      0x09, 0x07, 0x00, unknownListLength,       // type 9, length 7, list length
      0x00, 0x01,                                // VectorHeader: 1 value
      0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA,  // FirstValue
      0x24,                                      // JoinIn
      0x00, 0x00,                                // EndMark of the list
      0x04, 0x04, 0x00, 0x09,                    // Domain, length 4, list length 9
      0x00, 0x01,                                // VectorHeader: 1 value
      0x06, 0x03, 0x00, 0x02,                    // SRclassID 6, priority 3, VID 2
      0x24,                                      // JoinIn
      0x00, 0x00,                                // EndMark of the list
      0x00, 0x00,                                // EndMark of the MRPDU
  };
}

TEST_F(MrpSmParseTest, InvalidAttributeLengthIsMalformedUnderVersionZero) {
  engineIs(MrpApplication::msrp);
  parse(msrpUnknownThenDomain(0, 12));
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(traces.contains(" ######## Invalid attribute length = 7 or Invalid attribute type = 9"));
  EXPECT_TRUE(domainKeys().empty());
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, FutureVersionSkipsAnMsrpMessageByItsListLength) {
  engineIs(MrpApplication::msrp);
  parse(msrpUnknownThenDomain(1, 12));
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 1u);
  EXPECT_TRUE(traces.contains(" ######## Invalid attribute length = 7 or Invalid attribute type = 9"));
  EXPECT_TRUE(
      traces.contains("void Mrp::MrpSm::skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>&)"));
  EXPECT_EQ(domainKeys(), (std::vector<MrpParsedAttributeKey>{{4, 6}}));
  EXPECT_TRUE(keys().empty());
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, FutureVersionSkipPastTheFrameIsMalformed) {
  engineIs(MrpApplication::msrp);
  parse(msrpUnknownThenDomain(1, 200));
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(domainKeys().empty());
}

TEST_F(MrpSmParseTest, ValuelessVectorWithoutLeaveAllIsMalformed) {
  engineIs(MrpApplication::mvrp);
  context().attributeListBytesLeftIs(9);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x00, 0x00,  // VectorHeader: no LeaveAll, no values (also reads as the list's EndMark)
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_EQ(context().attributeListBytesLeft(), 0);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, ValuelessVectorWithIgnoredBitsAlsoLacksItsListEndMark) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x40, 0x00,  // VectorHeader: bit 14 (ignored), no values
      0x00, 0x0A,  // FirstValue
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 2u) << "the vector, then the list that does not end behind it";
  EXPECT_TRUE(keys().empty());
}

// Packed events longer than the frame are counted, and the attribute list
// then looks for its EndMark where the packed events begin: counted again
// unless it finds one there.
TEST_F(MrpSmParseTest, PackedEventsLongerThanTheFrameAreMalformedAndEndNoList) {
  engineIs(MrpApplication::mvrp);
  context().attributeListBytesLeftIs(9);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x00, 0x07,  // VectorHeader: 7 values, so 3 packed octets
      0x00, 0x0A,  // FirstValue
      0x2B, 0x2B,  // only 2 packed octets, and no EndMark
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 2u) << "the packed events, then the list";
  EXPECT_EQ(context().attributeListBytesLeft(), 0);
  EXPECT_TRUE(logged("Number of values 3 does not match with the packet bytes 2 received on Ethernet1"));
  EXPECT_TRUE(keys().empty()) << "nothing of the vector is dispatched";
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

// The largest vector there is, 8191 values in 2731 packed octets, in a frame
// far shorter than that.
Bytes mvrpVectorOf8191ValuesFollowedBy(const Bytes& rest) {
  const Bytes vector = {
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x1F, 0xFF,  // VectorHeader: 8191 values
      0x00, 0x0A,  // FirstValue: VLAN 10
  };
  Bytes frame(vector.size() + rest.size());
  std::copy(rest.begin(), rest.end(), std::copy(vector.begin(), vector.end(), frame.begin()));
  return frame;
}

TEST_F(MrpSmParseTest, VectorOf8191ValuesFollowedByOctetsThatAreNoEndMarkCountsTwice) {
  engineIs(MrpApplication::mvrp);
  parse(mvrpVectorOf8191ValuesFollowedBy({
      0x2B, 0x2B, 0x2B,  // three packed octets
      0x00, 0x00,        // and what would be the PDU's EndMark
  }));
  EXPECT_EQ(counters().numOfMalformedPkts(), 2u) << "the packed events, then the list";
  EXPECT_TRUE(logged("Number of values 2731 does not match with the packet bytes 5 received on Ethernet1"));
  EXPECT_TRUE(keys().empty());
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, VectorOf8191ValuesFollowedByAnEndMarkCountsOnce) {
  engineIs(MrpApplication::mvrp);
  Quarn::Ptr<Velo::Pkt> pkt = parse(mvrpVectorOf8191ValuesFollowedBy({
      0x00, 0x00,  // taken for the list's EndMark
      0x00, 0x00,  // the PDU's EndMark
  }));
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u) << "the packed events only: the list has ended";
  EXPECT_TRUE(logged("Number of values 2731 does not match with the packet bytes 4 received on Ethernet1"));
  EXPECT_EQ(pkt->bytes(), 2u) << "the list's EndMark was removed";
  EXPECT_TRUE(keys().empty());
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed)) << "the vector's status";
}

TEST_F(MrpSmParseTest, MsrpPackedEventsLongerThanTheFrameBeforeAnEndMarkAlsoFailTheListLength) {
  engineIs(MrpApplication::msrp);
  parse({
      0x00,                                            // ProtocolVersion
      0x03, 0x08, 0x00, 0x10,                          // Listener, length 8, list length 16
      0x00, 0x09,                                      // VectorHeader: 9 values, 3 + 3 packed octets
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // StreamID
      0x00, 0x00,                                      // taken for the list's EndMark
      0x00, 0x00,                                      // the PDU's EndMark
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 2u) << "the packed events, then the list length left (0, not 2)";
  EXPECT_TRUE(keys().empty());
}

TEST_F(MrpSmParseTest, ListenerPackedEventsLongerThanTheFrameAreMalformedAndEndNoList) {
  engineIs(MrpApplication::msrp);
  Bytes frame = Frames::msrpListenerFrame(Frames::kListenerListLength);
  frame.resize(frame.size() - 5);  // ends inside the four-packed octets
  parse(frame);
  EXPECT_EQ(counters().numOfMalformedPkts(), 2u) << "the packed events, then the list";
  EXPECT_TRUE(logged("Number of values 4 does not match with the packet bytes 3 received on Ethernet1"));
  EXPECT_TRUE(keys().empty());
}

TEST_F(MrpSmParseTest, AttributeListWithoutItsEndMarkIsMalformed) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue
      0x24,        // JoinIn
      0x11, 0x11,  // two octets that are no EndMark
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}})) << "what was dispatched stays";
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, MsrpListLengthOneLargerIsMalformedAtItsEndMark) {
  engineIs(MrpApplication::msrp);
  parse(Frames::msrpListenerFrame(Frames::kListenerListLength + 1));
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_EQ(context().attributeListBytesLeft(), 3);
  EXPECT_EQ(keys().size(), 5u) << "the vector's values were dispatched before";
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, MsrpListLengthOneSmallerIsMalformedAtItsEndMark) {
  engineIs(MrpApplication::msrp);
  parse(Frames::msrpListenerFrame(Frames::kListenerListLength - 1));
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_EQ(context().attributeListBytesLeft(), 1);
}

TEST_F(MrpSmParseTest, UnknownMvrpTypeOfLengthZeroIsCountedAndPassedOver) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x00,        // ProtocolVersion
      0x02, 0x00,  // AttributeType 2 (unknown), AttributeLength 0
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfUnknownAttributeType(), 1u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(traces.contains(" ######## Unidentified attribute type = 2"));
  EXPECT_TRUE(logged("Unidentified attribute type 2 received on Ethernet1"));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, UnknownMsrpTypeOfLengthZeroIsCountedAndPassedOver) {
  engineIs(MrpApplication::msrp);
  parse({
      0x00,                    // ProtocolVersion
      0x09, 0x00, 0x00, 0x02,  // type 9 (unknown), length 0, list length 2
      0x00, 0x01,              // VectorHeader: 1 value (its events are not read)
      0x00, 0x00,              // EndMark of the list
      0x00, 0x00,              // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfUnknownAttributeType(), 1u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(logged("Unidentified attribute type 9 received on Ethernet1"));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, UnknownApplicationCountsEachVector) {
  engineIs(static_cast<MrpApplication>(3));
  parse({
      0x00,        // ProtocolVersion
      0x01, 0x00,  // AttributeType 1, AttributeLength 0 (no type is known)
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfUnknownApplication(), 1u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(traces.contains("Application 3 not supported"));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

// ---- Frames that end early ----

TEST_F(MrpSmParseTest, EmptyFrameHasEndedEarly) {
  engineIs(MrpApplication::mvrp);
  parse({});
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
}

TEST_F(MrpSmParseTest, ProtocolVersionAloneHasNoMessagesAndCountsNothing) {
  engineIs(MrpApplication::mvrp);
  parse({0x00});
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseContinue));
}

TEST_F(MrpSmParseTest, FrameWithoutThePduEndMarkIsMalformedAndKeepsItsValues) {
  engineIs(MrpApplication::mvrp);
  Bytes frame = Frames::kMvrpThreeVlans;
  frame.resize(frame.size() - 2);
  parse(frame);
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_EQ(keys().size(), 3u);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, FirstValueCutShortIsMalformedOnce) {
  engineIs(MrpApplication::msrp);
  parse({
      0x00,                                            // ProtocolVersion
      0x01, 0x19, 0x00, 0x1E,                          // Talker Advertise, length 25, list length 30
      0x00, 0x02,                                      // VectorHeader: 2 values
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // StreamID, and nothing more
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(keys().empty());
}

// ---- The MVRP skip under a future protocol version ----

TEST_F(MrpSmParseTest, FutureVersionSkipsAnMvrpMessageVectorByVector) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x01,                    // ProtocolVersion 1
      0x02, 0x03,              // AttributeType 2 (unknown), AttributeLength 3
      0x00, 0x03,              // VectorHeader: 3 values
      0xAA, 0xBB, 0xCC,        // FirstValue
      0x2B,                    // packed events
      0x00, 0x04,              // VectorHeader: 4 values
      0xAA, 0xBB, 0xCC,        // FirstValue
      0x2B, 0x24,              // packed events
      0x00, 0x00,              // EndMark of the list
      0x01, 0x02,              // VLAN identifier, AttributeLength 2
      0x00, 0x01,              // VectorHeader: 1 value
      0x00, 0x0A,              // FirstValue: VLAN 10
      0x24,                    // JoinIn
      0x00, 0x00,              // EndMark of the list
      0x00, 0x00,              // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}}));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, FutureVersionSkipsALongMvrpVectorByItsSizeModulo256) {
  engineIs(MrpApplication::mvrp);
  // A vector of 200 values of 200 octets is 269 octets long; the skip takes
  // 269 mod 256 = 13 octets and reads on from there.
  Bytes frame = {
      0x01,        // ProtocolVersion 1
      0x02, 0xC8,  // AttributeType 2 (unknown), AttributeLength 200
      0x00, 0xC8,  // VectorHeader: 200 values
  };
  frame.insert(frame.end(), 11, 0xAA);  // first 11 octets of the FirstValue
  const Bytes readOnFromThere = {
      0x00, 0x00,  // taken for the list's EndMark
      0x01, 0x02,  // taken for a VLAN message
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x24,        // JoinIn
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  };
  frame.insert(frame.end(), readOnFromThere.begin(), readOnFromThere.end());
  frame.insert(frame.end(), 300, 0xAA);  // the rest of the vector, never read
  parse(frame);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}}));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, FutureVersionSkipOfZeroOctetsEndsTheMessageAtAnEndMark) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x01,        // ProtocolVersion 1
      0x02, 0xFE,  // AttributeType 2 (unknown), AttributeLength 254
      0x00, 0x00,  // no values: 0 + 254 + 2 = 256 skips 0 octets, and this is the list's EndMark
      0x01, 0x02,  // VLAN identifier, AttributeLength 2
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0x24,        // JoinIn
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_EQ(keys(), (std::vector<MrpParsedAttributeKey>{{1, 10}}));
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

// A step of 0 octets in front of a word that is no EndMark would skip
// nothing forever.
TEST_F(MrpSmParseTest, FutureVersionSkipOfZeroOctetsBeforeAVectorIsMalformed) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x01,              // ProtocolVersion 1
      0x02, 0xFD,        // AttributeType 2 (unknown), AttributeLength 253
      0x00, 0x01,        // VectorHeader: 1 value; 1 + 253 + 2 = 256 skips 0 octets
      0xAA, 0xBB, 0xCC,  // the start of its FirstValue
      0x00, 0x00,        // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, FutureVersionSkipOfZeroOctetsBeforeALeaveAllIsMalformed) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x01,        // ProtocolVersion 1
      0x02, 0xFE,  // AttributeType 2 (unknown), AttributeLength 254
      0x20, 0x00,  // VectorHeader: LeaveAll, no values; 0 + 254 + 2 = 256 skips 0 octets
      0x00, 0x00,  // EndMark of the MRPDU
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u);
  EXPECT_TRUE(engine->receivedFrame().mrpRxLeaveAll().empty()) << "a skipped message is not read";
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseMalformed));
}

TEST_F(MrpSmParseTest, FutureVersionSkipOfTheRestOfTheFrameIsMalformed) {
  engineIs(MrpApplication::mvrp);
  parse({
      0x01,        // ProtocolVersion 1
      0x02, 0x03,  // AttributeType 2 (unknown), AttributeLength 3
      0x00, 0x03,  // VectorHeader: 3 values, 6 octets in all
      0xAA, 0xBB,  // the frame ends: the skip takes what is left
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 1u) << "no EndMark behind the skipped message";
}

TEST_F(MrpSmParseTest, FutureVersionOfAnUnknownApplicationSkipsNothing) {
  engineIs(static_cast<MrpApplication>(3));
  parse({
      0x01,        // ProtocolVersion 1
      0x01, 0x02,  // AttributeType 1, AttributeLength 2 (no type is known)
      0x00, 0x00,  // EndMark of the MRPDU, right behind the header
  });
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
  EXPECT_TRUE(parsedWith(Mrp::MrpParseStatus::parseEndOfPdu));
}

TEST_F(MrpSmParseTest, TeardownReleasesParsedAttributes) {
  engineIs(MrpApplication::mvrp);
  parse(Frames::kMvrpThreeVlans);
  Quarn::Ptr<Mrp::MrpParsedAttribute> kept = parsed(1, 10);
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->references(), 2u);
  engine = nullptr;
  EXPECT_EQ(kept->references(), 1u);
}

}  // namespace
}  // namespace MrpTest
