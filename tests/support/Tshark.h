#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace MrpTest {

// Wire-format checks against tshark's dissectors, a reading of the format
// that nobody here wrote.

// One element of a dissection, in document order: a protocol or field name
// ("mrp-msrp.stream_id") and its shown value ("0x0011223344556677"; empty for
// protocols and containers).
struct DissectedField {
  std::string name;
  std::string show;
};
using DissectedFrame = std::vector<DissectedField>;

// Whether a tshark program is on the PATH.
bool tsharkAvailable();

// Dissects `frames` with `tshark -T pdml`, through a pcap file in a fresh
// temporary directory that is removed afterwards: one entry per frame.
// Throws std::runtime_error when tshark cannot be run or fails.
std::vector<DissectedFrame> tsharkDissect(const std::vector<std::vector<std::uint8_t>>& frames);

// For the SetUp() of a test that needs tshark: when tshark is missing, the
// test fails if the environment variable CI is set (CI must run it) and is
// skipped otherwise.
void requireTshark();

}  // namespace MrpTest
