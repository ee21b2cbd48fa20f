#include <gtest/gtest.h>

#include <sstream>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using namespace Mrp;
using Velo::EthAddr;

template <class Value>
std::string textOf(const Value& value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

MsrpTalkerAdvertiseAttribute talkerOf(std::uint64_t streamId, const EthAddr& dmac) {
  return MsrpTalkerAdvertiseAttribute(streamId, DataFrameParameters(dmac, 2), Tspec(1500, 1), PriorityAndRank(3, 0), 7);
}

class MrpLibValuesTest : public EngineFixture {
 protected:
  MrpLibValuesTest() { traceLevelsClear(); }
  ~MrpLibValuesTest() override { traceLevelsClear(); }
  static void traceLevelsClear() { Quarn::traceLevelsClear(); }

  // An active engine of `application`, parsing a vector of `attributeType`,
  // with distinct FirstValues in every receive slot.
  void parsing(MrpApplication application, std::uint8_t attributeType) {
    engine = nullptr;
    engine = engineNew(application, false);
    ASSERT_EQ(mrpLib->mrpSm(), engine.ptr());
    engine->parseContext()->attributeTypeIs(attributeType);
    mrpLib->msrpTalkerAdvertiseRx() = talkerOf(100, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0xfe));
    mrpLib->msrpTalkerFailedRx() = MsrpTalkerFailedAttribute(talkerOf(200, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0x01, 0xff)),
                                                             FailureInformation(42, 9));
    mrpLib->msrpListenerVectorRx() = MsrpListenerAttribute(300, MsrpListenerEvent::ready);
    mrpLib->msrpDomainVectorRx() = MsrpDomainAttribute(6, 3, 2);
    mrpLib->mvrpVlanVectorRx() = MvrpVlanAttribute(10);
    before = textOfRxSlots();
  }

  std::string textOfRxSlots() const {
    return textOf(mrpLib->msrpTalkerAdvertiseRx()) + textOf(mrpLib->msrpTalkerFailedRx()) +
           textOf(mrpLib->msrpListenerVectorRx()) + textOf(mrpLib->msrpDomainVectorRx()) +
           textOf(mrpLib->mvrpVlanVectorRx());
  }

  // Derives the values of indexes 0..n as the parser does.
  void deriveUpTo(std::uint16_t n) {
    for (std::uint16_t i = 0; i <= n; ++i) mrpLib->mrpValueFromFirstValue(i);
  }

  Quarn::Ptr<MrpSm> engine;
  std::string before;
  Quarn::CaptureTraceSink sink;
};

TEST_F(MrpLibValuesTest, IndexZeroIsTheFirstValueAndChangesNoSlot) {
  for (std::uint8_t type = 1; type <= 4; ++type) {
    parsing(MrpApplication::msrp, type);
    mrpLib->mrpValueFromFirstValue(0);
    EXPECT_EQ(textOfRxSlots(), before) << "type " << unsigned(type);
  }
  parsing(MrpApplication::mvrp, 1);
  mrpLib->mrpValueFromFirstValue(0);
  EXPECT_EQ(textOfRxSlots(), before);
}

TEST_F(MrpLibValuesTest, IndexesInOrderLeaveTheTalkerAtFirstValuePlusN) {
  parsing(MrpApplication::msrp, static_cast<std::uint8_t>(MsrpAttrType::talkerAdvertise));
  deriveUpTo(5);
  EXPECT_EQ(mrpLib->msrpTalkerAdvertiseRx(), talkerOf(105, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xff, 0x03)));
  EXPECT_EQ(mrpLib->msrpListenerVectorRx().streamId(), 300u) << "only the slot of the parsed type moves";
  EXPECT_TRUE(!mrpLib->msrpTalkerAdvertiseTx()) << "the transmit slot is not touched";
}

TEST_F(MrpLibValuesTest, TalkerFailedAdvancesItsTalkerAndKeepsItsFailureInformation) {
  parsing(MrpApplication::msrp, static_cast<std::uint8_t>(MsrpAttrType::talkerFailed));
  deriveUpTo(3);
  EXPECT_EQ(
      mrpLib->msrpTalkerFailedRx(),
      MsrpTalkerFailedAttribute(talkerOf(203, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0x02, 0x02)), FailureInformation(42, 9)));
  EXPECT_EQ(mrpLib->msrpTalkerAdvertiseRx().streamId(), 100u);
}

TEST_F(MrpLibValuesTest, ListenerAdvancesItsStreamIdAndKeepsItsDeclaration) {
  parsing(MrpApplication::msrp, static_cast<std::uint8_t>(MsrpAttrType::listenerVector));
  mrpLib->msrpListenerVectorRx().streamIdIs(0x00000000ffffffffULL);
  deriveUpTo(2);
  EXPECT_EQ(mrpLib->msrpListenerVectorRx(), MsrpListenerAttribute(0x0000000100000001ULL, MsrpListenerEvent::ready));
}

