#include <gtest/gtest.h>

#include <vector>

#include "MrpSm/MrpSm.h"
#include "kni/Status.h"
#include "quarn/Trace.h"
#include "support/EngineBuilder.h"
#include "support/PamEngineFixture.h"
#include "velo/PamFactory.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpSm;
using Mrp::MrpPamWiring;
using Velo::PamFilterInstruction;
namespace Op = Velo::PamFilterOp;

class MrpSmPamTest : public PamEngineFixture {};

// The classic socket filter, instruction by instruction, for the MVRP
// address 01:80:c2:00:00:21 and EtherType 0x88f5.
const std::vector<PamFilterInstruction> kMvrpFilter = {
    {Op::kLoadWordAbs, 0, 0, 2},         // 0: load word at 2
    {Op::kJumpIfEqual, 0, 8, 0xc2000021},  // 1: dmacLower → 2 : 10
    {Op::kLoadHalfAbs, 0, 0, 0},         // 2: load half-word at 0
    {Op::kJumpIfEqual, 0, 6, 0x0180},    // 3: dmacUpper → 4 : 10
    {Op::kLoadHalfAbs, 0, 0, 12},        // 4: EtherType
    {Op::kJumpIfEqual, 3, 0, 0x88f5},    // 5: applicationEtype → 9 : 6
    {Op::kJumpIfEqual, 0, 3, 0x8100},    // 6: VLAN tag → 7 : 10
    {Op::kLoadHalfAbs, 0, 0, 16},        // 7: EtherType behind the tag
    {Op::kJumpIfEqual, 0, 1, 0x88f5},    // 8: applicationEtype → 9 : 10
    {Op::kReturn, 0, 0, 0xffff},         // 9: accept 0xffff bytes
    {Op::kReturn, 0, 0, 0},              // 10: drop
};

TEST_F(MrpSmPamTest, TheFilterIsTheElevenInstructionProgram) {
  EXPECT_EQ(MrpPamWiring::pamFilterProgramOf(Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21), 0x88f5), kMvrpFilter);
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_EQ(MrpPamWiring::pamFilterProgram(), kMvrpFilter);
  EXPECT_EQ(engine->mrpPamSm()->wiring()->pamMan()->filterProgram(), kMvrpFilter);
}

TEST_F(MrpSmPamTest, TheFilterIsBuiltOnceAndReusedUnchangedByLaterEngines) {
  auto msrp = engineNew(MrpApplication::msrp, false);
  const auto msrpFilter = MrpPamWiring::pamFilterProgramOf(mrpLib->applicationMacAddr(), mrpLib->applicationEtype());
  Quarn::Ptr<RecordingMrpLib> mvrpLib = new RecordingMrpLib;
  Mrp::MrpSmRecords mvrpRecords = records;
  mvrpRecords.mrpStatus = new Mrp::MrpStatus;
  auto mvrp = EngineBuilder(MrpApplication::mvrp).mrpLib(mvrpLib).records(mvrpRecords).build();
  EXPECT_EQ(mvrp->mrpPamSm()->wiring()->pamMan()->filterProgram(), msrpFilter);
  EXPECT_NE(mvrp->mrpPamSm()->wiring()->pamMan()->filterProgram(), kMvrpFilter);
  EXPECT_EQ(mvrp->mrpPamSm()->wiring()->pamMan()->listenAddr(), mvrpLib->applicationMacAddr()) << "only the filter is shared";
}

TEST_F(MrpSmPamTest, SetUpTracesAddressAndEtherTypeInHex) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  auto engine = engineNew(MrpApplication::mvrp, false);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("MrpSm::PamManEnable dmacUpper 180 dmacLower c2000021 ethType 88f5"));
}

TEST_F(MrpSmPamTest, ThePacketAccessManagerIsConfiguredAndEnabled) {
  auto engine = engineNew(MrpApplication::msrp, true);
  const auto& man = *engine->mrpPamSm()->wiring()->pamMan();
  EXPECT_EQ(man.ethProtocol(), 3);
  EXPECT_EQ(man.listenAddr(), Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e));
  EXPECT_EQ(man.maxRxPktData(), 10000u);
  EXPECT_TRUE(man.perIntfSocket());
  EXPECT_TRUE(man.enabled());
  EXPECT_EQ(man.desiredIntfDir(), engine->desiredIntfDir());
  EXPECT_EQ(man.pamCollection(), engine->pamCollection());
  EXPECT_EQ(man.deviceIntfStatusDir(), engine->deviceIntfStatusDir());
  EXPECT_EQ(man.pamFactory(), Quarn::Ptr<Velo::PamFactory>(pamFactory));
  EXPECT_EQ(Velo::pamMaxRxPktData(), 10000u) << "the process-wide limit too";
}

