#include "MrpSm/MrpAttributeStore.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "MrpSm/MrpDatabaseReviewSm.h"
#include "quarn/Clock.h"

namespace Mrp {
namespace {

using Quarn::Ptr;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");
const MrpAttribute kVlan100{kEth1, 1, 100};

// A review machine that only shows whether it was asked for a review.
class ReviewProbe : public MrpDatabaseReviewSm {
 public:
  ReviewProbe(std::function<bool()> pendingEmpty, Ptr<Quarn::Clock> clock)
      : MrpDatabaseReviewSm("ReviewProbe", nullptr, nullptr, std::move(clock)),
        pendingEmpty_(std::move(pendingEmpty)) {}
  void doReview() override {}
  bool asked() const { return reviewTimer()->reviewPending(); }

 protected:
  bool pendingEmpty() const override { return pendingEmpty_(); }

 private:
  std::function<bool()> pendingEmpty_;
};

// Added and committed, as the add review commits a pending addition.
Ptr<MrpAttrDatabase> committed(MrpAttributeStore& store, const MrpAttribute& a) {
  store.addAttrToAddPending(a);
  const Ptr<MrpAttrDatabase> entry = store.createEntryInDatabase(a.intfId, a.attributeType, a.attributeKey);
  store.addPendingAttrDel(a);
  return entry;
}

// An MVRP store over its own status record, with no engine around it.
class MrpAttributeStoreTest : public ::testing::Test {
 protected:
  MrpAttributeStoreTest() : status(new MrpStatus), store(status, MrpApplication::mvrp) {}

  Ptr<MrpAttrDatabase> find(const MrpAttribute& a, bool useLocalCopy) const {
    return store.mrpGetAttrFromDatabase(a.intfId, a.attributeType, a.attributeKey, useLocalCopy);
  }
  // What the status record holds, pending deletions or not.
  Ptr<MrpAttrDatabase> stored(const MrpAttribute& a) const {
    const Ptr<MrpIntfTypeApplicant> type = store.mrpIntfTypeApplicant(a.intfId, a.attributeType);
    return type ? type->mrpAttribute(a.attributeKey) : nullptr;
  }
  bool indexed(const MrpAttribute& a) const {
    const Ptr<MrpAttrIter> iter = store.mrpAttrIter({a.intfId, a.attributeType});
    return iter && iter->attributeKey(a.attributeKey);
  }
  Ptr<MrpAttrDatabase> committed(const MrpAttribute& a) { return Mrp::committed(store, a); }
  // As the delete review commits a pending deletion.
  void deletionCommitted(const MrpAttribute& a) {
    store.mrpIntfTypeApplicant(a.intfId, a.attributeType)->mrpAttributeDel(a.attributeKey);
    store.removeFromAttrIter(a.intfId, a.attributeType, a.attributeKey);
    store.deletePendingAttrDel(a);
  }
  std::vector<std::uint64_t> keysIndexed(const Velo::IntfId& intfId, std::uint8_t attributeType) const {
    const Ptr<MrpAttrIter> iter = store.mrpAttrIter({intfId, attributeType});
    if (!iter) return {};
    return {iter->attributeKeys().begin(), iter->attributeKeys().end()};
  }

