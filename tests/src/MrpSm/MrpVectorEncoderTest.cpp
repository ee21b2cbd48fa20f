#include "MrpSm/MrpVectorEncoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "MrpSm/MrpLib.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"
#include "support/FrameBuilder.h"

namespace MrpTest {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Mrp::MrpTxPacketContext;
using Mrp::MsrpAttrType;
using Mrp::MsrpListenerEvent;
using Mrp::MvrpAttrType;

constexpr std::uint8_t kNew = 0, kJoinIn = 1, kIn = 2, kJoinMt = 3, kMt = 4, kLv = 5, kLeaveAllOnly = 6;
constexpr std::uint8_t kMsrp = 1, kMvrp = 2;

Mrp::MsrpTalkerAdvertiseAttribute talkerValue() {
  return {0x0011223344556677, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00), 2),
          Mrp::Tspec(224, 1), Mrp::PriorityAndRank(3, 1), 5000};
}

Mrp::MsrpTalkerFailedAttribute talkerFailedValue() {
  return {talkerValue(), Mrp::FailureInformation(0x8000001122334455, 2)};
}

// The Talker Advertise FirstValue of talkerValue().
const Bytes kTalkerFirstValue = {
    0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // StreamID
    0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00,              // Destination_Address
    0x00, 0x02,                                      // VLAN_identifier 2
    0x00, 0xE0,                                      // MaxFrameSize 224
    0x00, 0x01,                                      // MaxIntervalFrames 1
    0x70,                                            // priority 3, rank 1
    0x00, 0x00, 0x13, 0x88,                          // AccumulatedLatency 5000
};

Bytes concat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

// A context on a fresh 1500-octet packet and a service object without engine.
class MrpVectorEncoderTest : public ::testing::Test {
 protected:
  Bytes octets(std::size_t offset, std::size_t n) const {
    const auto span = ctx->octets(offset, n);
    return {span.begin(), span.end()};
  }
  // Fills the whole packet with `octet`, so that a test sees which octets a
  // primitive wrote.
  void dirty(std::uint8_t octet) {
    const auto all = ctx->octets(0, ctx->capacity());
    std::fill(all.begin(), all.end(), octet);
  }
  // What the transmit path does with the count a primitive returns.
  void listLengthInc(std::uint16_t added) {
    const std::size_t field = *ctx->curMessage() + 2;
    ctx->u16AtIs(field, static_cast<std::uint16_t>(ctx->u16At(field) + added));
  }

  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(1500));
};

// ---- Writing a new vector ----

struct NewVectorCase {
  std::string name;
  std::function<std::uint16_t(Mrp::MrpLib&, MrpTxPacketContext&, std::uint8_t)> encode;
  Bytes withLv;         // the vector for event Lv
  Bytes leaveAllOnly;   // the vector for event 6
};

