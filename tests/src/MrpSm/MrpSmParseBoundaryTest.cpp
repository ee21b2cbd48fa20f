#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "quarn/Log.h"
#include "support/EngineFixture.h"
#include "support/MrpduFrames.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

// Offsets [first, end) of a vector's packed events within a frame.
struct PackedEvents {
  std::size_t first;
  std::size_t end;
};

struct BoundaryCase {
  std::string name;
  MrpApplication application;
  Frames::Bytes frame;
  std::vector<PackedEvents> packedEvents;

  friend void PrintTo(const BoundaryCase& c, std::ostream* os) { *os << c.name; }
};

// Every valid frame, cut at every length, is malformed: a frame ends early
// wherever a read needs more octets than are left, and that counts once.
// A cut inside a vector's packed events counts twice: once for the packed
// events, once for the attribute list, which finds no EndMark where the
// packed events begin. Only the ProtocolVersion octet alone (no messages)
// and the whole frame count nothing.
class MrpSmParseBoundaryTest : public EngineFixture, public ::testing::WithParamInterface<BoundaryCase> {
 protected:
  static std::uint64_t expectedCount(const BoundaryCase& c, std::size_t length) {
    if (length == 1 || length == c.frame.size()) return 0;
    for (const PackedEvents& packed : c.packedEvents) {
      if (length >= packed.first && length < packed.end) return 2;
    }
    return 1;
  }

  Quarn::CaptureLogSink logs;
};

TEST_P(MrpSmParseBoundaryTest, EveryCutIsMalformed) {
  const BoundaryCase& param = GetParam();
  Quarn::Ptr<Mrp::MrpSm> engine = engineNew(param.application, false);
  Mrp::MrpCounters& counters = *engine->mrpCounters();
  for (std::size_t length = 0; length <= param.frame.size(); ++length) {
    SCOPED_TRACE(length);
    const std::uint64_t before = counters.numOfMalformedPkts();
    engine->parseMrpdu(Velo::Pkt::pktNew(param.frame.data(), length));
    EXPECT_EQ(counters.numOfMalformedPkts() - before, expectedCount(param, length));
    engine->receivedFrame().parseResultsDelAll();
  }
  EXPECT_EQ(counters.numOfUnknownAttributeType(), 0u);
  EXPECT_EQ(counters.numOfIncorrectPduVersion(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    ValidFrames, MrpSmParseBoundaryTest,
    ::testing::Values(BoundaryCase{"MvrpThreeVlans", MrpApplication::mvrp, Frames::kMvrpThreeVlans, {{7, 8}}},
                      BoundaryCase{"MvrpTwoVectors", MrpApplication::mvrp, Frames::kMvrpTwoVectors, {{7, 8}, {12, 14}}},
                      BoundaryCase{"MsrpListener", MrpApplication::msrp,
                                   Frames::msrpListenerFrame(Frames::kListenerListLength), {{15, 19}}},
                      BoundaryCase{"MsrpAllTypes", MrpApplication::msrp, Frames::kMsrpAllTypes,
                                   {{32, 33}, {75, 76}, {92, 96}, {108, 109}}}),
    [](const ::testing::TestParamInfo<BoundaryCase>& info) { return info.param.name; });

}  // namespace
}  // namespace MrpTest
