#include "support/EngineFixture.h"

#include "support/EngineBuilder.h"

namespace MrpTest {

EngineFixture::EngineFixture()
    : clock(new Quarn::SimClock), mrpLib(new RecordingMrpLib), records(Mrp::mrpSmRecordsNew(mrpLib)) {}

Quarn::Ptr<Mrp::MrpSm> EngineFixture::engineNew(Mrp::MrpApplication application, bool standbyMode) {
  return EngineBuilder(application).mrpLib(mrpLib).records(records).standbyMode(standbyMode).build();
}

}  // namespace MrpTest
