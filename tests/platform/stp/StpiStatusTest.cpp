#include "stp/StpiStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Stp::StpiStatus::Notifiee {
 public:
  MOCK_METHOD(void, onMstiStatus, (const std::string&), (override));
};

TEST(StpiStatusTest, MstiStatusIsCreatesOnceAndNotifies) {
  Quarn::Ptr<Stp::StpiStatus> stpi = new Stp::StpiStatus("Mst");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(stpi.ptr());
  EXPECT_EQ(stpi->name(), "Mst");
  EXPECT_EQ(stpi->mstiStatus("Mst0"), nullptr);

  EXPECT_CALL(notifiee, onMstiStatus("Mst0"));
  Quarn::Ptr<Stp::MstiStatus> msti = stpi->mstiStatusIs("Mst0");
  ASSERT_NE(msti, nullptr);
  EXPECT_EQ(msti->name(), "Mst0");
  EXPECT_EQ(stpi->mstiStatusIs("Mst0"), msti);
  EXPECT_EQ(stpi->mstiStatus("Mst0"), msti);
  EXPECT_EQ(stpi->mstiStatusCount(), 1u);
}

TEST(StpiStatusTest, MstiStatusDelRemovesAndNotifiesOnce) {
  Quarn::Ptr<Stp::StpiStatus> stpi = new Stp::StpiStatus("Mst");
  stpi->mstiStatusIs("Mst0");
  stpi->mstiStatusIs("Mst1");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(stpi.ptr());

  EXPECT_CALL(notifiee, onMstiStatus("Mst0"));
  stpi->mstiStatusDel(stpi->mstiStatuses().begin()->first);
  stpi->mstiStatusDel("Mst0");
  EXPECT_EQ(stpi->mstiStatus("Mst0"), nullptr);
  ASSERT_EQ(stpi->mstiStatusCount(), 1u);
  EXPECT_EQ(stpi->mstiStatuses().begin()->first, "Mst1");
}

}  // namespace
