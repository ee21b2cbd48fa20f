#include "MrpSm/MrpAttrLogSm.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string>

#include "lumen/TraceRing.h"
#include "quarn/Trace.h"
#include "support/UnixSocketPair.h"

namespace Mrp {

// Sets the threshold directly, so a test can put it exactly at a usage the
// kernel reports.
class MrpAttrLogSmPeer {
 public:
  static void thresholdIs(MrpAttrLogSm& sm, std::int32_t threshold) { sm.attrLogKernTxBufferThreshold_ = threshold; }
};

namespace {

using MrpTest::UnixSocketPair;
using Quarn::NboAttrLog::SocketOutSm;
using Quarn::Ptr;

int sendBufferOf(int fd) {
  int size = 0;
  socklen_t length = sizeof(size);
  getsockopt(fd, SOL_SOCKET, SO_SNDBUF, &size, &length);
  return size;
}

// A pseudo-terminal: not a socket, so SO_SNDBUF fails, yet its output queue
// can be asked for (and is empty).
class PseudoTerminal {
 public:
  PseudoTerminal() : fd_(posix_openpt(O_RDWR | O_NOCTTY)) {}
  ~PseudoTerminal() {
    if (fd_ >= 0) close(fd_);
  }
  int fd() const { return fd_; }

 private:
  int fd_;
};

class MrpAttrLogSmTest : public ::testing::Test {
 protected:
  Ptr<MrpAttrLogSm> watchdogOn(int fd) { return new MrpAttrLogSm(new SocketOutSm("mrp", fd)); }

  UnixSocketPair log_{4096};
};

TEST_F(MrpAttrLogSmTest, WithoutAnOutputNothingIsKnownAndNothingClogs) {
  Ptr<MrpAttrLogSm> sm = new MrpAttrLogSm(nullptr);
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(sm->attrLogSockFd(), -1);
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), -1);
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), -1);
  EXPECT_EQ(sm->getAttrLogKernTxBufferUsage(), -1);
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  EXPECT_EQ(sm->attrLogKernTxBufferUsage(), -1);
}

TEST_F(MrpAttrLogSmTest, OutputWithoutASocketYetIsNotWatched) {
  Ptr<MrpAttrLogSm> sm = watchdogOn(0);
  EXPECT_EQ(sm->attrLogSockFd(), -1);
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), -1);
  EXPECT_FALSE(sm->isAttrLogOutClogged()) << "usage unknown: -1 is not above -1";
}

TEST_F(MrpAttrLogSmTest, ReadsTheSendBufferSizeAndHalvesItForTheThreshold) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/3");
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  Quarn::traceLevelsClear();
  const int size = sendBufferOf(log_.writer());
  ASSERT_GT(size, 0);
  EXPECT_EQ(sm->attrLogSockFd(), log_.writer());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), size);
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), size / 2);
  std::ostringstream expected;
  expected << "handleAttrLogSockFd(), Socket Fd:" << log_.writer() << ", Kernel Tx Buffer Size:" << size
           << ", Kernel Tx Buffer Threshold:" << size / 2;
  EXPECT_TRUE(traces.contains(expected.str()));
}

TEST_F(MrpAttrLogSmTest, CloggedWhileTheReaderDoesNotReadAndClearWhenItDrains) {
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  EXPECT_EQ(sm->attrLogKernTxBufferUsage(), 0);

  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/3");
  log_.fill();
  EXPECT_TRUE(sm->isAttrLogOutClogged());
  Quarn::traceLevelsClear();
  const std::int32_t usage = sm->attrLogKernTxBufferUsage();
  const std::int32_t threshold = sm->attrLogKernTxBufferThreshold();
  EXPECT_GT(usage, threshold);
  EXPECT_TRUE(traces.contains("Tx Buffer usage: " + std::to_string(usage) +
                              " is above threshold: " + std::to_string(threshold)));
  const Lumen::TraceRing::Record& record = Lumen::fastTrace().last();
  EXPECT_STREQ(record.event, "MrpAttrLogSm::isAttrLogOutClogged usage threshold");
  EXPECT_EQ(record.arg0, usage);
  EXPECT_EQ(record.arg1, threshold);

  log_.drain();
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  EXPECT_EQ(sm->attrLogKernTxBufferUsage(), 0);
}

