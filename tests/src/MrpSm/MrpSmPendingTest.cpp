#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpApplicantState;
using Mrp::MrpAttrDatabase;
using Mrp::MrpAttribute;
using Mrp::MrpRegistrarState;
using Mrp::ValueIndex;
using Quarn::Ptr;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");
const MrpAttribute kVlan100{kEth1, 1, 100};

// An MVRP engine: the attribute's value is its VLAN, so keys and values
// are easy to tell apart in the store.
class MrpSmPendingTest : public EngineFixture {
 protected:
  MrpSmPendingTest() : engine(engineNew(MrpApplication::mvrp, false)) {}

  // Declares the VLAN `a` is keyed by, from the transmit field.
  Ptr<MrpAttrDatabase> add(const MrpAttribute& a) {
    engine->parseContext()->attributeTypeIs(a.attributeType);
    mrpLib->mvrpVlanVectorTx().vlanIdIs(static_cast<std::uint16_t>(a.attributeKey));
    return engine->mrpAddAttrToDatabase(a.intfId, a.attributeType, a.attributeKey, true);
  }
  Ptr<MrpAttrDatabase> stored(const MrpAttribute& a) const {
    auto type = engine->attributeStore().mrpIntfTypeApplicant(a.intfId, a.attributeType);
    return type ? type->mrpAttribute(a.attributeKey) : nullptr;
  }
  bool indexed(const MrpAttribute& a) const {
    auto iter = engine->attributeStore().mrpAttrIter({a.intfId, a.attributeType});
    return iter && iter->attributeKey(a.attributeKey);
  }
  bool addReviewPending() const { return engine->mrpDatabaseAddSm()->reviewTimer()->reviewPending(); }
  bool deleteReviewPending() const { return engine->mrpDatabaseDeleteSm()->reviewTimer()->reviewPending(); }
  // Past the next review of both machines.
  void review() { clock->advance(0.1); }

  Ptr<Mrp::MrpSm> engine;
};

TEST_F(MrpSmPendingTest, NewAttributeIsPendingIndexedAndReviewed) {
  auto entry = add(kVlan100);
  EXPECT_EQ(entry->attributeKey(), 100u);
  EXPECT_EQ(engine->attributeStore().addPendingAttr(kVlan100), entry);
  EXPECT_TRUE(indexed(kVlan100));
  EXPECT_FALSE(stored(kVlan100));
  EXPECT_TRUE(addReviewPending());
  EXPECT_FALSE(deleteReviewPending());
}

TEST_F(MrpSmPendingTest, AddingAStoredAttributeReturnsTheStoredEntryAndQueuesNothing) {
  add(kVlan100);
  review();
  auto entry = stored(kVlan100);
  ASSERT_TRUE(entry);
  EXPECT_EQ(engine->addAttrToAddPending(kVlan100), entry);
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
  EXPECT_FALSE(addReviewPending());
}

TEST_F(MrpSmPendingTest, AddingAPendingAttributeAgainReplacesItsEntry) {
  auto first = engine->addAttrToAddPending(kVlan100);
  auto second = engine->addAttrToAddPending(kVlan100);
  EXPECT_NE(first, second);
  EXPECT_EQ(engine->attributeStore().addPendingAttr(kVlan100), second);
  EXPECT_EQ(engine->attributeStore().addPendingAttrs().size(), 1u);
}

// Look-ups of pending additions start beside the last one found; whatever
// the order of look-ups, insertions and removals, each finds its own entry.
TEST_F(MrpSmPendingTest, PendingAdditionsAreFoundInAnyOrderOfLookUpsInsertionsAndRemovals) {
  std::map<MrpAttribute, Ptr<MrpAttrDatabase>> expected;
  const auto attribute = [](int port, std::uint64_t key) { return MrpAttribute{port ? kEth2 : kEth1, 1, key}; };
  for (std::uint64_t key : {10, 11, 12, 20, 5, 13, 1}) {
    for (int port : {1, 0}) expected[attribute(port, key)] = engine->addAttrToAddPending(attribute(port, key));
  }
  engine->removeAttrFromAddPending(attribute(0, 12));
  expected.erase(attribute(0, 12));
  engine->removeAttrFromAddPending(attribute(1, 1));
  expected.erase(attribute(1, 1));
  expected[attribute(0, 14)] = engine->addAttrToAddPending(attribute(0, 14));
  for (std::uint64_t key : {21, 20, 14, 13, 12, 11, 10, 9, 5, 1, 0, 2, 12, 30}) {
    for (int port : {0, 1, 0}) {
      const auto it = expected.find(attribute(port, key));
      EXPECT_EQ(engine->attributeStore().addPendingAttr(attribute(port, key)), it == expected.end() ? nullptr : it->second)
          << "port " << port << " key " << key;
    }
  }
  EXPECT_EQ(engine->attributeStore().addPendingAttrs().size(), expected.size());
}

TEST_F(MrpSmPendingTest, AddThenDeleteBeforeTheReviewLeavesNoTrace) {
  add(kVlan100);
  engine->addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty());
  EXPECT_FALSE(deleteReviewPending());
  clock->advance(5);
  EXPECT_FALSE(records.mrpStatus->applicationDatabase(MrpApplication::mvrp)) << "nothing was ever stored";
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty());
}

