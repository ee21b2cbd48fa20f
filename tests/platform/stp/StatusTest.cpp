#include "stp/Status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Stp::Status::Notifiee {
 public:
  MOCK_METHOD(void, onMode, (), (override));
  MOCK_METHOD(void, onStpiStatus, (const std::string&), (override));
};

TEST(StpStatusTest, ModeCodes) {
  struct Case {
    Stp::Mode mode;
    std::uint32_t code;
  };
  for (const Case& c : {Case{Stp::kModeMstp, 0}, Case{Stp::kModeRstp, 2}, Case{Stp::kModeStp, 3},
                        Case{Stp::kModeBackup, 100}, Case{Stp::kModePvst, 101},
                        Case{Stp::kModeNone, 0xFFFFFFFF}}) {
    EXPECT_EQ(c.mode, c.code);
  }
}

TEST(StpStatusTest, StartsWithoutSpanningTree) {
  Quarn::Ptr<Stp::Status> status = new Stp::Status;
  EXPECT_EQ(status->mode(), Stp::kModeNone);
  EXPECT_EQ(status->stpiStatusCount(), 0u);
}

TEST(StpStatusTest, ModeIsNotifiesOnlyOnChange) {
  Quarn::Ptr<Stp::Status> status = new Stp::Status;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(status.ptr());

  EXPECT_CALL(notifiee, onMode()).WillOnce([&] { EXPECT_EQ(status->mode(), Stp::kModePvst); });
  status->modeIs(Stp::kModePvst);
  status->modeIs(Stp::kModePvst);
}

TEST(StpStatusTest, StpiStatusIsCreatesOnceAndDelRemoves) {
  Quarn::Ptr<Stp::Status> status = new Stp::Status;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(status.ptr());

  EXPECT_CALL(notifiee, onStpiStatus("Mst")).Times(2);
  Quarn::Ptr<Stp::StpiStatus> stpi = status->stpiStatusIs("Mst");
  ASSERT_NE(stpi, nullptr);
  EXPECT_EQ(stpi->name(), "Mst");
  EXPECT_EQ(status->stpiStatusIs("Mst"), stpi);
  EXPECT_EQ(status->stpiStatus("Mst"), stpi);
  EXPECT_EQ(status->stpiStatuses().size(), 1u);

  status->stpiStatusDel("Mst");
  status->stpiStatusDel("Mst");
  EXPECT_EQ(status->stpiStatus("Mst"), nullptr);
  EXPECT_EQ(status->stpiStatusCount(), 0u);
}

TEST(StpStatusTest, PortRoleIsReachedThroughTheTree) {
  Quarn::Ptr<Stp::Status> status = new Stp::Status;
  status->stpiStatusIs("Mst")->mstiStatusIs("Mst0")->mstiPortStatusIs("Ethernet1")->roleIs(
      Stp::MstiPortStatus::Role::designated);
  Quarn::Ptr<Stp::MstiPortStatus> port =
      status->stpiStatus("Mst")->mstiStatus("Mst0")->mstiPortStatus("Ethernet1");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->role(), Stp::MstiPortStatus::Role::designated);
}

}  // namespace