const std::vector<NewVectorCase> kNewVectorCases = {
    {"TalkerAdvertise",
     [](Mrp::MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t e) { return lib.mrpEncodeTalkerVector(ctx, talkerValue(), e); },
     concat({{0x00, 0x01},  // VectorHeader: 1 value
             kTalkerFirstValue,
             {0xB4}}),      // ThreePackedEvents: Lv * 36
     concat({{0x20, 0x00},  // VectorHeader: LeaveAll, no values
             Bytes(25, 0)})},  // FirstValue all zero
    {"TalkerFailed",
     [](Mrp::MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t e) {
       return lib.mrpEncodeTalkerFailedVector(ctx, talkerFailedValue(), e);
     },
     concat({{0x00, 0x01},  // VectorHeader: 1 value
             kTalkerFirstValue,
             {0x80, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55},  // FailureInformation.Bridge ID
             {0x02},        // Failure Code
             {0xB4}}),      // ThreePackedEvents: Lv * 36
     concat({{0x20, 0x00}, Bytes(34, 0)})},
    {"Listener",
     [](Mrp::MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t e) {
       return lib.mrpEncodeListenerVector(ctx, Mrp::MsrpListenerAttribute(0x0011223344556677, MsrpListenerEvent::readyFailed), e);
     },
     {0x00, 0x01,                                      // VectorHeader: 1 value
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // FirstValue: StreamID
      0xB4,                                            // ThreePackedEvents: Lv * 36
      0xC0},                                           // FourPackedEvents: readyFailed * 64
     concat({{0x20, 0x00}, Bytes(8, 0)})},
    {"Domain",
     [](Mrp::MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t e) {
       return lib.mrpEncodeDomainVector(ctx, Mrp::MsrpDomainAttribute(6, 3, 2), e);
     },
     {0x00, 0x01,  // VectorHeader: 1 value
      0x06,        // SRclassID
      0x03,        // SRclassPriority
      0x00, 0x02,  // SRclassVID
      0xB4},       // ThreePackedEvents: Lv * 36
     concat({{0x20, 0x00}, Bytes(4, 0)})},
    {"Vlan",
     [](Mrp::MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t e) {
       return lib.mrpEncodeVlanVector(ctx, Mrp::MvrpVlanAttribute(10), e);
     },
     {0x00, 0x01,  // VectorHeader: 1 value
      0x00, 0x0A,  // FirstValue: VLAN 10
      0xB4},       // ThreePackedEvents: Lv * 36
     concat({{0x20, 0x00}, Bytes(2, 0)})},
};

class MrpNewVectorTest : public MrpVectorEncoderTest, public ::testing::WithParamInterface<NewVectorCase> {};

TEST_P(MrpNewVectorTest, WritesHeaderFirstValueAndPackedOctetsAtTheCurrentVector) {
  dirty(0xEE);
  ctx->curVectorIs(100);
  const Bytes& expected = GetParam().withLv;
  EXPECT_EQ(GetParam().encode(*lib, *ctx, kLv), expected.size());
  EXPECT_EQ(octets(100, expected.size()), expected);
  EXPECT_EQ(octets(99, 1), Bytes{0xEE}) << "nothing before the vector";
  EXPECT_EQ(octets(100 + expected.size(), 1), Bytes{0xEE}) << "nothing after the vector";
  EXPECT_EQ(*ctx->curVector(), 100);
}

TEST_P(MrpNewVectorTest, EventSixWritesALeaveAllOnlyVectorWithAZeroFirstValue) {
  dirty(0xEE);
  ctx->curVectorIs(100);
  const Bytes& expected = GetParam().leaveAllOnly;
  EXPECT_EQ(GetParam().encode(*lib, *ctx, kLeaveAllOnly), expected.size());
  EXPECT_EQ(octets(100, expected.size()), expected);
  EXPECT_EQ(octets(100 + expected.size(), 1), Bytes{0xEE}) << "no packed events";
}

TEST_P(MrpNewVectorTest, EventThatIsNeitherPackableNorLeaveAllIsRefusedAndWritesNothing) {
  ctx->curVectorIs(100);
  EXPECT_THROW(GetParam().encode(*lib, *ctx, 7), std::out_of_range);
  EXPECT_EQ(octets(100, 40), Bytes(40, 0));
}

TEST_P(MrpNewVectorTest, VectorThatDoesNotFitThePacketIsRefusedAndWritesNothing) {
  ctx->curVectorIs(static_cast<std::uint16_t>(1500 - GetParam().withLv.size() + 1));
  EXPECT_THROW(GetParam().encode(*lib, *ctx, kLv), std::out_of_range);
  EXPECT_EQ(octets(1400, 100), Bytes(100, 0));
}

TEST_P(MrpNewVectorTest, ContextWithoutCurrentVectorIsRefused) {
  EXPECT_THROW(GetParam().encode(*lib, *ctx, kLv), std::logic_error);
}

