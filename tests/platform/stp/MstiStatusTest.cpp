#include "stp/MstiStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Stp::MstiStatus::Notifiee {
 public:
  MOCK_METHOD(void, onMstiPortStatus, (const std::string&), (override));
};

TEST(MstiStatusTest, MstiPortStatusIsCreatesOnceAndNotifies) {
  Quarn::Ptr<Stp::MstiStatus> msti = new Stp::MstiStatus("Mst0");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(msti.ptr());
  EXPECT_EQ(msti->name(), "Mst0");
  EXPECT_EQ(msti->mstiPortStatus("Ethernet1"), nullptr);

  EXPECT_CALL(notifiee, onMstiPortStatus("Ethernet1"));
  Quarn::Ptr<Stp::MstiPortStatus> port = msti->mstiPortStatusIs("Ethernet1");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->name(), "Ethernet1");
  EXPECT_EQ(msti->mstiPortStatusIs("Ethernet1"), port);
  EXPECT_EQ(msti->mstiPortStatus("Ethernet1"), port);
  EXPECT_EQ(msti->mstiPortStatusCount(), 1u);
}

TEST(MstiStatusTest, MstiPortStatusDelRemovesAndNotifiesOnce) {
  Quarn::Ptr<Stp::MstiStatus> msti = new Stp::MstiStatus("Mst0");
  msti->mstiPortStatusIs("Ethernet1");
  msti->mstiPortStatusIs("Ethernet2");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(msti.ptr());

  EXPECT_CALL(notifiee, onMstiPortStatus("Ethernet1"));
  // The key of the entry itself: the name must outlive the entry it names.
  msti->mstiPortStatusDel(msti->mstiPortStatuses().begin()->first);
  msti->mstiPortStatusDel("Ethernet1");
  EXPECT_EQ(msti->mstiPortStatus("Ethernet1"), nullptr);
  ASSERT_EQ(msti->mstiPortStatusCount(), 1u);
  EXPECT_EQ(msti->mstiPortStatuses().begin()->first, "Ethernet2");
}

}  // namespace
