#include "MrpSm/MrpSmRecords.h"

#include <gtest/gtest.h>

#include <vector>

#include "MrpSm/MrpSm.h"
#include "quarn/ClockScope.h"

namespace MrpTest {
namespace {

using Mrp::MrpSmRecords;

// Each record of a bundle, as a pointer to compare.
std::vector<const void*> recordsOf(const MrpSmRecords& r) {
  return {r.brConfig.ptr(),  r.mrpLib.ptr(),       r.mrpConfig.ptr(),           r.mrpStatus.ptr(),
          r.stpStatus.ptr(), r.brTopoConfig.ptr(), r.ethPhyIntfStatusDir.ptr(), r.entityManager.ptr()};
}

TEST(MrpSmRecordsTest, NewRecordsAreEveryRecordAroundTheServiceObject) {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  const MrpSmRecords records = Mrp::mrpSmRecordsNew(lib, "agent");
  for (const void* record : recordsOf(records)) EXPECT_NE(record, nullptr);
  EXPECT_EQ(records.mrpLib, lib);
  EXPECT_EQ(records.entityManager->name().string(), "agent");
  EXPECT_EQ(Mrp::mrpSmRecordsNew(lib).entityManager->name().string(), "mrp");
}

TEST(MrpSmRecordsTest, NewRecordsShareNothingWithEarlierOnes) {
  const MrpSmRecords first = Mrp::mrpSmRecordsNew(nullptr);
  const MrpSmRecords second = Mrp::mrpSmRecordsNew(nullptr);
  const std::vector<const void*> a = recordsOf(first);
  const std::vector<const void*> b = recordsOf(second);
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (i == 1) continue;  // no service object in either
    EXPECT_NE(a[i], b[i]) << "record " << i;
  }
}

TEST(MrpSmRecordsTest, WithAnotherServiceObjectOnlyTheServiceObjectChanges) {
  const MrpSmRecords records = Mrp::mrpSmRecordsNew(Mrp::mrpLibFactory());
  Quarn::Ptr<Mrp::MrpLib> other = Mrp::mrpLibFactory();
  MrpSmRecords expected = records;
  expected.mrpLib = other;
  EXPECT_EQ(recordsOf(records.withMrpLib(other)), recordsOf(expected));
  EXPECT_NE(recordsOf(records.withMrpLib(other)), recordsOf(records));
}

TEST(MrpSmRecordsTest, TheFactoryBuildsTheEngineOverTheRecords) {
  Quarn::System::ClockScope clock(new Quarn::SimClock);
  const MrpSmRecords records = Mrp::mrpSmRecordsNew(Mrp::mrpLibFactory());
  records.mrpLib->applicationWithDefaultFramingIs(Mrp::MrpApplication::mvrp);
  for (const bool standbyMode : {false, true}) {
    Quarn::Ptr<Mrp::MrpSm> engine = Mrp::mrpSmFactory(records, standbyMode);
    const MrpSmRecords used{engine->brConfig(),     engine->mrpLib(),       engine->mrpConfig(),
                            engine->mrpStatus(),    engine->stpStatus(),    engine->brTopoConfig(),
                            engine->ethPhyIntfStatusDir(), engine->entityManager()};
    EXPECT_EQ(recordsOf(used), recordsOf(records));
    EXPECT_EQ(engine->standbyMode(), standbyMode);
    EXPECT_TRUE(engine->initialized());
  }
}

}  // namespace
}  // namespace MrpTest
