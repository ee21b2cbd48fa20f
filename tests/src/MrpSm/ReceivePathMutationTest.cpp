// Every truncation and every single-octet change of each valid frame of the
// receive path's frame set goes through the whole receive path of a live
// engine with registrations (packet access, frame checks, parser, dispatch,
// machines, transmission), and the engine's invariants hold after each.

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "support/EngineInvariants.h"
#include "support/ReceivePathFrames.h"
#include "support/ReceivePathRig.h"
#include "velo/EthHdr.h"

namespace MrpTest {
namespace {

using ReceivePath::Bytes;
using ReceivePath::Frame;

// Values each octet is set to: clearing it and filling it hit EndMarks and
// lengths, the low bit counts and events, the high bit lengths past the
// frame, and 0x20 the LeaveAll event of a vector header.
const std::vector<std::pair<const char*, std::uint8_t (*)(std::uint8_t)>> kOctetChanges = {
    {"0x00", [](std::uint8_t) -> std::uint8_t { return 0x00; }},
    {"0xff", [](std::uint8_t) -> std::uint8_t { return 0xff; }},
    {"xor 0x01", [](std::uint8_t o) -> std::uint8_t { return o ^ 0x01; }},
    {"xor 0x20", [](std::uint8_t o) -> std::uint8_t { return o ^ 0x20; }},
    {"xor 0x80", [](std::uint8_t o) -> std::uint8_t { return o ^ 0x80; }},
};

// What runs between two frames, so that leave, transmit and review timers
// fire among the frames and a LeaveAll period passes during a frame's run.
constexpr Quarn::Seconds kBetweenFrames = 0.05;

class ReceivePathMutationTest : public ::testing::TestWithParam<Frame> {
 protected:
  ReceivePathMutationTest() : engine_(rig_.engine(GetParam().application)), invariants_(*engine_.sm) {}

  // Delivers `frame` on a port of the frame's engine; `what` names it in
  // failures. False once an invariant broke.
  bool delivered(const Bytes& frame, const std::string& what) {
    const std::uint64_t before = engine_.sm->mrpCounters()->numOfPktsProcessed();
    const std::size_t port = deliveries_++ % ReceivePathRig::kPorts;
    const bool sent = rig_.receive(engine_, port, frame);
    // The wire carries whole Ethernet headers only, as the kernel filter does.
    EXPECT_EQ(sent, frame.size() >= Velo::EthHdr::kSize) << what;
    EXPECT_EQ(engine_.sm->mrpCounters()->numOfPktsProcessed(), before + (sent ? 1 : 0))
        << what << ": a delivered frame is handled once";
    rig_.advance(kBetweenFrames);
    const std::vector<std::string> broken = invariants_.violations();
    for (const std::string& text : broken) ADD_FAILURE() << what << ": " << text;
    return broken.empty();
  }

  ReceivePathRig rig_;
  ReceivePathRig::Engine& engine_;
  EngineInvariants invariants_;
  std::size_t deliveries_ = 0;
};

TEST_P(ReceivePathMutationTest, TheFrameItselfIsWellFormedAndKeepsTheInvariants) {
  const Bytes& frame = GetParam().bytes;
  const Mrp::MrpCounters& counters = *engine_.sm->mrpCounters();
  ASSERT_TRUE(delivered(frame, "the frame"));
  EXPECT_EQ(counters.numOfMalformedPkts(), 0u);
  EXPECT_EQ(counters.numOfIncorrectDmac() + counters.numOfIncorrectEtype(), 0u);
}

TEST_P(ReceivePathMutationTest, EveryTruncationKeepsTheInvariants) {
  const Bytes& frame = GetParam().bytes;
  for (std::size_t length = 0; length < frame.size(); ++length) {
    if (!delivered(Bytes(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(length)),
                   "the first " + std::to_string(length) + " octets")) {
      return;
    }
  }
  EXPECT_GT(engine_.sm->mrpCounters()->numOfMalformedPkts(), 0u) << "the cuts reach the parser";
}

TEST_P(ReceivePathMutationTest, EverySingleOctetChangeKeepsTheInvariants) {
  const Bytes& frame = GetParam().bytes;
  for (std::size_t at = 0; at < frame.size(); ++at) {
    for (const auto& [name, change] : kOctetChanges) {
      Bytes changed = frame;
      changed[at] = change(frame[at]);
      if (changed == frame) continue;
      if (!delivered(changed, "octet " + std::to_string(at) + " " + name)) return;
    }
  }
  const Mrp::MrpCounters& counters = *engine_.sm->mrpCounters();
  EXPECT_GT(counters.numOfMalformedPkts(), 0u) << "the changes reach the parser";
  EXPECT_GT(counters.numOfIncorrectDmac(), 0u) << "the changes reach the address check";
  EXPECT_GT(counters.numOfIncorrectEtype(), 0u) << "the changes reach the EtherType check";
}

INSTANTIATE_TEST_SUITE_P(Frames, ReceivePathMutationTest, ::testing::ValuesIn(ReceivePath::frames()),
                         [](const ::testing::TestParamInfo<Frame>& info) { return info.param.name; });

TEST(ReceivePathFramesTest, TheSetCoversBothApplicationsTaggedAndUntagged) {
  std::size_t msrp = 0;
  std::size_t mvrp = 0;
  std::size_t tagged = 0;
  for (const Frame& frame : ReceivePath::frames()) {
    (frame.application == Mrp::MrpApplication::msrp ? msrp : mvrp)++;
    if (frame.bytes[12] == 0x81 && frame.bytes[13] == 0x00) ++tagged;
  }
  EXPECT_GE(msrp, 10u);
  EXPECT_GE(mvrp, 10u);
  EXPECT_EQ(tagged * 2, msrp + mvrp);
}

}  // namespace
}  // namespace MrpTest
