#include <gtest/gtest.h>

#include "PortReservations.h"

namespace MrpTest {
namespace {

using MrpAgent::kSrClassA;
using MrpAgent::kSrClassB;
using MrpAgent::PortReservations;
using MrpAgent::SrClass;

constexpr std::uint64_t kGigabit = 1'000'000'000;
constexpr std::uint64_t kMegabit = 1'000'000;

PortReservations::Reservation reservation(std::uint64_t streamId, SrClass srClass, std::uint64_t bandwidth) {
  return {streamId, srClass, bandwidth, 142};
}

TEST(PortReservationsTest, LimitsAddUpOverTheClassesInPriorityOrder) {
  const PortReservations defaults(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
  EXPECT_EQ(defaults.limit(kSrClassA), 750 * kMegabit);
  EXPECT_EQ(defaults.limit(kSrClassB), 750 * kMegabit);
  const PortReservations split(100 * kMegabit, {50, 25});
  EXPECT_EQ(split.limit(kSrClassA), 50 * kMegabit);
  EXPECT_EQ(split.limit(kSrClassB), 75 * kMegabit);
  // More than the whole port is the whole port.
  const PortReservations over(kGigabit, {80, 40});
  EXPECT_EQ(over.limit(kSrClassB), kGigabit);
}

struct FitRow {
  const char* name;
  MrpAgent::DeltaBandwidth delta;
  std::vector<PortReservations::Reservation> reserved;
  SrClass srClass;
  std::uint64_t bandwidth;
  bool fits;
};

// clang-format off
const FitRow kFits[] = {
  {"class A up to its limit exactly", {75, 0}, {reservation(1, kSrClassA, 740 * kMegabit)}, kSrClassA, 10 * kMegabit, true},
  {"class A one bit over",            {75, 0}, {reservation(1, kSrClassA, 740 * kMegabit)}, kSrClassA, 10 * kMegabit + 1, false},
  {"class B takes what A leaves",     {75, 0}, {reservation(1, kSrClassA, 700 * kMegabit)}, kSrClassB, 50 * kMegabit, true},
  {"class B beyond what A leaves",    {75, 0}, {reservation(1, kSrClassA, 700 * kMegabit)}, kSrClassB, 50 * kMegabit + 1, false},
  {"class A ignores class B's",       {50, 25}, {reservation(1, kSrClassB, 300 * kMegabit)}, kSrClassA, 450 * kMegabit, true},
  // Admitted class B streams keep their room: A may not take it.
  {"class A within its own, not B's", {50, 25}, {reservation(1, kSrClassB, 740 * kMegabit)}, kSrClassA, 20 * kMegabit, false},
  {"nothing on a port of no speed",   {75, 0}, {},                                          kSrClassA, 1, false},
  {"a stream of nothing always fits", {75, 0}, {reservation(1, kSrClassA, 750 * kMegabit)}, kSrClassA, 0, true},
};
// clang-format on

TEST(PortReservationsTest, AStreamFitsWhenEveryClassFromItsOwnOnStaysWithinItsLimit) {
  for (const FitRow& row : kFits) {
    SCOPED_TRACE(row.name);
    PortReservations port(std::string_view(row.name).starts_with("nothing") ? 0 : kGigabit, row.delta);
    for (const auto& reserved : row.reserved) port.reserve(reserved);
    EXPECT_EQ(port.fits(row.srClass, row.bandwidth), row.fits);
  }
}

TEST(PortReservationsTest, ReservationsAreKeptInTheOrderMadeAndReleasedByStream) {
  PortReservations port(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
  port.reserve(reservation(7, kSrClassB, 3'392'000));
  port.reserve(reservation(3, kSrClassA, 9'088'000));
  port.reserve(reservation(5, kSrClassA, 9'088'000));
  EXPECT_EQ(port.reservedIn(kSrClassA), 18'176'000u);
  EXPECT_EQ(port.reservedIn(kSrClassB), 3'392'000u);
  EXPECT_EQ(port.reservedUpTo(kSrClassA), 18'176'000u);
  EXPECT_EQ(port.reservedUpTo(kSrClassB), 21'568'000u);
  EXPECT_TRUE(port.reserved(3));
  EXPECT_EQ(port.release(3), reservation(3, kSrClassA, 9'088'000));
  EXPECT_EQ(port.release(3), std::nullopt);
  EXPECT_FALSE(port.reserved(3));
  ASSERT_EQ(port.reservations().size(), 2u);
  EXPECT_EQ(port.reservations()[0].streamId, 7u);
  EXPECT_EQ(port.reservations()[1].streamId, 5u);
}

TEST(PortReservationsTest, OnlyAClassWithReservationsHasAShaper) {
  PortReservations port(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
  EXPECT_EQ(port.shaper(kSrClassA), std::nullopt);
  port.reserve(reservation(1, kSrClassA, 9'088'000));
  ASSERT_TRUE(port.shaper(kSrClassA));
  EXPECT_EQ(port.shaper(kSrClassA)->idleSlope, 9'088'000);
  EXPECT_EQ(port.shaper(kSrClassB), std::nullopt);
}

}  // namespace
}  // namespace MrpTest