INSTANTIATE_TEST_SUITE_P(Types, MrpNewVectorTest, ::testing::ValuesIn(kNewVectorCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(MrpVectorEncoderTest, NewVectorOctetCountsPerType) {
  // 2 + FirstValue + 1 (+ 1 four-packed for Listener); LeaveAll-only 2 + FirstValue.
  const std::vector<std::pair<std::size_t, std::size_t>> counts = {{28, 27}, {37, 36}, {12, 10}, {7, 6}, {5, 4}};
  for (std::size_t i = 0; i < kNewVectorCases.size(); ++i) {
    EXPECT_EQ(kNewVectorCases[i].withLv.size(), counts[i].first) << kNewVectorCases[i].name;
    EXPECT_EQ(kNewVectorCases[i].leaveAllOnly.size(), counts[i].second) << kNewVectorCases[i].name;
  }
}

// ---- The receive side's LeaveAll request ----

class MrpVectorEncoderEngineTest : public EngineFixture {};

TEST_F(MrpVectorEncoderEngineTest, SendTxLvAllRidesOnTheNextVectorOnlyAndIsCleared) {
  auto engine = engineNew(Mrp::MrpApplication::msrp, false);
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(1500));
  engine->parseContext()->sendTxLvAllIs(true);

  ctx->curVectorIs(4);
  EXPECT_EQ(mrpLib->mrpEncodeDomainVector(*ctx, Mrp::MsrpDomainAttribute(6, 3, 2), kJoinIn), 7);
  EXPECT_EQ(ctx->u16At(4), 0x2001) << "LeaveAll and 1 value";
  EXPECT_FALSE(engine->parseContext()->sendTxLvAll());

  ctx->curVectorIs(11);
  mrpLib->mrpEncodeDomainVector(*ctx, Mrp::MsrpDomainAttribute(7, 4, 2), kJoinIn);
  EXPECT_EQ(ctx->u16At(11), 0x0001) << "the next vector carries no LeaveAll";
}

TEST_F(MrpVectorEncoderEngineTest, LeaveAllOnlyVectorLeavesSendTxLvAllForTheNextVector) {
  auto engine = engineNew(Mrp::MrpApplication::mvrp, false);
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(1500));
  engine->parseContext()->sendTxLvAllIs(true);
  ctx->curVectorIs(2);
  mrpLib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(0), kLeaveAllOnly);
  EXPECT_TRUE(engine->parseContext()->sendTxLvAll());
  ctx->curVectorIs(6);
  mrpLib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kNew);
  EXPECT_EQ(ctx->u16At(6), 0x2001);
  EXPECT_FALSE(engine->parseContext()->sendTxLvAll());
}

TEST_F(MrpVectorEncoderEngineTest, RefusedVectorKeepsSendTxLvAll) {
  auto engine = engineNew(Mrp::MrpApplication::mvrp, false);
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(8));
  engine->parseContext()->sendTxLvAllIs(true);
  ctx->curVectorIs(4);
  EXPECT_THROW(mrpLib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kNew), std::out_of_range);
  EXPECT_TRUE(engine->parseContext()->sendTxLvAll());
}

// ---- Appending to the current vector ----

TEST_F(MrpVectorEncoderTest, AppendingValuesTwoToFourToATalkerVectorReturnsZeroZeroOne) {
  ctx->curVectorIs(4);
  lib->mrpEncodeTalkerVector(*ctx, talkerValue(), kJoinIn);
  const struct {
    std::uint8_t event;
    std::uint16_t added;
    std::uint16_t header;
  } steps[] = {{kIn, 0, 2}, {kLv, 0, 3}, {kJoinMt, 1, 4}};
  for (const auto& step : steps) {
    EXPECT_EQ(Mrp::mrpPackThreePackedEvent(*ctx, 1, step.event, kMsrp), step.added) << step.header;
    EXPECT_EQ(ctx->u16At(4), step.header);
  }
  EXPECT_EQ(octets(4, 2 + 25 + 3),
            concat({{0x00, 0x04},  // VectorHeader: 4 values
                    kTalkerFirstValue,
                    {53,           // JoinIn, In, Lv: (1 * 6 + 2) * 6 + 5
                     108,          // JoinMt, then e2 = e3 = 0: 3 * 36
                     0}}));        // untouched
}

