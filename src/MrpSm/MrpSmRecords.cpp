#include "MrpSm/MrpSmRecords.h"

namespace Mrp {

MrpSmRecords mrpSmRecordsNew(Quarn::Ptr<MrpLib> mrpLib, Quarn::Name entityManagerName) {
  return {.brConfig = new Bridging::Config,
          .mrpLib = std::move(mrpLib),
          .mrpConfig = new MrpConfig,
          .mrpStatus = new MrpStatus,
          .stpStatus = new Stp::Status,
          .brTopoConfig = new Bridging::Topology::Config,
          .ethPhyIntfStatusDir = new Interface::AllEthPhyIntfStatusDir,
          .entityManager = new Hive::EntityManager(std::move(entityManagerName))};
}

}  // namespace Mrp
