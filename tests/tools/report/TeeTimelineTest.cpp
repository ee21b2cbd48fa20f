#include "report/TeeTimeline.h"

#include <gtest/gtest.h>

#include <sstream>

#include "report/JsonTimeline.h"
#include "report/TextTimeline.h"

namespace {

using MrpAgent::AttributeValue;
using MrpCli::TimelinePlace;

// A few events of each kind a run tells, to `timeline`.
void tell(MrpCli::Timeline& timeline) {
  const TimelinePlace place{1.5, "sw1", "p1", std::nullopt};
  timeline.requested(place, AttributeValue(Mrp::MvrpVlanAttribute(10)), false);
  timeline.indicated(place, AttributeValue(Mrp::MvrpVlanAttribute(11)), true);
  timeline.forgot(place, AttributeValue(Mrp::MvrpVlanAttribute(12)), MrpAgent::Bridge::ForgetCause::blocked);
  timeline.linkChanged(2, "sw1:p1", "sw2:p1", false);
  timeline.roleChanged(place, Stp::MstiPortStatus::Role::designated, Stp::MstiPortStatus::Role::alternate);
  timeline.portChanged(place, "down");
  timeline.registrations(TimelinePlace{3, "sw1", "", std::nullopt}, {});
  timeline.flush();
}

TEST(TeeTimelineTest, EachTimelineHearsWhatItWouldAlone) {
  std::ostringstream aloneText, aloneJson, teeText, teeJson;
  MrpCli::TextTimeline text(aloneText, {"sw1"}, {"p1"});
  MrpCli::JsonTimeline json(aloneJson);
  tell(text);
  tell(json);
  MrpCli::TextTimeline teedText(teeText, {"sw1"}, {"p1"});
  MrpCli::JsonTimeline teedJson(teeJson);
  MrpCli::TeeTimeline tee({&teedText, &teedJson});
  tell(tee);
  EXPECT_EQ(teeText.str(), aloneText.str());
  EXPECT_EQ(teeJson.str(), aloneJson.str());
  EXPECT_NE(teeText.str().find("leave VLAN 12 (blocked)"), std::string::npos);
}

}  // namespace