TEST_F(MrpVectorEncoderTest, VectorOfThreeValuesHasExactlyOneThreePackedOctet) {
  ctx->curVectorIs(2);
  lib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kJoinIn);
  Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp);
  Mrp::mrpPackThreePackedEvent(*ctx, 1, kLv, kMvrp);
  EXPECT_EQ(octets(2, 6), (Bytes{0x00, 0x03,  // VectorHeader: 3 values
                                 0x00, 0x0A,  // VLAN 10
                                 53,          // JoinIn, In, Lv
                                 0x00}));     // no second octet
  EXPECT_EQ(Mrp::mrpPackThreePackedEvent(*ctx, 1, kMt, kMvrp), 1) << "the fourth value starts a new octet";
  EXPECT_EQ(octets(6, 2), (Bytes{53, 4 * 36}));
}

TEST_F(MrpVectorEncoderTest, AppendKeepsTheLeaveAllBitAndWritesBits15And14AsZero) {
  ctx->curVectorIs(2);
  ctx->u16AtIs(2, 0xE001);  // bits 15..13 set, 1 value
  Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp);
  EXPECT_EQ(ctx->u16At(2), 0x2002);
  ctx->u16AtIs(2, 0x4002);  // bit 14 only, 2 values
  Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp);
  EXPECT_EQ(ctx->u16At(2), 0x0003);
}

TEST_F(MrpVectorEncoderTest, AppendingToAListenerVectorMovesTheFourPackedOctets) {
  ctx->curVectorIs(4);
  lib->mrpEncodeListenerVector(*ctx, Mrp::MsrpListenerAttribute(0x0011223344556677, MsrpListenerEvent::ready), kJoinIn);
  const struct {
    std::uint8_t event;
    MsrpListenerEvent declaration;
    std::uint16_t added;
    Bytes packed;  // three-packed octets, then four-packed octets
  } steps[] = {
      {kIn, MsrpListenerEvent::ignore, 0, {48, 0x80}},                  // n = 1: (1*6 + 2)*6; ready, ignore
      {kLv, MsrpListenerEvent::askingFailed, 0, {53, 0x84}},            // n = 2: + askingFailed in bits 3..2
      {kJoinMt, MsrpListenerEvent::readyFailed, 1, {53, 108, 135}},     // n = 3: new three-packed octet, 135 moved up
      {kMt, MsrpListenerEvent::ready, 1, {53, 132, 135, 0x80}},         // n = 4: new four-packed octet
  };
  for (const auto& step : steps) {
    EXPECT_EQ(Mrp::mrpPackThreeAndFourPackedEvent(*ctx, step.event, step.declaration), step.added)
        << "value " << step.packed.size();
    EXPECT_EQ(octets(4 + 2 + 8, step.packed.size() + 1), concat({step.packed, {0}}));
  }
  EXPECT_EQ(ctx->u16At(4), 5);
}

TEST_F(MrpVectorEncoderTest, ListenerVectorOfFourValuesHasTwoThreePackedAndOneFourPackedOctet) {
  ctx->curVectorIs(4);
  lib->mrpEncodeListenerVector(*ctx, Mrp::MsrpListenerAttribute(0x0102030405060708, MsrpListenerEvent::ready), kJoinIn);
  Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kIn, MsrpListenerEvent::ignore);
  Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kLv, MsrpListenerEvent::askingFailed);
  Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kJoinIn, MsrpListenerEvent::readyFailed);
  EXPECT_EQ(octets(4, 16), (Bytes{0x00, 0x04,                                      // VectorHeader: 4 values
                                  0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08,  // StreamID
                                  53,                                              // JoinIn, In, Lv
                                  36,                                              // JoinIn, e2 = e3 = 0
                                  135,   // ready, ignore, askingFailed, readyFailed: 2*64 + 0 + 1*4 + 3
                                  0x00,  // nothing more
                                  0x00, 0x00}));
}

