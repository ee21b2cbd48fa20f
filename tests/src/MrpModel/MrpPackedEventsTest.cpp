#include "MrpModel/MrpPackedEvents.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <stdexcept>

namespace MrpTest {
namespace {

using Mrp::MsrpListenerEvent;

constexpr std::uint8_t kNew = 0, kJoinIn = 1, kIn = 2, kJoinMt = 3, kMt = 4, kLv = 5;

TEST(MrpPackedEventsTest, JoinInInLvPackToOctet53) {
  std::array<std::uint8_t, 1> area{};
  Mrp::mrpEncodeThreePackedEvent(area.data(), kJoinIn, 1);
  Mrp::mrpEncodeThreePackedEvent(area.data(), kIn, 2);
  Mrp::mrpEncodeThreePackedEvent(area.data(), kLv, 3);
  EXPECT_EQ(area[0], 53);  // (1 * 6 + 2) * 6 + 5
}

TEST(MrpPackedEventsTest, ReadyIgnoreAskingFailedReadyFailedPackToOctet135) {
  std::array<std::uint8_t, 1> area{};
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::ready, 1);
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::ignore, 2);
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::askingFailed, 3);
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::readyFailed, 4);
  EXPECT_EQ(area[0], 135);  // 2 * 64 + 0 * 16 + 1 * 4 + 3
}

// Each value number lands in its octet and position, with its weight.
struct ThreePackedPosition {
  std::uint16_t valueNumber;
  std::array<std::uint8_t, 3> area;  // after writing Lv (5) into a zero area
};

// By its fields: the struct's padding octet is never written.
void PrintTo(const ThreePackedPosition& position, std::ostream* out) {
  *out << "value " << position.valueNumber << " -> {" << int{position.area[0]} << ", " << int{position.area[1]} << ", "
       << int{position.area[2]} << "}";
}

class MrpThreePackedPositionTest : public ::testing::TestWithParam<ThreePackedPosition> {};

TEST_P(MrpThreePackedPositionTest, LvLandsInItsOctetAndPosition) {
  std::array<std::uint8_t, 3> area{};
  Mrp::mrpEncodeThreePackedEvent(area.data(), kLv, GetParam().valueNumber);
  EXPECT_EQ(area, GetParam().area);
}

INSTANTIATE_TEST_SUITE_P(Positions, MrpThreePackedPositionTest,
                         ::testing::Values(ThreePackedPosition{1, {180, 0, 0}},   // e1: 5 * 36
                                           ThreePackedPosition{2, {30, 0, 0}},    // e2: 5 * 6
                                           ThreePackedPosition{3, {5, 0, 0}},     // e3: 5
                                           ThreePackedPosition{4, {0, 180, 0}},   // a fourth value begins octet 2
                                           ThreePackedPosition{6, {0, 5, 0}},
                                           ThreePackedPosition{7, {0, 0, 180}}));

struct FourPackedPosition {
  std::uint16_t valueNumber;
  std::array<std::uint8_t, 2> area;  // after writing readyFailed (3) into a zero area
};

class MrpFourPackedPositionTest : public ::testing::TestWithParam<FourPackedPosition> {};

TEST_P(MrpFourPackedPositionTest, ReadyFailedLandsInItsOctetAndBits) {
  std::array<std::uint8_t, 2> area{};
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::readyFailed, GetParam().valueNumber);
  EXPECT_EQ(area, GetParam().area);
}

INSTANTIATE_TEST_SUITE_P(Positions, MrpFourPackedPositionTest,
                         ::testing::Values(FourPackedPosition{1, {0xC0, 0}},   // bits 7..6
                                           FourPackedPosition{2, {0x30, 0}},   // bits 5..4
                                           FourPackedPosition{3, {0x0C, 0}},   // bits 3..2
                                           FourPackedPosition{4, {0x03, 0}},   // bits 1..0
                                           FourPackedPosition{5, {0, 0xC0}}));  // a fifth value begins octet 2

TEST(MrpPackedEventsTest, ThreePackedRewriteKeepsTheOtherPositions) {
  std::array<std::uint8_t, 1> area{53};  // JoinIn, In, Lv
  Mrp::mrpEncodeThreePackedEvent(area.data(), kJoinMt, 2);
  EXPECT_EQ(area[0], (1 * 6 + 3) * 6 + 5);
  Mrp::mrpEncodeThreePackedEvent(area.data(), kNew, 1);
  EXPECT_EQ(area[0], (0 * 6 + 3) * 6 + 5);
  Mrp::mrpEncodeThreePackedEvent(area.data(), kMt, 3);
  EXPECT_EQ(area[0], (0 * 6 + 3) * 6 + 4);
}

TEST(MrpPackedEventsTest, FourPackedRewriteKeepsTheOtherPositions) {
  std::array<std::uint8_t, 1> area{135};  // ready, ignore, askingFailed, readyFailed
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::askingFailed, 1);
  EXPECT_EQ(area[0], 1 * 64 + 0 * 16 + 1 * 4 + 3);
  Mrp::mrpEncodeFourPackedEvent(area.data(), MsrpListenerEvent::ignore, 4);
  EXPECT_EQ(area[0], 1 * 64 + 0 * 16 + 1 * 4 + 0);
}

TEST(MrpPackedEventsTest, EventsThatDoNotFitAPositionAreRefusedAndWriteNothing) {
  std::array<std::uint8_t, 1> area{53};
  EXPECT_THROW(Mrp::mrpEncodeThreePackedEvent(area.data(), 6, 1), std::out_of_range);
  EXPECT_THROW(Mrp::mrpEncodeThreePackedEvent(area.data(), 255, 2), std::out_of_range);
  EXPECT_THROW(Mrp::mrpEncodeFourPackedEvent(area.data(), static_cast<MsrpListenerEvent>(4), 1), std::out_of_range);
  EXPECT_EQ(area[0], 53);
  try {
    Mrp::mrpCheckThreePackedEvent(6);
    FAIL();
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "MrpThreePackedEvent::value > 5 not allowed");
  }
  try {
    Mrp::mrpCheckFourPackedEvent(static_cast<MsrpListenerEvent>(4));
    FAIL();
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "MsrpListenerEvent::value > 3 not allowed");
  }
}

TEST(MrpPackedEventsTest, ValueNumberZeroIsRefusedAndWritesNothing) {
  std::array<std::uint8_t, 2> area{53, 7};
  EXPECT_THROW(Mrp::mrpEncodeThreePackedEvent(area.data() + 1, kLv, 0), std::out_of_range);
  EXPECT_THROW(Mrp::mrpEncodeFourPackedEvent(area.data() + 1, MsrpListenerEvent::ready, 0), std::out_of_range);
  EXPECT_EQ(area, (std::array<std::uint8_t, 2>{53, 7}));
}

}  // namespace
}  // namespace MrpTest