TEST_F(MrpSmPamTest, SocketsReceiveUpToTenThousandBytes) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  EXPECT_EQ(enginePam("Ethernet1")->rxLimit(), 10000u);
}

TEST_F(MrpSmPamTest, LocalDirectoriesHaveTheSameFixedNamesForEitherApplication) {
  for (MrpApplication application : {MrpApplication::msrp, MrpApplication::mvrp}) {
    auto engine = engineNew(application, false);
    EXPECT_EQ(engine->deviceIntfStatusDir()->name(), Quarn::Name("deviceIntfStatusDirMsrp"));
    EXPECT_EQ(engine->desiredIntfDir()->name(), Quarn::Name("desiredIntfDirMsrp"));
    EXPECT_EQ(engine->pamCollection()->name(), Quarn::Name("pamCollectionMsrp"));
    const auto& root = *engine->mrpPamSm()->wiring()->intfStatusManagerRoot();
    EXPECT_EQ(root.entity<Interface::DeviceIntfStatusDir>("deviceIntfStatusDirMsrp"), engine->deviceIntfStatusDir());
    EXPECT_EQ(root.entity<Interface::PamDesiredIntfDir>("desiredIntfDirMsrp"), engine->desiredIntfDir());
    EXPECT_EQ(root.entity<Interface::EthDevPamCollection>("pamCollectionMsrp"), engine->pamCollection());
  }
}

TEST_F(MrpSmPamTest, InterfaceStatusDirectoriesAreKeptWhenTheyHaveTheExpectedType) {
  Quarn::Ptr<Interface::AllIntfStatusDir> all = new Interface::AllIntfStatusDir;
  Quarn::Ptr<Interface::AllIntfStatusDir> local = new Interface::AllIntfStatusDir;
  records.entityManager->entityIs("interface/status/all", all);
  records.entityManager->entityIs("interface/status/local", local);
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_EQ(engine->mrpPamSm()->wiring()->allIntfStatusDir(), all);
  EXPECT_EQ(engine->mrpPamSm()->wiring()->allIntfStatusLocalDir(), local);
}

TEST_F(MrpSmPamTest, InterfaceStatusDirectoriesOfAnotherTypeOrAbsentAreNotKept) {
  records.entityManager->entityIs("interface/status/all", new Interface::DeviceIntfStatusDir("other"));
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_EQ(engine->mrpPamSm()->wiring()->allIntfStatusDir(), nullptr);
  EXPECT_EQ(engine->mrpPamSm()->wiring()->allIntfStatusLocalDir(), nullptr);
}

TEST_F(MrpSmPamTest, TheDefaultNamespaceStatusIsMounted) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  auto status = records.entityManager->entity<KernelNetInfo::Status>("kni/ns/default/status");
  ASSERT_TRUE(status);
  EXPECT_EQ(status->nsName().string(), "default");
}

TEST_F(MrpSmPamTest, TheCoordinatorIsCreatedWithTheEnginesStandbyMode) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  EXPECT_EQ(engine->mrpPamSm()->pamCollection(), engine->pamCollection());
  EXPECT_TRUE(engine->mrpPamSm()->standbyMode());
}

TEST_F(MrpSmPamTest, TeardownReleasesPacketAccessAndDetachesFromIt) {
  Quarn::Ptr<Interface::EthDevPamCollection> collection;
  Quarn::Ptr<Interface::PamDesiredIntfDir> desired;
  Quarn::Ptr<Velo::MemPam> eth1;
  {
    auto engine = engineNew(MrpApplication::mvrp, false);
    eth1 = portUp(*engine, "Ethernet1");
    collection = engine->pamCollection();
    desired = engine->desiredIntfDir();
  }
  EXPECT_EQ(collection->references(), 1u) << "no one else holds the collection";
  EXPECT_EQ(desired->references(), 1u);
  // Changes after the engine has gone reach no one.
  collection->intfPamDel(Velo::IntfId("Ethernet1"));
  desired->intfDesiredIs(Velo::IntfId("Ethernet2"), true);
  inject(*eth1, Bytes(60, 0));
  EXPECT_EQ(enginePam("Ethernet1")->readableCount(), 1u) << "announced to no one";
  EXPECT_EQ(enginePam("Ethernet1")->rxPkts(), 0u);
}

}  // namespace
}  // namespace MrpTest