TEST_F(MrpVectorEncoderTest, AppendRefusesEventsThatDoNotFitAndWritesNothing) {
  ctx->curVectorIs(4);
  lib->mrpEncodeListenerVector(*ctx, Mrp::MsrpListenerAttribute(1, MsrpListenerEvent::ready), kJoinIn);
  const Bytes before = octets(4, 16);
  EXPECT_THROW(Mrp::mrpPackThreePackedEvent(*ctx, 3, kLeaveAllOnly, kMsrp), std::out_of_range);
  EXPECT_THROW(Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kLeaveAllOnly, MsrpListenerEvent::ready), std::out_of_range);
  EXPECT_THROW(Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kIn, static_cast<MsrpListenerEvent>(4)), std::out_of_range);
  EXPECT_EQ(octets(4, 16), before);
}

TEST_F(MrpVectorEncoderTest, AppendBeyondThePacketIsRefusedAndWritesNothing) {
  Quarn::Ptr<MrpTxPacketContext> small = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(12));
  small->curVectorIs(0);
  lib->mrpEncodeListenerVector(*small, Mrp::MsrpListenerAttribute(1, MsrpListenerEvent::ready), kJoinIn);  // 12 octets
  EXPECT_EQ(Mrp::mrpPackThreeAndFourPackedEvent(*small, kIn, MsrpListenerEvent::ready), 0) << "still 12 octets";
  EXPECT_EQ(Mrp::mrpPackThreeAndFourPackedEvent(*small, kIn, MsrpListenerEvent::ready), 0);
  const Bytes before(small->octets(0, 12).begin(), small->octets(0, 12).end());
  EXPECT_THROW(Mrp::mrpPackThreeAndFourPackedEvent(*small, kIn, MsrpListenerEvent::ready), std::out_of_range);
  EXPECT_EQ(Bytes(small->octets(0, 12).begin(), small->octets(0, 12).end()), before);

  Quarn::Ptr<MrpTxPacketContext> vlan = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(5));
  vlan->curVectorIs(0);
  lib->mrpEncodeVlanVector(*vlan, Mrp::MvrpVlanAttribute(10), kJoinIn);  // 5 octets
  Mrp::mrpPackThreePackedEvent(*vlan, 1, kIn, kMvrp);
  Mrp::mrpPackThreePackedEvent(*vlan, 1, kIn, kMvrp);
  EXPECT_THROW(Mrp::mrpPackThreePackedEvent(*vlan, 1, kIn, kMvrp), std::out_of_range) << "a sixth octet is needed";
  EXPECT_EQ(vlan->u16At(0), 3);
}

TEST_F(MrpVectorEncoderTest, AppendToAFullVectorIsRefused) {
  ctx->curVectorIs(2);
  ctx->u16AtIs(2, 0x3FFF);  // LeaveAll, 8191 values
  EXPECT_THROW(Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp), std::out_of_range);
  EXPECT_THROW(Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kIn, MsrpListenerEvent::ready), std::out_of_range);
  EXPECT_EQ(ctx->u16At(2), 0x3FFF);
}

TEST_F(MrpVectorEncoderTest, AppendWithoutCurrentVectorIsRefused) {
  EXPECT_THROW(Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp), std::logic_error);
  EXPECT_THROW(Mrp::mrpPackThreeAndFourPackedEvent(*ctx, kIn, MsrpListenerEvent::ready), std::logic_error);
}

// ---- Sizes ----

TEST(MvrpGetSizeOfVectorTest, SizeByHeader) {
  const struct {
    std::uint16_t header;
    std::uint16_t size;
  } cases[] = {
      {0x2000, 4},             // LeaveAll only: header and FirstValue
      {0x0000, 0},             // neither values nor LeaveAll
      {0x0004, 6},             // 2 + 2 + ceil(4 / 3)
      {0x0003, 5},             // 2 + 2 + 1
      {0x2003, 5},             // the LeaveAll bit does not count
      {0x4005, 6},             // bit 14 is not LeaveAll: 5 values
      {0x1FFF, 4 + 2731},      // 8191 values
  };
  for (const auto& c : cases) EXPECT_EQ(Mrp::mvrpGetSizeOfVector(c.header), c.size) << std::hex << c.header;
}

