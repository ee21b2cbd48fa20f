#include <gtest/gtest.h>

#include "CreditBasedShaper.h"
#include "PortReservations.h"

namespace MrpTest {
namespace {

using MrpAgent::CbsParameters;

constexpr std::uint64_t kGigabit = 1'000'000'000;

// Worked examples on a 1 Gb/s port; frames are counted on the wire (the
// MaxFrameSize and 42 octets), and the largest interfering frame is 1542.
//
// Class A, one stream of 100-octet frames, one per interval:
//   idleSlope = 142 x 8 x 8000          =    9,088,000 bit/s  (9088 kbit/s)
//   sendSlope = 9,088,000 - 10^9        = -990,912,000 bit/s  (-990912 kbit/s)
//   hiCredit  = 1542 x 9,088,000 / 10^9 =  14.01 -> 15 octets
//   loCredit  = 142 x -990,912,000 / 10^9 = -140.71 -> -141 octets
//
// Class B alone, 150 streams of 64-octet frames, one per interval:
//   idleSlope = 150 x 106 x 8 x 4000    =  508,800,000 bit/s
//   hiCredit  = 1542 x 508,800,000 / 10^9 = 784.57 -> 785
//   loCredit  = 106 x -491,200,000 / 10^9 = -52.07 -> -53
//
// Class B of one such stream beside the class A stream above:
//   hiCredit  = 3,392,000 x (1542 / (10^9 - 9,088,000) + 142 / 10^9)
//             = 3,392,000 x (1.5561e-6 + 0.142e-6) = 5.76 -> 6
//   loCredit  = 106 x (3,392,000 - 10^9) / 10^9 = -105.64 -> -106
TEST(CreditBasedShaperTest, TheWorkedExamplesGiveTheirFigures) {
  EXPECT_EQ(MrpAgent::cbsParameters(kGigabit, 9'088'000, 142, std::nullopt),
            (CbsParameters{9'088'000, -990'912'000, 15, -141}));
  EXPECT_EQ(MrpAgent::cbsParameters(kGigabit, 508'800'000, 106, MrpAgent::HigherClassLoad{}),
            (CbsParameters{508'800'000, -491'200'000, 785, -53}));
  EXPECT_EQ(MrpAgent::cbsParameters(kGigabit, 3'392'000, 106, MrpAgent::HigherClassLoad{9'088'000, 142}),
            (CbsParameters{3'392'000, -996'608'000, 6, -106}));
}

TEST(CreditBasedShaperTest, APortsShapersFollowItsReservations) {
  MrpAgent::PortReservations port(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
  port.reserve({1, MrpAgent::kSrClassA, 9'088'000, 142});
  port.reserve({2, MrpAgent::kSrClassB, 3'392'000, 106});
  EXPECT_EQ(port.shaper(MrpAgent::kSrClassA), (CbsParameters{9'088'000, -990'912'000, 15, -141}));
  EXPECT_EQ(port.shaper(MrpAgent::kSrClassB), (CbsParameters{3'392'000, -996'608'000, 6, -106}));
}

TEST(CreditBasedShaperTest, ExactCreditsAreNotRoundedAndTheSlopesAreInKilobits) {
  // 10% of 1 Gb/s, frames of 1000 octets: hiCredit 154.2 -> 155, loCredit exactly -900.
  const CbsParameters shaper = MrpAgent::cbsParameters(kGigabit, 100'000'000, 1000, std::nullopt);
  EXPECT_EQ(shaper.hiCredit, 155);
  EXPECT_EQ(shaper.loCredit, -900);
  EXPECT_EQ(shaper.idleSlopeKbps(), 100'000);
  EXPECT_EQ(shaper.sendSlopeKbps(kGigabit), -900'000);
  // A slope that is not a whole kbit/s is rounded up, so the reservation fits.
  EXPECT_EQ((CbsParameters{3'392'001, 0, 0, 0}.idleSlopeKbps()), 3393);
}

TEST(CreditBasedShaperTest, TheTcCommandCarriesTheShaperInItsUnits) {
  const CbsParameters shaper{9'088'000, -990'912'000, 15, -141};
  EXPECT_EQ(MrpAgent::tcCommand("eth1", MrpAgent::kSrClassA, kGigabit, shaper),
            "tc qdisc replace dev eth1 parent 100:1 cbs idleslope 9088 sendslope -990912 hicredit 15 locredit -141 "
            "offload 0");
  EXPECT_EQ(MrpAgent::tcCommand("eth1", MrpAgent::kSrClassB, kGigabit, shaper).substr(0, 40),
            "tc qdisc replace dev eth1 parent 100:2 c");
}

}  // namespace
}  // namespace MrpTest
