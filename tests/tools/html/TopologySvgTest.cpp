#include "html/TopologySvg.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Occurrences.h"

namespace MrpTest {
namespace {

using MrpCli::ReportData;

// h1 - sw1 = sw2, sw1's p3 blocking, the link sw1:p2 - sw2:p1 cut and
// restored, sw1:p1 - sw2:p2 cut at the end.
ReportData network() {
  ReportData data;
  data.nodes = {{"h1", {"e0"}, true}, {"sw1", {"p1", "p2", "p3"}, false}, {"sw2", {"p1", "p2"}, false}};
  data.links = {{"h1:e0", "sw1:p3", {}},
                {"sw1:p2", "sw2:p1", {{12, 16.5, "cut"}}},
                {"sw1:p1", "sw2:p2", {{20, std::nullopt, "cut"}}}};
  for (const auto& node : data.nodes) {
    for (const auto& port : node.ports) data.ports[{node.name, port}];
  }
  data.ports[{"sw1", "p3"}].role = "alternate";
  return data;
}

const std::string svg = MrpCli::topologySvg(network());

TEST(TopologySvgTest, IsOneSvgElementWithoutNamespacesOrComments) {
  EXPECT_EQ(svg.rfind("<svg", 0), 0u);
  EXPECT_EQ(svg.find("xmlns"), std::string::npos);
  EXPECT_EQ(svg.find("<!--"), std::string::npos);
  EXPECT_EQ(svg.find("http"), std::string::npos);
}

struct ElementCase {
  std::string literal;
  std::size_t count;
};

// Graphviz writes a "-" in an id as "&#45;", which a page reads as "-".
class TopologySvgElementTest : public ::testing::TestWithParam<ElementCase> {};

TEST_P(TopologySvgElementTest, Draws) {
  EXPECT_EQ(occurrences(svg, GetParam().literal), GetParam().count) << GetParam().literal;
}

INSTANTIATE_TEST_SUITE_P(
    Network, TopologySvgElementTest,
    ::testing::Values(ElementCase{"<g id=\"node&#45;", 3}, ElementCase{"\" class=\"node\">", 3},
                      ElementCase{"<g id=\"link&#45;", 3}, ElementCase{"\" class=\"edge\">", 3},
                      ElementCase{"<g id=\"node&#45;h1\" class=\"node\">\n<title>h1</title>\n<ellipse", 1},
                      ElementCase{"<title>sw1</title>\n<path", 1},
                      ElementCase{">p3 (alternate)</text>", 1},
                      ElementCase{">cut 12&#45;16.5 s</text>", 1},
                      ElementCase{">cut at 20 s</text>", 1},
                      ElementCase{"stroke-dasharray", 1}));

}  // namespace
}  // namespace MrpTest
