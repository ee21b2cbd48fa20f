#include "MrpSm/MrpDatabaseAddSm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "MrpSm/MrpDatabaseDeleteSm.h"
#include "MrpSm/MrpSm.h"
#include "quarn/NboAttrLog.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"
#include "support/UnixSocketPair.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpApplicantState;
using Mrp::MrpAttribute;
using Mrp::MrpDatabaseReviewSm;
using Mrp::MrpRegistrarState;
using Mrp::ValueIndex;
using Quarn::Ptr;
using Quarn::Seconds;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

MrpAttribute vlan(std::uint64_t id, const Velo::IntfId& intfId = kEth1) { return {intfId, 1, id}; }

// An MVRP engine whose attribute log writes to a Unix socket that the test
// can clog (its reader does not read) and drain.
class MrpDatabaseReviewTest : public EngineFixture {
 protected:
  MrpDatabaseReviewTest() {
    Quarn::NboAttrLog::outputIs(new Quarn::NboAttrLog::SocketOutSm(records.entityManager->name(), log.writer()));
    engine = engineNew(MrpApplication::mvrp, false);
  }
  ~MrpDatabaseReviewTest() override { Quarn::NboAttrLog::outputDelAll(); }

  void add(const MrpAttribute& a) {
    engine->parseContext()->attributeTypeIs(a.attributeType);
    mrpLib->mvrpVlanVectorTx().vlanIdIs(static_cast<std::uint16_t>(a.attributeKey));
    engine->mrpAddAttrToDatabase(a.intfId, a.attributeType, a.attributeKey, true);
  }
  void del(const MrpAttribute& a) { engine->addAttrToDeletePending(a); }
  bool stored(const MrpAttribute& a) const {
    auto type = engine->attributeStore().mrpIntfTypeApplicant(a.intfId, a.attributeType);
    return type && type->mrpAttribute(a.attributeKey);
  }
  std::size_t storedCount() const {
    std::size_t n = 0;
    if (auto db = records.mrpStatus->applicationDatabase(MrpApplication::mvrp)) {
      for (const auto& [intfId, intf] : db->attrDatabases()) {
        for (const auto& [type, typeApplicant] : intf->intfTypeApplicants()) n += typeApplicant->mrpAttributes().size();
      }
    }
    return n;
  }
  // When the machine's next review is due; infinity when none is.
  static Seconds nextReview(const MrpDatabaseReviewSm& sm) { return sm.reviewTimer()->notifiee()->time(); }
  Seconds nextAddReview() const { return nextReview(*engine->mrpDatabaseAddSm()); }
  Seconds nextDeleteReview() const { return nextReview(*engine->mrpDatabaseDeleteSm()); }
  // Runs time up to the machine's next review, which must be scheduled.
  void runReview(Seconds due) {
    ASSERT_NE(due, Quarn::kInfinity) << "no review scheduled";
    clock->advanceTo(due);
  }

  UnixSocketPair log{4096};
  Ptr<Mrp::MrpSm> engine;
};

TEST_F(MrpDatabaseReviewTest, BothMachinesReviewAtMostFourTimesBackToBackThenOncePerSecond) {
  for (const MrpDatabaseReviewSm* sm :
       {static_cast<MrpDatabaseReviewSm*>(engine->mrpDatabaseAddSm().ptr()),
        static_cast<MrpDatabaseReviewSm*>(engine->mrpDatabaseDeleteSm().ptr())}) {
    ASSERT_TRUE(sm->reviewTimer());
    EXPECT_EQ(sm->reviewTimer()->fillInterval(), 1.0);
    EXPECT_EQ(sm->reviewTimer()->maxCredits(), 4u);
    EXPECT_EQ(sm->reviewTimer()->minDelay(), 0.1);
    EXPECT_EQ(sm->reviewTimer()->maxDelay(), 0.1);
    EXPECT_EQ(sm->reviewTimer()->notifiee()->notifier(), clock.ptr()) << "on the engine's clock";
    EXPECT_EQ(sm->mrpAttrLogSm(), engine->mrpAttrLogSm().ptr());
    EXPECT_FALSE(sm->reviewTimer()->reviewPending()) << "nothing to review yet";
  }
}

TEST_F(MrpDatabaseReviewTest, AdditionIsCommittedByTheReviewATenthOfASecondLater) {
  add(vlan(100));
  engine->attributeStore().addPendingAttr(vlan(100))->applicantStateIs(MrpApplicantState::aa);
  engine->attributeStore().addPendingAttr(vlan(100))->registrarStateIs(MrpRegistrarState::in);
  clock->advance(0.0999);
  EXPECT_FALSE(stored(vlan(100)));
  clock->advance(0.0001);
  auto entry = engine->mrpGetAttrFromDatabase(kEth1, 1, 100, false);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->applicantState(), MrpApplicantState::aa) << "the pending entry's fields are copied";
  EXPECT_EQ(entry->registrarState(), MrpRegistrarState::in);
  EXPECT_EQ(entry->attributeValue(ValueIndex(1)), 100);
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
  EXPECT_TRUE(engine->attributeStore().mrpAttrIter({kEth1, 1})->attributeKey(100));
  EXPECT_EQ(nextAddReview(), Quarn::kInfinity) << "nothing left, no further review";
}

