#include "support/EngineFixture.h"

#include "velo/EthAddr.h"

namespace MrpTest {

EngineFixture::EngineFixture()
    : clock(new Quarn::SimClock),
      mrpLib(new RecordingMrpLib),
      brConfig(new Bridging::Config),
      mrpConfig(new Mrp::MrpConfig),
      mrpStatus(new Mrp::MrpStatus),
      stpStatus(new Stp::Status),
      brTopoConfig(new Bridging::Topology::Config),
      ethPhyIntfStatusDir(new Interface::AllEthPhyIntfStatusDir),
      entityManager(new Hive::EntityManager("mrp")) {
  Quarn::System::clockIs(clock);
}

EngineFixture::~EngineFixture() { Quarn::System::clockIs(nullptr); }

Quarn::Ptr<Mrp::MrpSm> EngineFixture::engineNew(Mrp::MrpApplication application, bool standbyMode) {
  mrpLib->applicationIs(application);
  if (application == Mrp::MrpApplication::mvrp) {
    mrpLib->applicationMacAddrIs(Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21));
    mrpLib->applicationEtypeIs(0x88f5);
  } else {
    mrpLib->applicationMacAddrIs(Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e));
    mrpLib->applicationEtypeIs(0x22ea);
  }
  return Mrp::mrpSmFactory(brConfig, mrpLib, mrpConfig, mrpStatus, stpStatus, brTopoConfig, ethPhyIntfStatusDir,
                           entityManager, standbyMode);
}

}  // namespace MrpTest
