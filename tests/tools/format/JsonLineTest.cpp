#include "format/JsonLine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Json = nlohmann::ordered_json;

struct JsonCase {
  const char* name;
  Json value;
  std::string line;
};

class JsonLineTest : public ::testing::TestWithParam<JsonCase> {};

TEST_P(JsonLineTest, PrintsOneLineWithASpaceAfterEachSeparator) {
  EXPECT_EQ(MrpCli::jsonLine(GetParam().value), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    Values, JsonLineTest,
    ::testing::Values(
        JsonCase{"MembersInInsertionOrder", Json{{"b", 1}, {"a", "x"}}, R"({"b": 1, "a": "x"})"},
        JsonCase{"Nested", Json{{"list", {1, 2, Json{{"k", true}}}}, {"o", Json{{"n", nullptr}}}},
                 R"({"list": [1, 2, {"k": true}], "o": {"n": null}})"},
        JsonCase{"EmptyContainers", Json{{"a", Json::array()}, {"o", Json::object()}}, R"({"a": [], "o": {}})"},
        JsonCase{"LargeUnsignedNumbers", Json{{"numOfMalformedPkts", 18446744073709551615ULL}},
                 R"({"numOfMalformedPkts": 18446744073709551615})"},
        JsonCase{"EscapedStringsAndKeys", Json{{"q\"\\", "line\nbreak\ttab"}}, R"({"q\"\\": "line\nbreak\ttab"})"},
        JsonCase{"Scalar", Json("text"), R"("text")"}),
    [](const ::testing::TestParamInfo<JsonCase>& info) { return std::string(info.param.name); });

}  // namespace