TEST_F(MrpDatabaseReviewTest, AdditionsRequestedTogetherAreCommittedByOneReview) {
  for (std::uint64_t id = 1; id <= 5; ++id) add(vlan(id, id % 2 ? kEth1 : kEth2));
  clock->advance(0.1);
  EXPECT_EQ(storedCount(), 5u);
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
}

TEST_F(MrpDatabaseReviewTest, BurstOfFiveAdditionsIsCommittedAtTheShortDelayWhileCreditsLast) {
  // Each addition arrives as the previous one is committed.
  std::vector<Seconds> committedAt;
  for (std::uint64_t id = 1; id <= 5; ++id) {
    add(vlan(id));
    runReview(nextAddReview());
    ASSERT_TRUE(stored(vlan(id))) << id;
    committedAt.push_back(clock->now());
  }
  const std::vector<Seconds> expected{0.1, 0.2, 0.3, 0.4, 1.0};
  ASSERT_EQ(committedAt.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(committedAt[i], expected[i], 1e-9) << i;
}

TEST_F(MrpDatabaseReviewTest, CloggedLogCommitsNothingUntilItDrainsAndLosesNothing) {
  log.fill();
  add(vlan(100));
  add(vlan(200, kEth2));
  clock->advance(0.1);
  EXPECT_EQ(storedCount(), 0u) << "a clogged log commits nothing";
  EXPECT_EQ(engine->attributeStore().addPendingAttrs().size(), 2u);
  EXPECT_NEAR(nextAddReview(), 0.2, 1e-9) << "the next review is asked for at once";
  clock->advance(10);
  EXPECT_EQ(storedCount(), 0u);
  EXPECT_NEAR(nextAddReview(), 11.0, 1e-6) << "still reviewing, once a second";

  log.drain();
  runReview(nextAddReview());
  EXPECT_TRUE(stored(vlan(100)));
  EXPECT_TRUE(stored(vlan(200, kEth2)));
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
}

TEST_F(MrpDatabaseReviewTest, CloggedLogDeletesNothingUntilItDrains) {
  add(vlan(100));
  clock->advance(0.1);
  log.fill();
  del(vlan(100));
  clock->advance(0.1);
  EXPECT_TRUE(stored(vlan(100)));
  EXPECT_TRUE(engine->attributeStore().deletePendingAttr(vlan(100)));
  EXPECT_FALSE(engine->mrpGetAttrFromDatabase(kEth1, 1, 100, true)) << "still reads as absent";
  EXPECT_NEAR(nextDeleteReview(), 0.3, 1e-9);
  log.drain();
  runReview(nextDeleteReview());
  EXPECT_FALSE(stored(vlan(100)));
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
}

TEST_F(MrpDatabaseReviewTest, DeleteReviewRemovesStoreEntryAndIndexAndTracesIt) {
  add(vlan(0x2a));
  add(vlan(0x2b));
  clock->advance(0.1);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  del(vlan(0x2a));
  clock->advance(0.1);
  Quarn::traceLevelsClear();
  EXPECT_FALSE(stored(vlan(0x2a)));
  EXPECT_TRUE(stored(vlan(0x2b)));
  EXPECT_FALSE(engine->attributeStore().mrpAttrIter({kEth1, 1})->attributeKey(0x2a));
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
  EXPECT_TRUE(traces.contains("intf:Ethernet1 type = 1 key = 0x2a DELETED "));
  EXPECT_TRUE(traces.contains("MrpDatabaseDeleteSm::doUpdateReviewTimer()"));
  EXPECT_TRUE(traces.contains("MrpDatabaseDeleteSm::doReview()"));
}

TEST_F(MrpDatabaseReviewTest, DeletingTheLastKeyOfAPortAndTypeRemovesItsIndex) {
  add(vlan(7));
  clock->advance(0.1);
  del(vlan(7));
  clock->advance(0.1);
  EXPECT_FALSE(engine->attributeStore().mrpAttrIter({kEth1, 1}));
}

TEST_F(MrpDatabaseReviewTest, AddReviewTracesItsSteps) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  add(vlan(1));
  clock->advance(0.1);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("MrpDatabaseAddSm::doUpdateReviewTimer()"));
  EXPECT_TRUE(traces.contains("MrpDatabaseAddSm::doReview()"));
}

TEST_F(MrpDatabaseReviewTest, ManyChangesThroughAnIntermittentlyCloggedLogAreAllCommitted) {
  for (std::uint64_t id = 1; id <= 50; ++id) add(vlan(id, id % 3 ? kEth1 : kEth2));
  for (int round = 0; round < 6; ++round) {
    if (round % 2 == 0) {
      log.fill();
    } else {
      log.drain();
    }
    clock->advance(1.0);
  }
  log.drain();
  clock->advance(2.0);
  EXPECT_EQ(storedCount(), 50u);
  for (std::uint64_t id = 1; id <= 50; id += 2) del(vlan(id, id % 3 ? kEth1 : kEth2));
  log.fill();
  clock->advance(3.0);
  EXPECT_EQ(storedCount(), 50u);
  log.drain();
  clock->advance(2.0);
  EXPECT_EQ(storedCount(), 25u);
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
}

TEST_F(MrpDatabaseReviewTest, ReviewDueAfterTheEngineIsGoneDoesNotFire) {
  add(vlan(1));
  del(vlan(1));
  add(vlan(2));
  engine = nullptr;
  EXPECT_EQ(clock->scheduledCount(), 0u);
  clock->advance(1.0);
}

}  // namespace
}  // namespace MrpTest
