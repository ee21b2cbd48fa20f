#include "quarn/NboAttrLog.h"

#include <gtest/gtest.h>

#include "quarn/NboAttrLogSocketOutSm.h"

namespace {

using Quarn::NboAttrLog::SocketOutSm;
namespace Log = Quarn::NboAttrLog;

// The registry is process-wide: every test starts and ends with it empty.
class NboAttrLogTest : public testing::Test {
 protected:
  NboAttrLogTest() { Log::outputDelAll(); }
  ~NboAttrLogTest() override { Log::outputDelAll(); }
};

TEST_F(NboAttrLogTest, OutputIsFoundByItsName) {
  Quarn::Ptr<SocketOutSm> out = new SocketOutSm("collector", 7);
  Log::outputIs(out);
  EXPECT_EQ(Log::output("collector").ptr(), out.ptr());
  EXPECT_EQ(Quarn::ptr_cast<SocketOutSm>(Log::output("collector"))->fd(), 7);
  EXPECT_EQ(Log::output("other"), nullptr);
}

TEST_F(NboAttrLogTest, OutputIsReplacesTheOutputOfTheSameName) {
  Quarn::Ptr<SocketOutSm> first = new SocketOutSm("collector", 7);
  Quarn::Ptr<SocketOutSm> second = new SocketOutSm("collector", 8);
  Log::outputIs(first);
  Log::outputIs(second);
  EXPECT_EQ(Log::output("collector").ptr(), second.ptr());
  EXPECT_EQ(first->references(), 1u);
}

TEST_F(NboAttrLogTest, OutputDelRemovesOnlyThatName) {
  Log::outputIs(new SocketOutSm("a", 7));
  Log::outputIs(new SocketOutSm("b", 8));
  Log::outputDel("a");
  Log::outputDel("a");
  EXPECT_EQ(Log::output("a"), nullptr);
  EXPECT_NE(Log::output("b"), nullptr);
}

TEST_F(NboAttrLogTest, OutputDelAllEmptiesTheRegistry) {
  Quarn::Ptr<SocketOutSm> a = new SocketOutSm("a", 7);
  Log::outputIs(a);
  Log::outputIs(new SocketOutSm("b", 8));
  Log::outputDelAll();
  EXPECT_EQ(Log::output("a"), nullptr);
  EXPECT_EQ(Log::output("b"), nullptr);
  EXPECT_EQ(a->references(), 1u);
}

TEST(NboAttrLogDeathTest, RegisteringNullIsAProgrammingError) {
  EXPECT_DEATH(Log::outputIs(nullptr), "Assertion failed: output");
}

}  // namespace