TEST_F(MrpSmPendingTest, DeleteThenReAddOfAStoredAttributeCancelsTheDeletionWithAFreshEntry) {
  add(kVlan100);
  review();
  auto old = stored(kVlan100);
  old->applicantStateIs(MrpApplicantState::qa);
  old->registrarStateIs(MrpRegistrarState::in);
  old->attributeValueIs(ValueIndex(5), 0xee);

  engine->addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(engine->attributeStore().deletePendingAttr(kVlan100));
  auto fresh = add(kVlan100);
  EXPECT_NE(fresh, old);
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty()) << "deletion cancelled";
  EXPECT_EQ(engine->attributeStore().addPendingAttr(kVlan100), fresh);
  EXPECT_EQ(fresh->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(fresh->registrarState(), MrpRegistrarState::mt);

  clock->advance(5);
  auto now = stored(kVlan100);
  ASSERT_TRUE(now) << "not deleted";
  EXPECT_EQ(now->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(now->registrarState(), MrpRegistrarState::mt);
  EXPECT_EQ(now->attributeValue(ValueIndex(0)), 0);
  EXPECT_EQ(now->attributeValue(ValueIndex(1)), 100);
  EXPECT_EQ(now->attributeValue(ValueIndex(5)), 0) << "every octet replaced";
  EXPECT_TRUE(indexed(kVlan100));
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
}

TEST_F(MrpSmPendingTest, DeletingWhatIsNeitherStoredNorPendingDoesNothing) {
  engine->addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
  EXPECT_FALSE(deleteReviewPending());
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty());
}

TEST_F(MrpSmPendingTest, DeletingAStoredAttributeQueuesItForTheDeleteReview) {
  add(kVlan100);
  review();
  engine->addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(engine->attributeStore().deletePendingAttr(kVlan100));
  EXPECT_TRUE(deleteReviewPending());
  EXPECT_TRUE(stored(kVlan100)) << "until the review";
  EXPECT_TRUE(indexed(kVlan100));
}

TEST_F(MrpSmPendingTest, DroppingAPendingAdditionOfAStoredAttributeKeepsItsIndexEntry) {
  add(kVlan100);
  review();
  engine->addAttrToDeletePending(kVlan100);
  add(kVlan100);  // stored and pending again
  engine->removeAttrFromAddPending(kVlan100);
  EXPECT_FALSE(engine->attributeStore().addPendingAttr(kVlan100));
  EXPECT_TRUE(indexed(kVlan100));
}

TEST_F(MrpSmPendingTest, DroppingANeverCommittedAdditionRemovesItsIndexEntry) {
  add(kVlan100);
  add({kEth1, 1, 101});
  engine->removeAttrFromAddPending(kVlan100);
  EXPECT_FALSE(engine->attributeStore().addPendingAttr(kVlan100));
  EXPECT_FALSE(indexed(kVlan100));
  EXPECT_TRUE(indexed({kEth1, 1, 101}));
}

TEST_F(MrpSmPendingTest, OnlyADeletionMarkedTrueMakesAnAttributeReadAsAbsent) {
  add(kVlan100);
  review();
  engine->attributeStore().deletePendingAttrIs(kVlan100, false);
  EXPECT_FALSE(engine->attributeStore().deletePendingAttr(kVlan100));
  EXPECT_TRUE(engine->mrpGetAttrFromDatabase(kEth1, 1, 100, false));
  engine->attributeStore().deletePendingAttrIs(kVlan100, true);
  EXPECT_FALSE(engine->mrpGetAttrFromDatabase(kEth1, 1, 100, false));
  engine->attributeStore().deletePendingAttrDel(kVlan100);
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
  engine->attributeStore().deletePendingAttrIs(kVlan100, true);
  engine->attributeStore().deletePendingAttrDelAll();
  EXPECT_TRUE(engine->attributeStore().deletePendingAttrs().empty());
}

TEST_F(MrpSmPendingTest, PlainAddPendingMutators) {
  Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(100);
  engine->attributeStore().addPendingAttrIs(kVlan100, entry);
  EXPECT_EQ(engine->attributeStore().addPendingAttr(kVlan100), entry);
  EXPECT_FALSE(engine->attributeStore().addPendingAttr({kEth1, 1, 101}));
  engine->attributeStore().addPendingAttrDel(kVlan100);
  EXPECT_FALSE(engine->attributeStore().addPendingAttr(kVlan100));
  engine->attributeStore().addPendingAttrIs(kVlan100, entry);
  engine->attributeStore().addPendingAttrIs({kEth2, 1, 1}, entry);
  engine->attributeStore().addPendingAttrDelAll();
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
}

TEST_F(MrpSmPendingTest, PendingMapsGoPortByPortInAscendingTypeAndKey) {
  const std::vector<MrpAttribute> ascending{{kEth1, 1, 5}, {kEth1, 1, 300}, {kEth1, 2, 1}, {kEth2, 1, 2}};
  for (auto it = ascending.rbegin(); it != ascending.rend(); ++it) engine->addAttrToAddPending(*it);
  std::vector<MrpAttribute> order;
  for (const auto& [attribute, entry] : engine->attributeStore().addPendingAttrs()) order.push_back(attribute);
  EXPECT_EQ(order, ascending);
}

}  // namespace
}  // namespace MrpTest
