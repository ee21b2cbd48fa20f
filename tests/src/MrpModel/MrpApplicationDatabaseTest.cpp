#include "MrpModel/MrpApplicationDatabase.h"

#include <gtest/gtest.h>

#include <vector>

#include "MrpModel/MrpStatus.h"

namespace {

using Mrp::MrpApplicantState;
using Mrp::MrpRegistrarState;

TEST(MrpIntfTypeApplicantTest, NewEntryRestsWithItsKeyAndZeroValue) {
  Quarn::Ptr<Mrp::MrpIntfTypeApplicant> type = new Mrp::MrpIntfTypeApplicant;
  auto entry = type->mrpAttributeIs(42);
  EXPECT_EQ(entry->attributeKey(), 42u);
  EXPECT_EQ(entry->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(entry->registrarState(), MrpRegistrarState::mt);
  for (unsigned i = 0; i <= Mrp::ValueIndex::max; ++i) EXPECT_EQ(entry->attributeValue(Mrp::ValueIndex(i)), 0);
}

TEST(MrpIntfTypeApplicantTest, AttributeIsOnAnExistingKeyReturnsItUntouched) {
  Quarn::Ptr<Mrp::MrpIntfTypeApplicant> type = new Mrp::MrpIntfTypeApplicant;
  auto entry = type->mrpAttributeIs(7);
  entry->applicantStateIs(MrpApplicantState::qa);
  entry->registrarStateIs(MrpRegistrarState::in);
  entry->attributeValueIs(Mrp::ValueIndex(64), 0xee);
  auto again = type->mrpAttributeIs(7);
  EXPECT_EQ(again, entry);
  EXPECT_EQ(again->applicantState(), MrpApplicantState::qa);
  EXPECT_EQ(again->registrarState(), MrpRegistrarState::in);
  EXPECT_EQ(again->attributeValue(Mrp::ValueIndex(64)), 0xee);
  EXPECT_EQ(type->mrpAttributes().size(), 1u);
}

TEST(MrpIntfTypeApplicantTest, IteratesInAscendingKeyOrderAndDeletes) {
  Quarn::Ptr<Mrp::MrpIntfTypeApplicant> type = new Mrp::MrpIntfTypeApplicant;
  for (std::uint64_t key : {9u, 1u, 5u}) type->mrpAttributeIs(key);
  std::vector<std::uint64_t> keys;
  for (const auto& [key, entry] : type->mrpAttributes()) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::uint64_t>{1, 5, 9}));
  type->mrpAttributeDel(5);
  EXPECT_FALSE(type->mrpAttribute(5));
  EXPECT_TRUE(type->mrpAttribute(9));
}

TEST(MrpApplicationDatabaseTest, FindsARegistrationByPortTypeAndKey) {
  Quarn::Ptr<Mrp::MrpStatus> status = new Mrp::MrpStatus;
  auto db = status->applicationDatabaseIs(Mrp::MrpApplication::msrp);
  EXPECT_EQ(status->applicationDatabaseIs(Mrp::MrpApplication::msrp), db);
  EXPECT_FALSE(status->applicationDatabase(Mrp::MrpApplication::mvrp));
  const Velo::IntfId eth1("Ethernet1");
  auto entry = db->attrDatabaseIs(eth1)->intfTypeApplicantIs(3)->mrpAttributeIs(11);
  EXPECT_EQ(db->attrDatabase(eth1)->intfTypeApplicant(3)->mrpAttribute(11), entry);
  EXPECT_FALSE(db->attrDatabase(Velo::IntfId("Ethernet2")));
  EXPECT_FALSE(db->attrDatabase(eth1)->intfTypeApplicant(4));
}

TEST(MrpApplicationDatabaseTest, KeepsTheLeaveAllPeriodPerPortAndType) {
  Quarn::Ptr<Mrp::MrpApplicationDatabase> db = new Mrp::MrpApplicationDatabase;
  const Mrp::MrpLeaveAllKey key{Velo::IntfId("Ethernet1"), 2};
  EXPECT_FALSE(db->leaveAllTime(key));
  db->leaveAllTimeIs(key, 12.5);
  EXPECT_EQ(db->leaveAllTime(key), 12.5);
  db->leaveAllTimeIs(key, 10.0);
  EXPECT_EQ(db->leaveAllTime(key), 10.0);
  db->leaveAllTimeDel(key);
  EXPECT_FALSE(db->leaveAllTime(key));
}

TEST(MrpStatusTest, RecordsItsApplication) {
  Quarn::Ptr<Mrp::MrpStatus> status = new Mrp::MrpStatus;
  EXPECT_EQ(static_cast<unsigned>(status->application()), 0u);
  status->applicationIs(Mrp::MrpApplication::mvrp);
  EXPECT_EQ(status->application(), Mrp::MrpApplication::mvrp);
}

}  // namespace