  Ptr<MrpStatus> status;
  MrpAttributeStore store;
};

TEST(MrpAttributeStoreLookUpTest, FindsAPendingAdditionOnlyWithTheLocalCopyAndNothingPendingDeletion) {
  enum class Expect { none, pending, stored };
  struct Row {
    std::string state;
    std::function<void(MrpAttributeStore&)> make;
    Expect withoutLocalCopy;
    Expect withLocalCopy;
  };
  const std::vector<Row> rows{
      {"absent", [](MrpAttributeStore&) {}, Expect::none, Expect::none},
      {"pending addition", [](MrpAttributeStore& s) { s.addAttrToAddPending(kVlan100); }, Expect::none,
       Expect::pending},
      {"stored", [](MrpAttributeStore& s) { committed(s, kVlan100); }, Expect::stored, Expect::stored},
      {"stored, pending deletion",
       [](MrpAttributeStore& s) {
         committed(s, kVlan100);
         s.addAttrToDeletePending(kVlan100);
       },
       Expect::none, Expect::none},
      {"stored, deleted and added again",
       [](MrpAttributeStore& s) {
         committed(s, kVlan100);
         s.addAttrToDeletePending(kVlan100);
         s.addAttrToAddPending(kVlan100);
       },
       Expect::stored, Expect::pending},
  };
  for (const Row& row : rows) {
    const Ptr<MrpStatus> status = new MrpStatus;
    MrpAttributeStore store(status, MrpApplication::mvrp);
    row.make(store);
    const Ptr<MrpAttrDatabase> pending = store.addPendingAttr(kVlan100);
    const Ptr<MrpIntfTypeApplicant> type = store.mrpIntfTypeApplicant(kEth1, 1);
    const Ptr<MrpAttrDatabase> stored = type ? type->mrpAttribute(100) : nullptr;
    const auto expected = [&](Expect e) {
      return e == Expect::pending ? pending : e == Expect::stored ? stored : nullptr;
    };
    ASSERT_TRUE(row.withLocalCopy == Expect::none || expected(row.withLocalCopy)) << row.state;
    const auto find = [&](bool useLocalCopy) { return store.mrpGetAttrFromDatabase(kEth1, 1, 100, useLocalCopy); };
    EXPECT_EQ(find(false), expected(row.withoutLocalCopy)) << row.state;
    EXPECT_EQ(find(true), expected(row.withLocalCopy)) << row.state;
  }
}

TEST_F(MrpAttributeStoreTest, LookUpIsConfinedToTheStoresApplication) {
  status->applicationDatabaseIs(MrpApplication::msrp)
      ->attrDatabaseIs(kEth1)
      ->intfTypeApplicantIs(1)
      ->mrpAttributeIs(100);
  EXPECT_FALSE(find(kVlan100, true));
  EXPECT_FALSE(store.mrpIntfTypeApplicant(kEth1, 1));
  EXPECT_FALSE(status->applicationDatabase(MrpApplication::mvrp)) << "a look-up creates nothing";
}

TEST_F(MrpAttributeStoreTest, CreateEntryMakesMissingLevelsAndReturnsAnExistingEntryUntouched) {
  const Ptr<MrpAttrDatabase> entry = store.createEntryInDatabase(kEth1, 1, 100);
  ASSERT_TRUE(entry);
  EXPECT_EQ(stored(kVlan100), entry);
  entry->registrarStateIs(MrpRegistrarState::in);
  EXPECT_EQ(store.createEntryInDatabase(kEth1, 1, 100), entry);
  EXPECT_EQ(entry->registrarState(), MrpRegistrarState::in);
  EXPECT_FALSE(indexed(kVlan100)) << "the caller indexes what it commits";
}

TEST_F(MrpAttributeStoreTest, PendingAdditionOfAnUncommittedAttributeReplacesTheEarlierOne) {
  const Ptr<MrpAttrDatabase> first = store.addAttrToAddPending(kVlan100);
  const Ptr<MrpAttrDatabase> second = store.addAttrToAddPending(kVlan100);
  EXPECT_NE(first, second);
  EXPECT_EQ(second->attributeKey(), 100u);
  EXPECT_EQ(store.addPendingAttr(kVlan100), second);
  EXPECT_EQ(store.addPendingAttrs().size(), 1u);
}

TEST_F(MrpAttributeStoreTest, PendingAdditionOfAStoredAttributeIsTheStoredEntry) {
  const Ptr<MrpAttrDatabase> entry = committed(kVlan100);
  EXPECT_EQ(store.addAttrToAddPending(kVlan100), entry);
  EXPECT_TRUE(store.addPendingAttrs().empty());
}

TEST_F(MrpAttributeStoreTest, PendingAdditionCancelsAPendingDeletionWithAFreshEntry) {
  const Ptr<MrpAttrDatabase> old = committed(kVlan100);
  store.addAttrToDeletePending(kVlan100);
  ASSERT_TRUE(store.deletePendingAttr(kVlan100));
  const Ptr<MrpAttrDatabase> fresh = store.addAttrToAddPending(kVlan100);
  EXPECT_NE(fresh, old);
  EXPECT_TRUE(store.deletePendingAttrs().empty());
  EXPECT_EQ(store.addPendingAttr(kVlan100), fresh);
  EXPECT_EQ(stored(kVlan100), old) << "replaced only when the addition is committed";
}

TEST_F(MrpAttributeStoreTest, DeletionOfANeverCommittedAttributeDropsItsPendingAddition) {
  store.addAttrToAddPending(kVlan100);
  store.addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(store.addPendingAttrs().empty());
  EXPECT_TRUE(store.deletePendingAttrs().empty());
  EXPECT_TRUE(store.mrpAttrIters().empty());
  EXPECT_FALSE(status->applicationDatabase(MrpApplication::mvrp));
}

TEST_F(MrpAttributeStoreTest, DeletionOfWhatIsNeitherStoredNorPendingIsIgnored) {
  store.addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(store.deletePendingAttrs().empty());
  EXPECT_TRUE(store.mrpAttrIters().empty());
}

TEST_F(MrpAttributeStoreTest, DeletionOfAStoredAttributeAlsoDropsItsPendingAddition) {
  committed(kVlan100);
  store.addAttrToDeletePending(kVlan100);
  store.addAttrToAddPending(kVlan100);
  store.addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(store.deletePendingAttr(kVlan100));
  EXPECT_FALSE(store.addPendingAttr(kVlan100));
  // Already reading as absent, it leaves the index with its pending addition.
  EXPECT_FALSE(indexed(kVlan100));
  EXPECT_TRUE(stored(kVlan100)) << "until the deletion is committed";
}

TEST_F(MrpAttributeStoreTest, IndexJoinsWithTheFirstAdditionAndLeavesWithTheCommittedDeletion) {
  store.addAttrToAddPending(kVlan100);
  EXPECT_TRUE(indexed(kVlan100)) << "pending addition";
  committed(kVlan100);
  EXPECT_TRUE(indexed(kVlan100)) << "stored";
  store.addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(indexed(kVlan100)) << "pending deletion";
  deletionCommitted(kVlan100);
  EXPECT_FALSE(indexed(kVlan100));
  EXPECT_TRUE(store.mrpAttrIters().empty());
}

TEST_F(MrpAttributeStoreTest, DroppingAPendingAdditionKeepsTheIndexOnlyOfAStoredKey) {
  committed({kEth1, 1, 7});
  store.addAttrToDeletePending({kEth1, 1, 7});
  store.addAttrToAddPending({kEth1, 1, 7});  // stored and pending again
  store.addAttrToAddPending(kVlan100);       // pending only
  store.removeAttrFromAddPending({kEth1, 1, 7});
  store.removeAttrFromAddPending(kVlan100);
  EXPECT_EQ(keysIndexed(kEth1, 1), std::vector<std::uint64_t>{7});
}

TEST_F(MrpAttributeStoreTest, EmptiedPortAndTypeEntryGoesAway) {
  store.addToAttrIter(kEth1, 1, 5);
  store.addToAttrIter(kEth1, 1, 6);
  store.addToAttrIter(kEth1, 2, 5);
  store.removeFromAttrIter(kEth1, 1, 5);
  EXPECT_EQ(keysIndexed(kEth1, 1), std::vector<std::uint64_t>{6});
  store.removeFromAttrIter(kEth1, 1, 6);
  EXPECT_FALSE(store.mrpAttrIter({kEth1, 1}));
  EXPECT_EQ(keysIndexed(kEth1, 2), std::vector<std::uint64_t>{5});
  store.removeFromAttrIter(kEth2, 1, 5);
  EXPECT_EQ(store.mrpAttrIters().size(), 1u) << "removing from a missing entry creates none";
}

TEST_F(MrpAttributeStoreTest, WalkSurvivesChangesMadeOnTheWay) {
  struct Row {
    std::string change;
    // What the walk does to the index when it reaches a key.
    std::function<void(MrpAttributeStore&, std::uint64_t)> onKey;
    std::vector<std::uint64_t> visited;
  };
  const std::vector<Row> rows{
      {"nothing", [](MrpAttributeStore&, std::uint64_t) {}, {1, 2, 3, 5, 8}},
      {"the key handled leaves", [](MrpAttributeStore& s, std::uint64_t key) { s.removeFromAttrIter(kEth1, 1, key); },
       {1, 2, 3, 5, 8}},
      {"the next key leaves, keys join ahead and behind",
       [](MrpAttributeStore& s, std::uint64_t key) {
         if (key != 2) return;
         s.removeFromAttrIter(kEth1, 1, 3);
         s.addToAttrIter(kEth1, 1, 4);
         s.addToAttrIter(kEth1, 1, 9);
         s.addToAttrIter(kEth1, 1, 0);
       },
       {1, 2, 4, 5, 8, 9}},
      {"the whole entry goes away",
       [](MrpAttributeStore& s, std::uint64_t key) {
         if (key != 3) return;
         for (std::uint64_t k : {1, 2, 3, 5, 8}) s.removeFromAttrIter(kEth1, 1, k);
       },
       {1, 2, 3}},
  };
  for (const Row& row : rows) {
    store.mrpAttrIterDelAll();
    for (std::uint64_t key : {8, 1, 5, 3, 2}) store.addToAttrIter(kEth1, 1, key);
    store.addToAttrIter(kEth1, 2, 4);
    std::vector<std::uint64_t> visited;
    store.mrpAttrIterWalk(kEth1, 1, [&](std::uint64_t key) {
      visited.push_back(key);
      row.onKey(store, key);
    });
    EXPECT_EQ(visited, row.visited) << row.change;
  }
}

TEST_F(MrpAttributeStoreTest, WalkOfAnUnindexedPortAndTypeHandlesNothing) {
  store.addToAttrIter(kEth1, 1, 5);
  int handled = 0;
  store.mrpAttrIterWalk(kEth2, 1, [&](std::uint64_t) { ++handled; });
  store.mrpAttrIterWalk(kEth1, 2, [&](std::uint64_t) { ++handled; });
  EXPECT_EQ(handled, 0);
}

// Look-ups of pending additions start beside the last one found; an erasure
// must not leave them starting from an entry that is gone.
TEST_F(MrpAttributeStoreTest, PendingLookUpsRightAfterErasuresFindWhatIsLeft) {
  const auto vlan = [](std::uint64_t key) { return MrpAttribute{kEth1, 1, key}; };
  for (std::uint64_t key = 1; key <= 10; ++key) store.addAttrToAddPending(vlan(key));
  ASSERT_TRUE(store.addPendingAttr(vlan(5)));

  store.addPendingAttrDel(vlan(5));
  EXPECT_FALSE(store.addPendingAttr(vlan(5)));
  EXPECT_TRUE(store.addPendingAttr(vlan(6)));
  EXPECT_TRUE(store.addPendingAttr(vlan(4)));

  store.removeAttrFromAddPending(vlan(6));
  EXPECT_FALSE(store.addPendingAttr(vlan(6)));
  EXPECT_EQ(store.addPendingAttr(vlan(7))->attributeKey(), 7u);

  store.addAttrToDeletePending(vlan(7));
  EXPECT_FALSE(store.addPendingAttr(vlan(7)));
  const Ptr<MrpAttrDatabase> again = new MrpAttrDatabase(6);
  store.addPendingAttrIs(vlan(6), again);
  EXPECT_EQ(store.addPendingAttr(vlan(6)), again);
  EXPECT_EQ(store.addPendingAttr(vlan(8))->attributeKey(), 8u);

  store.addPendingAttrDelAll();
  for (std::uint64_t key = 1; key <= 10; ++key) EXPECT_FALSE(store.addPendingAttr(vlan(key))) << key;
  store.addPendingAttrIs(vlan(3), again);
  EXPECT_EQ(store.addPendingAttr(vlan(3)), again);
}

TEST_F(MrpAttributeStoreTest, RepeatedLookUpSeesEveryChangeMadeBetween) {
  EXPECT_FALSE(find(kVlan100, true));
  const Ptr<MrpAttrDatabase> entry = store.createEntryInDatabase(kEth1, 1, 100);
  EXPECT_EQ(find(kVlan100, true), entry) << "after a commit";
  store.deletePendingAttrIs(kVlan100, true);
  EXPECT_FALSE(find(kVlan100, true)) << "after a deletion is queued";
  const Ptr<MrpAttrDatabase> pending = new MrpAttrDatabase(100);
  store.addPendingAttrIs(kVlan100, pending);
  EXPECT_EQ(find(kVlan100, true), pending) << "after an addition is queued";
  store.addPendingAttrDel(kVlan100);
  EXPECT_FALSE(find(kVlan100, true)) << "after the addition is dropped";
  store.deletePendingAttrDel(kVlan100);
  EXPECT_EQ(find(kVlan100, true), entry) << "after the deletion is dropped";
  store.deletePendingAttrIs(kVlan100, true);
  store.deletePendingAttrDelAll();
  EXPECT_EQ(find(kVlan100, true), entry) << "after every deletion is dropped";
  store.addPendingAttrIs(kVlan100, pending);
  store.addPendingAttrDelAll();
  EXPECT_EQ(find(kVlan100, true), entry) << "after every addition is dropped";
}

TEST_F(MrpAttributeStoreTest, RebuildIndexesEveryPortAndTypeOfItsApplicationWithItsKeys) {
  const Ptr<MrpApplicationDatabase> mvrp = status->applicationDatabaseIs(MrpApplication::mvrp);
  for (std::uint64_t key : {30, 10, 20}) mvrp->attrDatabaseIs(kEth1)->intfTypeApplicantIs(1)->mrpAttributeIs(key);
  mvrp->attrDatabaseIs(kEth2)->intfTypeApplicantIs(1)->mrpAttributeIs(5);
  mvrp->attrDatabaseIs(kEth2)->intfTypeApplicantIs(2);
  status->applicationDatabaseIs(MrpApplication::msrp)->attrDatabaseIs(kEth1)->intfTypeApplicantIs(3)->mrpAttributeIs(1);

  store.doRebuildAttrIter();
  EXPECT_EQ(keysIndexed(kEth1, 1), (std::vector<std::uint64_t>{10, 20, 30}));
  EXPECT_EQ(keysIndexed(kEth2, 1), std::vector<std::uint64_t>{5});
  EXPECT_TRUE(store.mrpAttrIter({kEth2, 2})) << "a type without keys still gets its entry";
  EXPECT_FALSE(store.mrpAttrIter({kEth1, 3})) << "another application's";
  EXPECT_EQ(store.mrpAttrIters().size(), 3u);
}

TEST_F(MrpAttributeStoreTest, RebuildOfAnEmptyStoreIndexesNothing) {
  store.doRebuildAttrIter();
  EXPECT_TRUE(store.mrpAttrIters().empty());
}

class MrpAttributeStoreReviewTest : public MrpAttributeStoreTest {
 protected:
  MrpAttributeStoreReviewTest()
      : clock(new Quarn::SimClock),
        addReview(new ReviewProbe([this] { return store.addPendingAttrs().empty(); }, clock)),
        deleteReview(new ReviewProbe([this] { return store.deletePendingAttrs().empty(); }, clock)) {
    store.reviewMachinesIs(addReview.ptr(), deleteReview.ptr());
  }

