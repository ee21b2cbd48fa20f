#include "quarn/NboAttrLogSocketOutSm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Quarn::NboAttrLog::SocketOutSm;

class MockNotifiee : public SocketOutSm::Notifiee {
 public:
  MOCK_METHOD(void, onFd, (), (override));
};

TEST(NboAttrLogSocketOutSmTest, KeepsNameAndDescriptor) {
  Quarn::Ptr<SocketOutSm> out = new SocketOutSm("collector", 7);
  EXPECT_EQ(out->name(), Quarn::Name("collector"));
  EXPECT_EQ(out->fd(), 7);
}

TEST(NboAttrLogSocketOutSmTest, FdIsNotifiesOnlyOnChange) {
  Quarn::Ptr<SocketOutSm> out = new SocketOutSm("collector", 7);
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(out.ptr());

  EXPECT_CALL(notifiee, onFd()).WillOnce([&] { EXPECT_EQ(out->fd(), -1); });
  out->fdIs(-1);
  out->fdIs(-1);
}

}  // namespace
