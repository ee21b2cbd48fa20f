#include "MrpModel/MrpParseContext.h"

#include <gtest/gtest.h>

#include <sstream>

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpParameters.h"
#include "MrpModel/MrpRegistrarEvent.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpModel/MrpThreePackedEvent.h"

namespace {

using Mrp::MrpParseContext;

TEST(MrpParseContextTest, StartsEmpty) {
  Quarn::Ptr<MrpParseContext> context = new MrpParseContext("MrpParseContext");
  EXPECT_EQ(context->name(), Quarn::Name("MrpParseContext"));
  EXPECT_TRUE(context->intfId().empty());
  EXPECT_EQ(context->attributeListBytesLeft(), 0u);
  EXPECT_EQ(context->eventsCounter(), 0u);
  EXPECT_FALSE(context->sendTxLvAll());
}

TEST(MrpParseContextTest, AttributeListBytesLeftCountsDown) {
  Quarn::Ptr<MrpParseContext> context = new MrpParseContext("MrpParseContext");
  context->attributeListBytesLeftIs(100);
  context->attributeListBytesLeftDec(30);
  context->attributeListBytesLeftDec(2);
  EXPECT_EQ(context->attributeListBytesLeft(), 68u);
  context->attributeListBytesLeftDec(70);
  EXPECT_EQ(context->attributeListBytesLeft(), 65534u) << "a 16-bit count wraps";
}

TEST(MrpParseContextTest, EventsCounterCountsUp) {
  Quarn::Ptr<MrpParseContext> context = new MrpParseContext("MrpParseContext");
  context->eventsCounterInc(3);
  context->eventsCounterInc();
  EXPECT_EQ(context->eventsCounter(), 4u);
  context->eventsCounterIs(0);
  EXPECT_EQ(context->eventsCounter(), 0u);
}

TEST(MrpParseContextTest, HoldsTheCurrentAttribute) {
  Quarn::Ptr<MrpParseContext> context = new MrpParseContext("MrpParseContext");
  context->intfIdIs(Velo::IntfId("Ethernet4"));
  context->attributeTypeIs(2);
  context->attributeLengthIs(34);
  context->numberOfValuesIs(8191);
  context->leaveAllIs(1);
  context->attributeEventIs(5);
  context->attributeKeyIs(0x0102030405060708ULL);
  context->sendTxLvAllIs(true);
  EXPECT_EQ(context->intfId(), Velo::IntfId("Ethernet4"));
  EXPECT_EQ(context->attributeType(), 2);
  EXPECT_EQ(context->attributeLength(), 34);
  EXPECT_EQ(context->numberOfValues(), 8191);
  EXPECT_EQ(context->leaveAll(), 1);
  EXPECT_EQ(context->attributeEvent(), 5);
  EXPECT_EQ(context->attributeKey(), 0x0102030405060708ULL);
  EXPECT_TRUE(context->sendTxLvAll());
}

template <class T>
std::string text(const T& value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

TEST(MrpEnumTextTest, ValuesPrintTheirNamesAndUnknownCodesTheirNumbers) {
  EXPECT_EQ(text(Mrp::MrpApplication::msrp), "MSRP");
  EXPECT_EQ(text(Mrp::MrpApplication::mvrp), "MVRP");
  EXPECT_EQ(text(static_cast<Mrp::MrpApplication>(7)), "7");
  EXPECT_EQ(text(Mrp::MrpApplicantState::vo), "VO");
  EXPECT_EQ(text(Mrp::MrpApplicantState::lo), "LO");
  EXPECT_EQ(static_cast<unsigned>(Mrp::MrpApplicantState::qp), 10u);
  EXPECT_EQ(text(Mrp::MrpApplicantEvent::txLvAll), "txLA!");
  EXPECT_EQ(static_cast<unsigned>(Mrp::MrpApplicantEvent::noEvent), 13u);
  EXPECT_EQ(text(Mrp::MrpRegistrarState::mt), "MT");
  EXPECT_EQ(text(Mrp::MrpRegistrarEvent::leaveTimer), "leavetimer!");
  EXPECT_EQ(static_cast<unsigned>(Mrp::MrpRegistrarEvent::noEvent), 9u);
  EXPECT_EQ(text(Mrp::MrpThreePackedEvent::joinMt), "JoinMt");
  EXPECT_EQ(static_cast<unsigned>(Mrp::MrpThreePackedEvent::lv), 5u);
}

TEST(MrpParametersTest, PrintsItsFields) {
  EXPECT_EQ(text(Mrp::MrpParameters{Velo::IntfId("Ethernet1"), 1, 6, 10}),
            "Value('Mrp::MrpParameters', ** {'intfId': Ethernet1, 'attributeType': 1, 'attributeEvent': 6, "
            "'attributeKey': 10})");
}

}  // namespace