TEST_F(MrpVectorEncoderTest, PackedBytesAreZeroWithoutMessageOrPacket) {
  EXPECT_EQ(Mrp::msrpGetNumOfPackedBytes(*ctx), 0);
  EXPECT_EQ(Mrp::mvrpGetNumOfPackedBytes(*ctx), 0);
  Quarn::Ptr<MrpTxPacketContext> empty = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), nullptr);
  empty->curMessageIs(0);
  empty->curVectorIs(4);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*empty, kMsrp), 0);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*empty, kMvrp), 0);
}

TEST_F(MrpVectorEncoderTest, MsrpPackedBytesEndAtTheListSoFar) {
  Mrp::mrpCreateNewMsrpHeader(*ctx, MsrpAttrType::talkerAdvertise);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, kMsrp), 4);
  listLengthInc(lib->mrpEncodeTalkerVector(*ctx, talkerValue(), kJoinIn));
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, kMsrp), 32);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, 0), 0);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, 3), 0);
}

TEST_F(MrpVectorEncoderTest, MvrpPackedBytesEndAtTheCurrentVector) {
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, kMvrp), 2) << "an empty vector has no size";
  lib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kJoinIn);
  for (int i = 0; i < 3; ++i) Mrp::mrpPackThreePackedEvent(*ctx, 1, kJoinIn, kMvrp);
  EXPECT_EQ(Mrp::mrpGetNumOfPackedBytes(*ctx, kMvrp), 2 + 6);
}

// ---- Messages ----

TEST_F(MrpVectorEncoderTest, FirstMsrpMessageOpensAtThePacketStart) {
  Mrp::mrpCreateNewMsrpHeader(*ctx, MsrpAttrType::listenerVector);
  EXPECT_EQ(ctx->curMessage(), 0);
  EXPECT_EQ(ctx->curVector(), 4);
  EXPECT_EQ(ctx->currentAttrType(), 3);
  EXPECT_EQ(octets(0, 4), (Bytes{0x03,          // AttributeType: Listener
                                 0x08,          // AttributeLength
                                 0x00, 0x00}));  // AttributeListLength
}

TEST_F(MrpVectorEncoderTest, MsrpMessageCarriesTheLengthOfItsType) {
  const std::pair<MsrpAttrType, std::uint8_t> types[] = {{MsrpAttrType::talkerAdvertise, 25},
                                                         {MsrpAttrType::talkerFailed, 34},
                                                         {MsrpAttrType::listenerVector, 8},
                                                         {MsrpAttrType::domainVector, 4}};
  for (const auto& [type, length] : types) {
    Quarn::Ptr<MrpTxPacketContext> fresh = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(64));
    Mrp::mrpCreateNewMsrpHeader(*fresh, type);
    const auto header = fresh->octets(0, 2);
    EXPECT_EQ(header[0], static_cast<std::uint8_t>(type));
    EXPECT_EQ(header[1], length);
  }
}

TEST_F(MrpVectorEncoderTest, ClosingAnMsrpMessageWithOneTalkerVector) {
  Mrp::mrpCreateNewMsrpHeader(*ctx, MsrpAttrType::talkerAdvertise);
  listLengthInc(lib->mrpEncodeTalkerVector(*ctx, talkerValue(), kJoinIn));
  EXPECT_EQ(ctx->u16At(2), 28);
  dirty(0xEE);  // only the octets the close writes change below
  ctx->u16AtIs(2, 28);
  Mrp::mrpCreateNewMsrpHeader(*ctx, MsrpAttrType::listenerVector);
  EXPECT_EQ(ctx->u16At(2), 30) << "the list's EndMark counts";
  EXPECT_EQ(octets(32, 2), (Bytes{0x00, 0x00})) << "EndMark at message + 32";
  EXPECT_EQ(ctx->curMessage(), 34);
  EXPECT_EQ(ctx->curVector(), 38);
  EXPECT_EQ(ctx->currentAttrType(), 3);
  EXPECT_EQ(octets(31, 8), (Bytes{0xEE,         // last octet of the Talker vector
                                  0x00, 0x00,   // EndMark
                                  0x03, 0x08,   // AttributeType, AttributeLength
                                  0x00, 0x00,   // AttributeListLength
                                  0xEE}));      // the new message's first vector, not yet written
}

