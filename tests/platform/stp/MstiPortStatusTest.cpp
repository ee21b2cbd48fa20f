#include "stp/MstiPortStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Role = Stp::MstiPortStatus::Role;

class MockNotifiee : public Stp::MstiPortStatus::Notifiee {
 public:
  MOCK_METHOD(void, onRole, (), (override));
};

TEST(MstiPortStatusTest, StartsDisabled) {
  Quarn::Ptr<Stp::MstiPortStatus> port = new Stp::MstiPortStatus("Ethernet1");
  EXPECT_EQ(port->name(), "Ethernet1");
  EXPECT_EQ(port->role(), Role::disabled);
}

TEST(MstiPortStatusTest, RoleCodes) {
  struct Case {
    Role role;
    std::uint32_t code;
  };
  for (const Case& c : {Case{Role::disabled, 0}, Case{Role::root, 1}, Case{Role::designated, 2},
                        Case{Role::alternate, 3}, Case{Role::backup, 4}}) {
    EXPECT_EQ(static_cast<std::uint32_t>(c.role), c.code);
  }
}

TEST(MstiPortStatusTest, RoleIsNotifiesOnlyOnChange) {
  Quarn::Ptr<Stp::MstiPortStatus> port = new Stp::MstiPortStatus("Ethernet1");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(port.ptr());

  EXPECT_CALL(notifiee, onRole()).WillOnce([&] { EXPECT_EQ(port->role(), Role::root); });
  port->roleIs(Role::root);
  port->roleIs(Role::root);
  EXPECT_EQ(port->role(), Role::root);
}

TEST(MstiPortStatusTest, DetachedNotifieeIsNotCalled) {
  Quarn::Ptr<Stp::MstiPortStatus> port = new Stp::MstiPortStatus("Ethernet1");
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(port.ptr());
  notifiee.notifierIs(nullptr);
  port->roleIs(Role::alternate);
  EXPECT_EQ(port->role(), Role::alternate);
}

}  // namespace
