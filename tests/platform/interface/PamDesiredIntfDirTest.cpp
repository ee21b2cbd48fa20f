#include "interface/PamDesiredIntfDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Interface::PamDesiredIntfDir::Notifiee {
 public:
  MOCK_METHOD(void, onIntfDesired, (const Velo::IntfId&), (override));
};

const Velo::IntfId kEth1("Ethernet1");

TEST(PamDesiredIntfDirTest, NotifiesOnlyWhenAnEntryChanges) {
  Quarn::Ptr<Interface::PamDesiredIntfDir> dir = new Interface::PamDesiredIntfDir("desired");
  EXPECT_EQ(dir->name(), Quarn::Name("desired"));
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(dir.ptr());
  EXPECT_FALSE(dir->intfDesired(kEth1));

  EXPECT_CALL(notifiee, onIntfDesired(kEth1)).Times(3);
  dir->intfDesiredIs(kEth1, true);
  dir->intfDesiredIs(kEth1, true);
  EXPECT_TRUE(dir->intfDesired(kEth1));
  dir->intfDesiredIs(kEth1, false);
  EXPECT_FALSE(dir->intfDesired(kEth1));
  EXPECT_EQ(dir->intfDesiredCount(), 1u) << "listed false";
  dir->intfDesiredDel(kEth1);
  dir->intfDesiredDel(kEth1);
  EXPECT_EQ(dir->intfDesiredCount(), 0u);
}

TEST(PamDesiredIntfDirTest, AnEntryMadeFalseNotifies) {
  Quarn::Ptr<Interface::PamDesiredIntfDir> dir = new Interface::PamDesiredIntfDir("desired");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(dir.ptr());
  EXPECT_CALL(notifiee, onIntfDesired(kEth1));
  dir->intfDesiredIs(kEth1, false);
  EXPECT_EQ(dir->intfDesireds().at(kEth1), false);
}

}  // namespace