TEST_F(MrpVectorEncoderTest, InvalidMsrpTypeIsTracedAndLeavesTypeAndLengthUnwritten) {
  Quarn::CaptureTraceSink sink;
  Quarn::traceLevelsIs("MrpSm/4");
  Mrp::mrpCreateNewMsrpHeader(*ctx, static_cast<MsrpAttrType>(5));
  Quarn::traceLevelsClear();
  EXPECT_TRUE(sink.contains(" Invalid Attribute 5 to be encoded"));
  EXPECT_EQ(octets(0, 4), Bytes(4, 0));
  EXPECT_EQ(ctx->curMessage(), 0);
  EXPECT_EQ(ctx->curVector(), 4);
  EXPECT_EQ(ctx->currentAttrType(), 5);
}

TEST_F(MrpVectorEncoderTest, FirstMvrpMessageOpensAtThePacketStart) {
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  EXPECT_EQ(ctx->curMessage(), 0);
  EXPECT_EQ(ctx->curVector(), 2);
  EXPECT_EQ(ctx->currentAttrType(), 1);
  EXPECT_EQ(octets(0, 2), (Bytes{0x01,     // AttributeType: VLAN
                                 0x02}));  // AttributeLength
}

TEST_F(MrpVectorEncoderTest, InvalidMvrpTypeIsTracedAndLeavesTypeAndLengthUnwritten) {
  Quarn::CaptureTraceSink sink;
  Quarn::traceLevelsIs("MrpSm/4");
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::invalidAttr);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(sink.contains(" Invalid Attribute 0 to be encoded"));
  EXPECT_EQ(octets(0, 2), Bytes(2, 0));
  EXPECT_EQ(ctx->curVector(), 2);
}

TEST_F(MrpVectorEncoderTest, ClosingAnMvrpMessageWithOneVectorOfFourValues) {
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  lib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kJoinIn);
  for (int i = 0; i < 3; ++i) Mrp::mrpPackThreePackedEvent(*ctx, 1, kJoinIn, kMvrp);
  dirty(0xEE);
  ctx->u16AtIs(2, 0x0004);
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  EXPECT_EQ(octets(7, 6), (Bytes{0xEE,         // last octet of the vector (2 + 2 + 2)
                                 0x00, 0x00,   // EndMark at message + 8
                                 0x01, 0x02,   // the new message at message + 10
                                 0xEE}));
  EXPECT_EQ(ctx->curMessage(), 10);
  EXPECT_EQ(ctx->curVector(), 12);
}

TEST_F(MrpVectorEncoderTest, ClosingAnMvrpMessageOfTwoVectorsUsesTheLastVectorsSizeAlone) {
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  lib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(10), kJoinIn);  // octets 2..6
  for (int i = 0; i < 3; ++i) Mrp::mrpPackThreePackedEvent(*ctx, 1, kIn, kMvrp);  // octets 2..7
  ctx->curVectorIs(8);
  lib->mrpEncodeVlanVector(*ctx, Mrp::MvrpVlanAttribute(20), kLv);  // octets 8..12
  Mrp::mrpCreateNewMvrpHeader(*ctx, MvrpAttrType::vlanVector);
  // message + 2 + 5 (the second vector's size) = 7: inside the first vector.
  EXPECT_EQ(octets(0, 14), (Bytes{0x01, 0x02,          // message: VLAN, length 2
                                  0x00, 0x04,          // vector: 4 values
                                  0x00, 0x0A,          // VLAN 10
                                  1 * 36 + 2 * 6 + 2,  // JoinIn, In, In
                                  0x00,                // zero octet written over "In, 0, 0"
                                  0x00,                // zero octet written over the second header
                                  0x01, 0x02,          // the new message, over the second header and VLAN 20
                                  0x14,                // what is left of VLAN 20
                                  5 * 36,              // the second vector's Lv
                                  0x00}));
  EXPECT_EQ(ctx->curMessage(), 9);
  EXPECT_EQ(ctx->curVector(), 11);
}

