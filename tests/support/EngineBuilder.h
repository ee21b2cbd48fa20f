#pragma once

#include <utility>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmRecords.h"

namespace MrpTest {

// Builds engines, the one way tests, benchmarks and fuzz targets do: over
// records of the builder's own unless it is given an agent's to share,
// reporting to the library's service object unless given one, active unless
// asked otherwise. The service object takes the application and its framing.
// Header-only: the benchmarks and fuzz targets build it too.
class EngineBuilder {
 public:
  explicit EngineBuilder(Mrp::MrpApplication application)
      : application_(application), records_(Mrp::mrpSmRecordsNew(nullptr)) {}

  EngineBuilder& mrpLib(Quarn::Ptr<Mrp::MrpLib> mrpLib) {
    mrpLib_ = std::move(mrpLib);
    return *this;
  }
  // The engine shares these records; their service object is not used.
  EngineBuilder& records(Mrp::MrpSmRecords records) {
    records_ = std::move(records);
    return *this;
  }
  EngineBuilder& standbyMode(bool standbyMode) {
    standbyMode_ = standbyMode;
    return *this;
  }

  Quarn::Ptr<Mrp::MrpSm> build() const {
    Quarn::Ptr<Mrp::MrpLib> lib = mrpLib_ ? mrpLib_ : Mrp::mrpLibFactory();
    frame(*lib);
    return Mrp::mrpSmFactory(records_.withMrpLib(lib), standbyMode_);
  }

 private:
  // An application code without framing of its own is framed as MSRP, so
  // that its sockets still have an address to filter on.
  void frame(Mrp::MrpLib& lib) const {
    Mrp::MrpApplicationFraming framing = Mrp::mrpDefaultApplicationFraming(application_);
    if (framing.etype == 0) framing = Mrp::mrpDefaultApplicationFraming(Mrp::MrpApplication::msrp);
    lib.applicationIs(application_);
    lib.applicationMacAddrIs(framing.macAddr);
    lib.applicationEtypeIs(framing.etype);
  }

  Mrp::MrpApplication application_;
  Quarn::Ptr<Mrp::MrpLib> mrpLib_;
  Mrp::MrpSmRecords records_;
  bool standbyMode_ = false;
};

}  // namespace MrpTest
