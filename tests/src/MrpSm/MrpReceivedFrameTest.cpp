#include "MrpSm/MrpReceivedFrame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "support/MrpSmParsePeer.h"

namespace {

using Mrp::MrpApplication;
using Mrp::MrpParsedAttributeKey;
using Mrp::MrpReceivedFrame;
using Mrp::ValueIndex;
using Octets = std::vector<std::uint8_t>;
using Keys = std::vector<MrpParsedAttributeKey>;

constexpr std::uint64_t kVlanLimit = 0xffff;
constexpr std::uint64_t kStreamLimit = UINT64_MAX;
constexpr std::uint64_t kClassLimit = 0xff;
const Octets kNoDeclarations;

Keys keysOf(const MrpReceivedFrame::KeyQueue& queue) {
  Keys keys;
  for (const auto& [index, key] : queue) keys.push_back(key);
  return keys;
}

Octets valueOf(const MrpReceivedFrame& frame, MrpParsedAttributeKey key) {
  Octets octets;
  const Mrp::ValueQueue& values = frame.mrpParsedAttribute(key)->attributeValues();
  for (unsigned i = 0; i < values.size(); ++i) octets.push_back(values.at(ValueIndex(i)));
  return octets;
}

// Keys 10, 11 and 12 of an MVRP frame, collected as one run: JoinIn,
// JoinIn, Lv.
MrpReceivedFrame vlansTenToTwelve() {
  MrpReceivedFrame frame(MrpApplication::mvrp);
  EXPECT_TRUE(frame.collectRun(1, Octets{0x00, 0x0a}, 10, kVlanLimit, Octets{1, 1, 5}, kNoDeclarations));
  return frame;
}

TEST(MrpReceivedFrameTest, RunsMaterialiseIntoValuesInOrderOfReceipt) {
  MrpReceivedFrame frame = vlansTenToTwelve();
  ASSERT_TRUE(frame.collectRun(1, Octets{0x00, 0x64}, 100, kVlanLimit, Octets{3}, kNoDeclarations));
  EXPECT_EQ(keysOf(frame.mrpParsedAttributeKey()), (Keys{{1, 10}, {1, 11}, {1, 12}, {1, 100}}));
  EXPECT_TRUE(frame.runs().empty()) << "the runs are gone once the frame is value by value";
  EXPECT_EQ(frame.mrpParsedAttributes().size(), 4u);
  EXPECT_EQ(frame.mrpParsedAttribute({1, 12})->attributeEvent(), 5);
  EXPECT_EQ(frame.mrpParsedAttribute({1, 100})->attributeEvent(), 3);
  EXPECT_EQ(valueOf(frame, {1, 10}), (Octets{0x00, 0x0a}));
  EXPECT_EQ(valueOf(frame, {1, 12}), (Octets{0x00, 0x0c})) << "the first value advanced by its distance";
  EXPECT_TRUE(frame.msrpParsedDomainKey().empty());
}

struct MaterialisedValue {
  const char* name;
  std::uint8_t attributeType;
  Octets firstValue;
  std::uint64_t firstKey;
  std::uint64_t keyLimit;
  Octets declarations;
  bool domain;  // whether its keys are queued apart
  Octets secondValue;
};

// The second value of each MSRP type's two-value run, and the queue its keys go to.
TEST(MrpReceivedFrameTest, EachMsrpTypeMaterialisesByItsIncrementRule) {
  const Octets talker = {
      0x00, 0x11, 0x22, 0x33, 0xff, 0xff, 0xff, 0xff,  // StreamID
      0x91, 0xe0, 0xf0, 0x00, 0xfe, 0xff,              // Destination_Address
      0x00, 0x02,                                      // VLAN_identifier
      0x00, 0x80, 0x00, 0x01,                          // TSpec
      0x60,                                            // priority 3, rank 0
      0x00, 0x00, 0x10, 0x00,                          // AccumulatedLatency
  };
  const Octets talkerNext = {
      0x00, 0x11, 0x22, 0x34, 0x00, 0x00, 0x00, 0x00,  // StreamID + 1
      0x91, 0xe0, 0xf0, 0x00, 0xff, 0x00,              // Destination_Address + 1
      0x00, 0x02, 0x00, 0x80, 0x00, 0x01, 0x60, 0x00, 0x00, 0x10, 0x00,
  };
  Octets failed = talker;
  Octets failedNext = talkerNext;
  for (Octets* value : {&failed, &failedNext}) {
    value->insert(value->end(), {0, 0, 0, 0, 0, 0, 0, 9, 0x02});  // Bridge ID, Failure Code
  }
  const MaterialisedValue cases[] = {
      {"TalkerAdvertise", 1, talker, 0x00112233ffffffffULL, kStreamLimit, kNoDeclarations, false, talkerNext},
      {"TalkerFailed", 2, failed, 0x00112233ffffffffULL, kStreamLimit, kNoDeclarations, false, failedNext},
      {"Listener", 3, Octets{0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0}, 7, kStreamLimit, Octets{2, 3}, false,
       Octets{0, 0, 0, 0, 0, 0, 0, 8, 3, 0, 0, 0}},
      {"Domain", 4, Octets{6, 3, 0x00, 0x02}, 6, kClassLimit, kNoDeclarations, true, Octets{7, 4, 0x00, 0x02}},
  };
  for (const MaterialisedValue& c : cases) {
    SCOPED_TRACE(c.name);
    MrpReceivedFrame frame(MrpApplication::msrp);
    ASSERT_TRUE(frame.collectRun(c.attributeType, c.firstValue, c.firstKey, c.keyLimit, Octets{1, 1}, c.declarations));
    const MrpParsedAttributeKey second{c.attributeType, c.firstKey + 1};
    EXPECT_EQ(valueOf(frame, second), c.secondValue);
    const Keys keys{{c.attributeType, c.firstKey}, second};
    EXPECT_EQ(keysOf(frame.msrpParsedDomainKey()), c.domain ? keys : Keys{});
    EXPECT_EQ(keysOf(frame.mrpParsedAttributeKey()), c.domain ? Keys{} : keys);
  }
}

TEST(MrpReceivedFrameTest, RepeatedKeysSwitchTheFrameToValueByValue) {
  MrpReceivedFrame frame = vlansTenToTwelve();
  EXPECT_FALSE(frame.collectRun(1, Octets{0x00, 0x0b}, 11, kVlanLimit, Octets{3}, kNoDeclarations));
  EXPECT_EQ(frame.runs().runs().size(), 1u) << "a refused vector takes nothing";
  EXPECT_TRUE(frame.collectsRuns()) << "until the parser collects the vector value by value";

  frame.materializeParsedRuns();
  EXPECT_FALSE(frame.collectsRuns());
  // The parser's later occurrence of key 11: the same record, its key queued again.
  const Quarn::Ptr<Mrp::MrpParsedAttribute> repeated = frame.mrpParsedAttributeIs({1, 11});
  EXPECT_EQ(repeated->attributeEvent(), 1);
  repeated->attributeEventIs(3);
  frame.parsedKeyEnq({1, 11});
  EXPECT_EQ(keysOf(frame.mrpParsedAttributeKey()), (Keys{{1, 10}, {1, 11}, {1, 12}, {1, 11}}));
  EXPECT_EQ(frame.mrpParsedAttributes().size(), 3u);
  EXPECT_EQ(frame.parsedEventOf(1, 11), 3) << "the later event";
}

TEST(MrpReceivedFrameTest, CollectsRunsOnlyWhileNothingIsValueByValue) {
  MrpReceivedFrame frame(MrpApplication::mvrp);
  EXPECT_TRUE(frame.collectsRuns());
  Mrp::MrpSmParsePeer::parsedRunsEnabledIs(frame, false);
  EXPECT_FALSE(frame.collectsRuns()) << "runs turned off";
  Mrp::MrpSmParsePeer::parsedRunsEnabledIs(frame, true);
  frame.parsedKeyEnq({1, 5});
  EXPECT_FALSE(frame.collectsRuns()) << "a key queued";
  frame.mrpParsedAttributeKeyDelAll();
  frame.mrpParsedAttributeIs({1, 5});
  EXPECT_FALSE(frame.collectsRuns()) << "a record made";
}

TEST(MrpReceivedFrameTest, KeyQueuesKeepOrderOfReceiptWithMsrpDomainsApart) {
  MrpReceivedFrame msrp(MrpApplication::msrp);
  for (const MrpParsedAttributeKey key : {MrpParsedAttributeKey{4, 6}, {1, 0x10}, {3, 0x10}, {4, 7}, {1, 0x08}}) {
    msrp.parsedKeyEnq(key);
  }
  EXPECT_EQ(msrp.msrpParsedDomainKeyDeq(), (MrpParsedAttributeKey{4, 6}));
  EXPECT_EQ(msrp.msrpParsedDomainKeyDeq(), (MrpParsedAttributeKey{4, 7}));
  EXPECT_TRUE(msrp.msrpParsedDomainKey().empty());
  EXPECT_EQ(keysOf(msrp.mrpParsedAttributeKey()), (Keys{{1, 0x10}, {3, 0x10}, {1, 0x08}}));

  MrpReceivedFrame mvrp(MrpApplication::mvrp);
  mvrp.parsedKeyEnq({4, 6});
  EXPECT_EQ(keysOf(mvrp.mrpParsedAttributeKey()), (Keys{{4, 6}})) << "only MSRP has Domains";
  EXPECT_TRUE(mvrp.msrpParsedDomainKey().empty());
}

TEST(MrpReceivedFrameTest, LeaveAllMarksGoInAscendingTypeOrder) {
  MrpReceivedFrame frame(MrpApplication::msrp);
  frame.mrpRxLeaveAllIs(4, true);
  frame.mrpRxLeaveAllIs(1, true);
  frame.mrpRxLeaveAllIs(3, true);
  std::vector<std::uint8_t> types;
  for (const auto& [type, leaveAll] : frame.mrpRxLeaveAll()) types.push_back(type);
  EXPECT_EQ(types, (std::vector<std::uint8_t>{1, 3, 4}));
  frame.mrpRxLeaveAllDel(1);
  EXPECT_EQ(frame.mrpRxLeaveAll().begin()->first, 3);
  frame.mrpRxLeaveAllDelAll();
  EXPECT_TRUE(frame.mrpRxLeaveAll().empty());
}

TEST(MrpReceivedFrameTest, TheEventOfAnAttributeComesFromTheRunsOrTheValues) {
  MrpReceivedFrame frame = vlansTenToTwelve();
  EXPECT_EQ(frame.parsedEventOf(1, 12), 5);
  EXPECT_EQ(frame.parsedEventOf(1, 13), std::nullopt);
  EXPECT_FALSE(frame.runs().empty()) << "looking an event up keeps the runs";
  frame.materializeParsedRuns();
  EXPECT_EQ(frame.parsedEventOf(1, 12), 5);
  EXPECT_EQ(frame.parsedEventOf(2, 12), std::nullopt) << "another type";
}

TEST(MrpReceivedFrameTest, ClearingDropsWhatTheFrameLeftAndItsFutureVersionMode) {
  MrpReceivedFrame frame = vlansTenToTwelve();
  frame.mrpRxLeaveAllIs(1, true);
  frame.futureProtocolVersionIs(true);
  frame.recycledPktIs(true);
  frame.parseEndedEarlyIs(true);
  frame.runsDelAll();
  EXPECT_TRUE(frame.runs().empty());
  EXPECT_TRUE(frame.mrpParsedAttributeKey().empty()) << "the runs are dropped, not materialised";
  EXPECT_FALSE(frame.mrpRxLeaveAll().empty());

  ASSERT_TRUE(frame.collectRun(1, Octets{0x00, 0x0a}, 10, kVlanLimit, Octets{1}, kNoDeclarations));
  frame.mrpParsedAttributeIs({1, 20});
  frame.msrpParsedDomainKeyEnq({4, 6});
  frame.parseResultsDelAll();
  EXPECT_TRUE(frame.runs().empty());
  EXPECT_TRUE(frame.mrpParsedAttributes().empty());
  EXPECT_TRUE(frame.mrpParsedAttributeKey().empty());
  EXPECT_TRUE(frame.msrpParsedDomainKey().empty());
  EXPECT_TRUE(frame.mrpRxLeaveAll().empty());
  EXPECT_FALSE(frame.futureProtocolVersion());
  EXPECT_TRUE(frame.recycledPkt()) << "the parser clears it at the end of the frame";
  EXPECT_TRUE(frame.parseEndedEarly()) << "the parser clears it at the start of the next frame";
  EXPECT_TRUE(frame.collectsRuns());
}

}  // namespace