TEST_F(MrpVectorEncoderTest, MessageThatDoesNotFitThePacketIsRefusedAndWritesNothing) {
  Quarn::Ptr<MrpTxPacketContext> small = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(16));
  Mrp::mrpCreateNewMsrpHeader(*small, MsrpAttrType::domainVector);
  small->u16AtIs(2, 7);  // one Domain vector: message ends at 11, EndMark 11..12, next header 13..16
  const Bytes before(small->octets(0, 16).begin(), small->octets(0, 16).end());
  EXPECT_THROW(Mrp::mrpCreateNewMsrpHeader(*small, MsrpAttrType::domainVector), std::out_of_range);
  const Bytes after(small->octets(0, 16).begin(), small->octets(0, 16).end());
  EXPECT_EQ(after, before);
  EXPECT_EQ(small->curMessage(), 0);
}

// ---- Whole MRPDUs ----

TEST_F(MrpVectorEncoderTest, MsrpPduOfTwoMessages) {
  FrameBuilder b(*lib, Mrp::MrpApplication::msrp);
  auto next = talkerValue();
  next.streamIdIs(0x0011223344556678);
  b.message(1).talker(talkerValue(), kJoinIn).append(kIn);
  b.message(4).domain(Mrp::MsrpDomainAttribute(6, 3, 2), kNew);
  EXPECT_EQ(b.mrpdu(), concat({{0x00},                    // ProtocolVersion
                               {0x01, 0x19, 0x00, 0x1E},  // Talker Advertise, length 25, list 28 + 2
                               {0x00, 0x02},              // VectorHeader: 2 values
                               kTalkerFirstValue,
                               {48},                      // JoinIn, In: (1 * 6 + 2) * 6
                               {0x00, 0x00},              // the list's EndMark
                               {0x04, 0x04, 0x00, 0x09},  // Domain, length 4, list 7 + 2
                               {0x00, 0x01},              // VectorHeader: 1 value
                               {0x06, 0x03, 0x00, 0x02},  // SRclassID, SRclassPriority, SRclassVID
                               {0x00},                    // New
                               {0x00, 0x00},              // the list's EndMark
                               {0x00, 0x00}}));           // the PDU's EndMark
}

TEST_F(MrpVectorEncoderTest, MvrpPduOfTwoVectors) {
  FrameBuilder b(*lib, Mrp::MrpApplication::mvrp);
  b.message(1).vlan(Mrp::MvrpVlanAttribute(10), kJoinIn).append(kJoinIn).append(kLv);
  b.vlan(Mrp::MvrpVlanAttribute(100), kJoinMt);
  EXPECT_EQ(b.mrpdu(), (Bytes{0x00,             // ProtocolVersion
                              0x01, 0x02,       // VLAN, length 2
                              0x00, 0x03,       // VectorHeader: 3 values
                              0x00, 0x0A,       // VLAN 10
                              0x2F,             // JoinIn, JoinIn, Lv
                              0x00, 0x01,       // VectorHeader: 1 value
                              0x00, 0x64,       // VLAN 100
                              3 * 36,           // JoinMt
                              0x00, 0x00,       // the list's EndMark
                              0x00, 0x00}));    // the PDU's EndMark
}

TEST_F(MrpVectorEncoderTest, LeaveAllOnlyMessagePdu) {
  FrameBuilder b(*lib, Mrp::MrpApplication::msrp);
  b.message(3).listener(Mrp::MsrpListenerAttribute(), kLeaveAllOnly);
  EXPECT_EQ(b.mrpdu(), concat({{0x00},                    // ProtocolVersion
                               {0x03, 0x08, 0x00, 0x0C},  // Listener, length 8, list 10 + 2
                               {0x20, 0x00},              // VectorHeader: LeaveAll, no values
                               Bytes(8, 0),               // FirstValue
                               {0x00, 0x00},              // the list's EndMark
                               {0x00, 0x00}}));           // the PDU's EndMark
}

}  // namespace
}  // namespace MrpTest
