#include "interface/EthDevPamCollection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "velo/MemPam.h"

namespace {

class MockNotifiee : public Interface::EthDevPamCollection::Notifiee {
 public:
  MOCK_METHOD(void, onIntfPam, (const Velo::IntfId&), (override));
};

const Velo::IntfId kEth1("Ethernet1");

TEST(EthDevPamCollectionTest, AddAndRemoveNotifyOnce) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::Pam> pam = new Velo::MemPam(kEth1, Velo::EthAddr(), clock);
  Quarn::Ptr<Interface::EthDevPamCollection> collection = new Interface::EthDevPamCollection("pams");
  EXPECT_EQ(collection->name(), Quarn::Name("pams"));
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(collection.ptr());

  EXPECT_CALL(notifiee, onIntfPam(kEth1)).Times(2);
  collection->intfPamIs(kEth1, pam);
  collection->intfPamIs(kEth1, pam);
  EXPECT_EQ(collection->intfPam(kEth1), pam);
  EXPECT_EQ(collection->intfPamCount(), 1u);
  collection->intfPamDel(collection->intfPams().begin()->first);
  collection->intfPamDel(kEth1);
  EXPECT_EQ(collection->intfPam(kEth1), nullptr);
}

TEST(EthDevPamCollectionDeathTest, ANullSocketIsNeverStored) {
  Quarn::Ptr<Interface::EthDevPamCollection> collection = new Interface::EthDevPamCollection("pams");
  EXPECT_DEATH(collection->intfPamIs(kEth1, nullptr), "Assertion failed: pam");
}

}  // namespace
