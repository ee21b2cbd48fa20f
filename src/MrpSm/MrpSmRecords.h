#pragma once

#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpStatus.h"
#include "MrpSm/MrpLib.h"
#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "hive/EntityManager.h"
#include "interface/AllEthPhyIntfStatusDir.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "stp/Status.h"

namespace Mrp {

// What an engine is built from: the agent's records, which the engine
// shares with it, and the service object it reports to. An agent with
// engines for several applications gives them the same records, each with
// a service object of its own.
struct MrpSmRecords {
  Quarn::Ptr<Bridging::Config> brConfig;
  Quarn::Ptr<MrpLib> mrpLib;
  Quarn::Ptr<MrpConfig> mrpConfig;
  Quarn::Ptr<MrpStatus> mrpStatus;
  Quarn::Ptr<Stp::Status> stpStatus;
  Quarn::Ptr<Bridging::Topology::Config> brTopoConfig;
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir;
  Quarn::Ptr<Hive::EntityManager> entityManager;

  // The same records around another service object.
  MrpSmRecords withMrpLib(Quarn::Ptr<MrpLib> otherMrpLib) const {
    MrpSmRecords records = *this;
    records.mrpLib = std::move(otherMrpLib);
    return records;
  }
};

// The records of an agent that starts with nothing configured: every record
// new and empty, the entity manager named `entityManagerName`, around
// `mrpLib` (which may be given later, with withMrpLib).
MrpSmRecords mrpSmRecordsNew(Quarn::Ptr<MrpLib> mrpLib, Quarn::Name entityManagerName = "mrp");

}  // namespace Mrp