TEST_F(MrpAttrLogSmTest, UsageEqualToTheThresholdIsNotClogged) {
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  ASSERT_TRUE(log_.write(100));
  const std::int32_t usage = sm->getAttrLogKernTxBufferUsage();
  ASSERT_GT(usage, 0);
  MrpAttrLogSmPeer::thresholdIs(*sm, usage);
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  MrpAttrLogSmPeer::thresholdIs(*sm, usage - 1);
  EXPECT_TRUE(sm->isAttrLogOutClogged());
}

TEST_F(MrpAttrLogSmTest, FailedBufferSizeQueryThenEmptyQueueReadsAsClogged) {
  PseudoTerminal terminal;
  ASSERT_GE(terminal.fd(), 0);
  Ptr<MrpAttrLogSm> sm = watchdogOn(terminal.fd());
  EXPECT_EQ(sm->attrLogSockFd(), terminal.fd());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), -1);
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), -1);
  EXPECT_TRUE(sm->isAttrLogOutClogged());
  EXPECT_EQ(sm->attrLogKernTxBufferUsage(), 0);
}

TEST_F(MrpAttrLogSmTest, FailedBufferSizeQueryClogsUntilTheDescriptorChangesAgain) {
  PseudoTerminal terminal;
  ASSERT_GE(terminal.fd(), 0);
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  sm->attrLogSockFdIs(terminal.fd());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), -1) << "the earlier size is forgotten";
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), -1);
  EXPECT_TRUE(sm->isAttrLogOutClogged());
  EXPECT_TRUE(sm->isAttrLogOutClogged()) << "and stays so";
  sm->attrLogSockFdIs(log_.writer());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), sendBufferOf(log_.writer()));
  EXPECT_FALSE(sm->isAttrLogOutClogged());
}

TEST_F(MrpAttrLogSmTest, DescriptorThatIsNotASocketNeverClogsAndRecordsTheErrno) {
  int pipeFds[2];
  ASSERT_EQ(pipe(pipeFds), 0);
  Ptr<MrpAttrLogSm> sm = watchdogOn(pipeFds[1]);
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), -1);
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), -1);
  const std::uint64_t before = Lumen::fastTrace().recorded();
  EXPECT_FALSE(sm->isAttrLogOutClogged());
  EXPECT_EQ(sm->attrLogKernTxBufferUsage(), -1);
  ASSERT_EQ(Lumen::fastTrace().recorded(), before + 1);
  EXPECT_STREQ(Lumen::fastTrace().last().event, "MrpAttrLogSm::getAttrLogKernTxBufferUsage errno");
  EXPECT_EQ(Lumen::fastTrace().last().arg0, ENOTTY);
  close(pipeFds[0]);
  close(pipeFds[1]);
}

TEST_F(MrpAttrLogSmTest, SameDescriptorDoesNothingAndANewOneRereadsTheBufferSize) {
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/3");
  sm->attrLogSockFdIs(log_.writer());
  EXPECT_TRUE(traces.lines().empty()) << "the same descriptor re-reads nothing";

  UnixSocketPair bigger(65536);
  ASSERT_NE(sendBufferOf(bigger.writer()), sendBufferOf(log_.writer()));
  sm->attrLogSockFdIs(bigger.writer());
  Quarn::traceLevelsClear();
  EXPECT_EQ(traces.lines().size(), 1u);
  EXPECT_EQ(sm->attrLogSockFd(), bigger.writer());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), sendBufferOf(bigger.writer()));
  EXPECT_EQ(sm->attrLogKernTxBufferThreshold(), sendBufferOf(bigger.writer()) / 2);
}

TEST_F(MrpAttrLogSmTest, UnknownDescriptorKeepsTheSizeAndNeverClogs) {
  Ptr<MrpAttrLogSm> sm = watchdogOn(log_.writer());
  log_.fill();
  sm->attrLogSockFdIs(-1);
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), sendBufferOf(log_.writer()));
  EXPECT_EQ(sm->getAttrLogKernTxBufferUsage(), -1);
  EXPECT_FALSE(sm->isAttrLogOutClogged());
}

TEST_F(MrpAttrLogSmTest, FollowsTheOutputsDescriptor) {
  Ptr<SocketOutSm> output = new SocketOutSm("mrp", 0);
  Ptr<MrpAttrLogSm> sm = new MrpAttrLogSm(output);
  output->fdIs(log_.writer());
  EXPECT_EQ(sm->attrLogSockFd(), log_.writer());
  EXPECT_EQ(sm->attrLogKernTxBufferSize(), sendBufferOf(log_.writer()));
}

}  // namespace
}  // namespace Mrp
