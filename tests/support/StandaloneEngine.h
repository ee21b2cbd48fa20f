#pragma once

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"

namespace MrpTest {

// An active engine for `application` over fresh records with the
// application's default framing, for programs that run without the test
// framework (benchmarks, fuzz targets). `mrpLib` is the service object to
// hand it, an agent's own or the library's.
inline Quarn::Ptr<Mrp::MrpSm> standaloneEngineNew(Mrp::MrpApplication application,
                                                  Quarn::Ptr<Mrp::MrpLib> mrpLib = Mrp::mrpLibFactory()) {
  mrpLib->applicationWithDefaultFramingIs(application);
  return Mrp::mrpSmFactory(new Bridging::Config, mrpLib, new Mrp::MrpConfig, new Mrp::MrpStatus, new Stp::Status,
                           new Bridging::Topology::Config, new Interface::AllEthPhyIntfStatusDir,
                           new Hive::EntityManager("mrp"), false);
}

}  // namespace MrpTest