  Ptr<Quarn::SimClock> clock;
  Ptr<ReviewProbe> addReview;
  Ptr<ReviewProbe> deleteReview;
};

TEST_F(MrpAttributeStoreReviewTest, AdditionAsksTheAddReview) {
  store.addAttrToAddPending(kVlan100);
  EXPECT_TRUE(addReview->asked());
  EXPECT_FALSE(deleteReview->asked());
}

TEST_F(MrpAttributeStoreReviewTest, DeletionOfAStoredAttributeAsksTheDeleteReview) {
  status->applicationDatabaseIs(MrpApplication::mvrp)->attrDatabaseIs(kEth1)->intfTypeApplicantIs(1)->mrpAttributeIs(
      100);
  store.addAttrToDeletePending(kVlan100);
  EXPECT_TRUE(deleteReview->asked());
  EXPECT_FALSE(addReview->asked());
}

TEST_F(MrpAttributeStoreReviewTest, DroppingANeverCommittedAdditionAsksForNoDeletion) {
  store.addPendingAttrIs(kVlan100, new MrpAttrDatabase(100));
  store.addAttrToDeletePending(kVlan100);
  EXPECT_FALSE(deleteReview->asked());
  EXPECT_FALSE(addReview->asked());
}

}  // namespace
}  // namespace Mrp
