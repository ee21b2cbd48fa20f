#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "quarn/Log.h"
#include "support/EngineFixture.h"
#include "support/MrpduFrames.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

struct BoundaryCase {
  std::string name;
  MrpApplication application;
  Frames::Bytes frame;

  friend void PrintTo(const BoundaryCase& c, std::ostream* os) { *os << c.name; }
};

// Every valid frame, cut at every length, is malformed exactly once: a
// frame ends early wherever a read needs more octets than are left. Only
// the ProtocolVersion octet alone (no messages) and the whole frame count
// nothing.
class MrpSmParseBoundaryTest : public EngineFixture, public ::testing::WithParamInterface<BoundaryCase> {
 protected:
  Quarn::CaptureLogSink logs;
};

TEST_P(MrpSmParseBoundaryTest, EveryCutIsMalformedOnce) {
  const BoundaryCase& param = GetParam();
  Quarn::Ptr<Mrp::MrpSm> engine = engineNew(param.application, false);
  Mrp::MrpCounters& counters = *engine->mrpCounters();
  for (std::size_t length = 0; length <= param.frame.size(); ++length) {
    SCOPED_TRACE(length);
    const std::uint64_t before = counters.numOfMalformedPkts();
    engine->parseMrpdu(Velo::Pkt::pktNew(param.frame.data(), length));
    const bool clean = length == 1 || length == param.frame.size();
    EXPECT_EQ(counters.numOfMalformedPkts() - before, clean ? 0u : 1u);
    engine->mrpParsedAttributeDelAll();
    engine->mrpParsedAttributeKeyDelAll();
    engine->msrpParsedDomainKeyDelAll();
    engine->mrpRxLeaveAllDelAll();
  }
  EXPECT_EQ(counters.numOfUnknownAttributeType(), 0u);
  EXPECT_EQ(counters.numOfIncorrectPduVersion(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    ValidFrames, MrpSmParseBoundaryTest,
    ::testing::Values(BoundaryCase{"MvrpThreeVlans", MrpApplication::mvrp, Frames::kMvrpThreeVlans},
                      BoundaryCase{"MvrpTwoVectors", MrpApplication::mvrp, Frames::kMvrpTwoVectors},
                      BoundaryCase{"MsrpListener", MrpApplication::msrp,
                                   Frames::msrpListenerFrame(Frames::kListenerListLength)},
                      BoundaryCase{"MsrpAllTypes", MrpApplication::msrp, Frames::kMsrpAllTypes}),
    [](const ::testing::TestParamInfo<BoundaryCase>& info) { return info.param.name; });

}  // namespace
}  // namespace MrpTest