TEST_F(MrpLibValuesTest, DomainAdvancesClassIdAndPriorityModulo256AndKeepsItsVid) {
  parsing(MrpApplication::msrp, static_cast<std::uint8_t>(MsrpAttrType::domainVector));
  deriveUpTo(1);
  EXPECT_EQ(mrpLib->msrpDomainVectorRx(), MsrpDomainAttribute(7, 4, 2));
  mrpLib->msrpDomainVectorRx() = MsrpDomainAttribute(255, 255, 4000);
  mrpLib->mrpIncrementDomainVector();
  EXPECT_EQ(mrpLib->msrpDomainVectorRx(), MsrpDomainAttribute(0, 0, 4000));
}

TEST_F(MrpLibValuesTest, VlanIncrementsPast4094WithoutComplaint) {
  parsing(MrpApplication::mvrp, static_cast<std::uint8_t>(MvrpAttrType::vlanVector));
  mrpLib->mvrpVlanVectorRx().vlanIdIs(4095);
  deriveUpTo(1);
  EXPECT_EQ(mrpLib->mvrpVlanVectorRx().vlanId(), 4096);
  mrpLib->mvrpVlanVectorRx().vlanIdIs(65535);
  mrpLib->mrpIncrementVlanVector();
  EXPECT_EQ(mrpLib->mvrpVlanVectorRx().vlanId(), 0) << "modulo 65536";
}

TEST_F(MrpLibValuesTest, TypesWithoutAnIncrementChangeNothing) {
  for (std::uint8_t type : {0, 5, 255}) {
    parsing(MrpApplication::msrp, type);
    deriveUpTo(3);
    EXPECT_EQ(textOfRxSlots(), before) << "MSRP type " << unsigned(type);
  }
  for (std::uint8_t type : {0, 2}) {
    parsing(MrpApplication::mvrp, type);
    deriveUpTo(3);
    EXPECT_EQ(textOfRxSlots(), before) << "MVRP type " << unsigned(type);
  }
  parsing(static_cast<MrpApplication>(3), 1);
  deriveUpTo(3);
  EXPECT_EQ(textOfRxSlots(), before) << "unknown application";
}

TEST_F(MrpLibValuesTest, MvrpEngineIgnoresMsrpTypeCodes) {
  parsing(MrpApplication::mvrp, 1);
  deriveUpTo(2);
  EXPECT_EQ(mrpLib->msrpTalkerAdvertiseRx().streamId(), 100u) << "code 1 is a VLAN for MVRP";
  EXPECT_EQ(mrpLib->mvrpVlanVectorRx().vlanId(), 12);
}

TEST_F(MrpLibValuesTest, WithoutAnActiveEngineNoSlotMoves) {
  Quarn::Ptr<MrpLib> lone = mrpLibFactory();
  lone->applicationIs(MrpApplication::mvrp);
  lone->mvrpVlanVectorRx().vlanIdIs(10);
  lone->mrpValueFromFirstValue(1);
  EXPECT_EQ(lone->mvrpVlanVectorRx().vlanId(), 10) << "no engine attached";

  engine = engineNew(MrpApplication::mvrp, true);
  mrpLib->mvrpVlanVectorRx().vlanIdIs(10);
  mrpLib->mrpValueFromFirstValue(1);
  EXPECT_EQ(mrpLib->mvrpVlanVectorRx().vlanId(), 10) << "a standby engine has no parse context";
}

TEST_F(MrpLibValuesTest, IncrementsTraceTheNewValue) {
  parsing(MrpApplication::msrp, 1);
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/0-9"));
  mrpLib->mrpIncrementTalkerAdvertise();
  mrpLib->mrpIncrementTalkerFailed();
  mrpLib->mrpIncrementDomainVector();
  mrpLib->mrpIncrementVlanVector();
  EXPECT_TRUE(sink.contains(" TalkerAdvertiseAttribute = " + textOf(mrpLib->msrpTalkerAdvertiseRx())));
  EXPECT_TRUE(sink.contains(" TalkerFailedAttribute = " + textOf(mrpLib->msrpTalkerFailedRx())));
  EXPECT_TRUE(sink.contains(" Domain vector = " + textOf(MsrpDomainAttribute(7, 4, 2))));
  EXPECT_TRUE(sink.contains(" Vlan vector = " + textOf(MvrpVlanAttribute(11))));
}

}  // namespace
}  // namespace MrpTest
