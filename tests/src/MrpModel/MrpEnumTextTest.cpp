#include "MrpModel/MrpEnumText.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "MrpModel/MrpRegistrarState.h"
#include "MrpMsrp/MsrpListenerEvent.h"

namespace MrpTest {
namespace {

struct CodeRow {
  unsigned code;
  const char* text;
};

TEST(MrpEnumTextTest, AValueWithoutANameHasItsNumberAsText) {
  const CodeRow rows[] = {{0, "IN"}, {2, "MT"}, {3, "3"}, {10, "10"}, {255, "255"}};
  for (const CodeRow& row : rows) {
    const auto state = static_cast<Mrp::MrpRegistrarState>(row.code);
    EXPECT_STREQ(Mrp::enumText(state), row.text);
    std::ostringstream text;
    text << state;
    EXPECT_EQ(text.str(), row.text);
  }
}

TEST(MrpEnumTextTest, ACodeWiderThanAByteHasItsNumberAsText) {
  EXPECT_STREQ(Mrp::enumText(static_cast<Mrp::MsrpListenerEvent>(4294967295u)), "4294967295");
  EXPECT_STREQ(Mrp::mrpCodeText(1000), "1000");
  EXPECT_STREQ(Mrp::mrpCodeText(18446744073709551615ull), "18446744073709551615");
}

}  // namespace
}  // namespace MrpTest
