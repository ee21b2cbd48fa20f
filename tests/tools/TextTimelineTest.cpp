#include "TextTimeline.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using MrpAgent::AttributeValue;
using MrpCli::TextTimeline;
using MrpCli::TimelinePlace;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

class TextTimelineTest : public ::testing::Test {
 protected:
  void indicated(double t, const std::string& port, const AttributeValue& value, bool join) {
    timeline.indicated(TimelinePlace{t, "sw1", port}, value, join);
  }
  std::ostringstream out;
  TextTimeline timeline{out, {"sw1"}, {"p1", "p2"}};
};

const AttributeValue kDomain(Mrp::MsrpDomainAttribute(6, 3, 2));

TEST_F(TextTimelineTest, AJoinOfWhatThePortHoldsAlreadyIsShownOnce) {
  indicated(0.1, "p1", kDomain, true);
  indicated(0.1, "p1", kDomain, true);  // the engine indicates every Domain join
  indicated(0.2, "p2", kDomain, true);  // another port
  indicated(11.4, "p1", kDomain, true);
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{
                                    "      time  bridge  port  app   event",
                                    "     0.100  sw1     p1    msrp  join domain class 6 (priority 3, VLAN 2)",
                                    "     0.200  sw1     p2    msrp  join domain class 6 (priority 3, VLAN 2)",
                                }));
}

TEST_F(TextTimelineTest, AChangedValueAndAJoinAfterALeaveAreShown) {
  indicated(1, "p1", kDomain, true);
  indicated(2, "p1", AttributeValue(Mrp::MsrpDomainAttribute(6, 4, 2)), true);
  indicated(3, "p1", kDomain, false);
  indicated(4, "p1", kDomain, true);
  const auto lines = linesOf(out.str());
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[2], "     2.000  sw1     p1    msrp  join domain class 6 (priority 4, VLAN 2)");
  EXPECT_EQ(lines[3], "     3.000  sw1     p1    msrp  leave domain class 6 (priority 3, VLAN 2)");
  EXPECT_EQ(lines[4], "     4.000  sw1     p1    msrp  join domain class 6 (priority 3, VLAN 2)");
}

}  // namespace
