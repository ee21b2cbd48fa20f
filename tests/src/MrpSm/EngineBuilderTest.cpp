#include "support/EngineBuilder.h"

#include <gtest/gtest.h>

#include "quarn/ClockScope.h"
#include "support/SimHost.h"
#include "velo/Pkt.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

struct FramingCase {
  const char* name;
  MrpApplication application;
  Velo::EthAddr macAddr;
  std::uint16_t etype;
};

class EngineBuilderFramingTest : public ::testing::TestWithParam<FramingCase> {
 protected:
  Quarn::System::ClockScope clockScope_{new Quarn::SimClock};
};

TEST_P(EngineBuilderFramingTest, TheServiceObjectTakesTheApplicationAndItsFraming) {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  Quarn::Ptr<Mrp::MrpSm> engine = EngineBuilder(GetParam().application).mrpLib(lib).build();
  EXPECT_EQ(engine->mrpLib(), lib);
  EXPECT_EQ(lib->application(), GetParam().application);
  EXPECT_EQ(lib->applicationMacAddr(), GetParam().macAddr);
  EXPECT_EQ(lib->applicationEtype(), GetParam().etype);
}

INSTANTIATE_TEST_SUITE_P(
    Applications, EngineBuilderFramingTest,
    ::testing::Values(FramingCase{"Msrp", MrpApplication::msrp, Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x0e), 0x22ea},
                      FramingCase{"Mvrp", MrpApplication::mvrp, Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x21), 0x88f5},
                      // An unknown code still has an address to filter on: MSRP's.
                      FramingCase{"Unknown", static_cast<MrpApplication>(3),
                                  Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x0e), 0x22ea}),
    [](const ::testing::TestParamInfo<FramingCase>& info) { return info.param.name; });

class EngineBuilderTest : public ::testing::Test {
 protected:
  Quarn::System::ClockScope clockScope_{new Quarn::SimClock};
};

TEST_F(EngineBuilderTest, ByDefaultTheEngineIsActiveOverRecordsOfItsOwn) {
  Quarn::Ptr<Mrp::MrpSm> first = EngineBuilder(MrpApplication::mvrp).build();
  Quarn::Ptr<Mrp::MrpSm> second = EngineBuilder(MrpApplication::mvrp).build();
  EXPECT_FALSE(first->standbyMode());
  EXPECT_TRUE(first->mrpCounters()) << "an active engine has its counters";
  EXPECT_NE(first->mrpStatus(), second->mrpStatus());
  EXPECT_NE(first->mrpLib(), second->mrpLib());
  EXPECT_EQ(first->entityManager()->name().string(), "mrp");
}

TEST_F(EngineBuilderTest, AStandbyEngineIsBuiltOnRequest) {
  Quarn::Ptr<Mrp::MrpSm> engine = EngineBuilder(MrpApplication::msrp).standbyMode(true).build();
  EXPECT_TRUE(engine->standbyMode());
  EXPECT_FALSE(engine->mrpCounters());
}

TEST_F(EngineBuilderTest, GivenRecordsAreSharedAndTheirServiceObjectIsNotUsed) {
  const Mrp::MrpSmRecords records = Mrp::mrpSmRecordsNew(Mrp::mrpLibFactory(), "agent");
  Quarn::Ptr<Mrp::MrpSm> msrp = EngineBuilder(MrpApplication::msrp).records(records).build();
  Quarn::Ptr<Mrp::MrpSm> mvrp = EngineBuilder(MrpApplication::mvrp).records(records).build();
  for (const Quarn::Ptr<Mrp::MrpSm>& engine : {msrp, mvrp}) {
    EXPECT_EQ(engine->mrpStatus(), records.mrpStatus);
    EXPECT_EQ(engine->mrpConfig(), records.mrpConfig);
    EXPECT_EQ(engine->entityManager(), records.entityManager);
    EXPECT_NE(engine->mrpLib(), records.mrpLib);
  }
  EXPECT_NE(msrp->mrpLib(), mvrp->mrpLib());
}

TEST(SimHostTest, ItsClockAndFactoryAreTheProcessesWhileItLives) {
  const Quarn::Ptr<Quarn::Clock> before = Quarn::System::clockPtr();
  {
    SimHost host;
    EXPECT_EQ(Quarn::System::clockPtr(), Quarn::Ptr<Quarn::Clock>(host.clockPtr()));
    EXPECT_EQ(Velo::pamFactory(), Quarn::Ptr<Velo::PamFactory>(host.pamFactoryPtr()));
  }
  EXPECT_EQ(Quarn::System::clockPtr(), before);
  EXPECT_EQ(Velo::pamFactory(), nullptr);
}

TEST(SimHostTest, AFrameSentOnAWiredPortReachesItsFarEnd) {
  SimHost host;
  Quarn::Ptr<Velo::MemPam> farEnd = host.wireNew(Velo::IntfId("e1"), Velo::EthAddr(2, 0, 0, 0, 0, 1),
                                                 Velo::IntfId("far1"), Velo::EthAddr(2, 0, 0, 0, 0, 2));
  Velo::PamConfig config;
  config.maxRxPktData = Velo::kDefaultMaxRxPktData;
  Quarn::Ptr<Velo::Pam> port = host.pamFactory().pamNew(Velo::IntfId("e1"), config);
  const std::uint8_t frame[60] = {};
  ASSERT_TRUE(port->txPkt(*Velo::Pkt::pktNew(frame, sizeof frame)));
  EXPECT_TRUE(farEnd->rxPkt());
  EXPECT_EQ(farEnd->intfId(), Velo::IntfId("far1"));
}

}  // namespace
}  // namespace MrpTest
