#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpListenerStreamAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"

namespace {

using namespace Mrp;

template <class Record>
std::string textOf(const Record& value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

// The record prints as `text` and reads back from it.
template <class Record>
void expectText(const Record& value, const std::string& text) {
  EXPECT_EQ(textOf(value), text);
  EXPECT_EQ(Record::fromString(text), value) << text;
}

const std::string kFrameText = "Value('Mrp::DataFrameParameters', ** {'dmac': 91:e0:f0:00:fe:00, 'vlanId': 2748})";
const std::string kTspecText = "Value('Mrp::Tspec', ** {'maxFrameSize': 1500, 'maxIntervalFrames': 2})";
const std::string kPriorityText = "Value('Mrp::PriorityAndRank', ** {'priority': 3, 'rank': 1})";
const std::string kTalkerText =
    "Value('Mrp::MsrpTalkerAdvertiseAttribute', ** {'streamId': 4822678189205111, 'frame': " + kFrameText +
    ", 'tSpec': " + kTspecText + ", 'priorityAndRank': " + kPriorityText + ", 'accumulatedLatency': 16909060})";
const std::string kFailureText =
    "Value('Mrp::FailureInformation', ** {'bridgeId': 9223559760427478783, 'failureCode': 9})";
const std::string kFailedText =
    "Value('Mrp::MsrpTalkerFailedAttribute', ** {'talkerAdvertiseAttribute': " + kTalkerText +
    ", 'failureInformation': " + kFailureText + "})";

const MsrpTalkerAdvertiseAttribute kTalker(0x0011223344556677ULL,
                                           DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00), 2748),
                                           Tspec(1500, 2), PriorityAndRank(3, 1), 0x01020304);
const MsrpTalkerFailedAttribute kFailed(kTalker, FailureInformation(0x8000aabbccddeeffULL, 9));

TEST(ValueTextTest, TalkerPartsPrintAndReadBack) {
  expectText(kTalker.frame(), kFrameText);
  expectText(kTalker.tSpec(), kTspecText);
  expectText(kTalker.priorityAndRank(), kPriorityText);
  expectText(kFailed.failureInformation(), kFailureText);
}

TEST(ValueTextTest, TalkersPrintTheirPartsNestedAndReadBack) {
  expectText(kTalker, kTalkerText);
  expectText(kFailed, kFailedText);
  expectText(MsrpTalkerAdvertiseAttribute(), textOf(MsrpTalkerAdvertiseAttribute()));
  EXPECT_NE(textOf(MsrpTalkerFailedAttribute())
                .find("{'streamId': 0, 'frame': Value('Mrp::DataFrameParameters', ** "
                      "{'dmac': 00:00:00:00:00:00, 'vlanId': 0})"),
            std::string::npos);
}

TEST(ValueTextTest, ListenerDomainAndStreamPrintAndReadBack) {
  expectText(MsrpListenerAttribute(7, MsrpListenerEvent::ready),
             "Value('Mrp::MsrpListenerAttribute', ** {'streamId': 7, 'listenerEvent': ready})");
  expectText(
      MsrpListenerAttribute(UINT64_MAX, MsrpListenerEvent::askingFailed),
      "Value('Mrp::MsrpListenerAttribute', ** {'streamId': 18446744073709551615, 'listenerEvent': askingFailed})");
  expectText(MsrpListenerAttribute(1, static_cast<MsrpListenerEvent>(7)),
             "Value('Mrp::MsrpListenerAttribute', ** {'streamId': 1, 'listenerEvent': 7})");
  expectText(MsrpListenerStreamAttribute(42), "Value('Mrp::MsrpListenerStreamAttribute', ** {'streamId': 42})");
  expectText(MsrpDomainAttribute(6, 255, 4095),
             "Value('Mrp::MsrpDomainAttribute', ** {'srClassId': 6, 'srClassPriority': 255, 'srClassVID': 4095})");
}

TEST(ValueTextTest, FieldsMayComeInAnyOrder) {
  EXPECT_EQ(Tspec::fromString("Value('Mrp::Tspec', ** {'maxIntervalFrames': 2, 'maxFrameSize': 1500})"),
            Tspec(1500, 2));
}

TEST(ValueTextTest, MalformedTextIsRefused) {
  EXPECT_FALSE(DataFrameParameters::fromString(""));
  EXPECT_FALSE(DataFrameParameters::fromString(kTspecText)) << "another type";
  EXPECT_FALSE(
      DataFrameParameters::fromString("Value('Mrp::DataFrameParameters', ** {'dmac': 91:e0:f0:00:fe, 'vlanId': 1})"));
  EXPECT_FALSE(DataFrameParameters::fromString(
      "Value('Mrp::DataFrameParameters', ** {'dmac': 91:e0:f0:00:fe:00, 'vlanId': 65536})"));
  EXPECT_FALSE(Tspec::fromString("Value('Mrp::Tspec', ** {'maxFrameSize': -1, 'maxIntervalFrames': 2})"));
  EXPECT_FALSE(PriorityAndRank::fromString("Value('Mrp::PriorityAndRank', ** {'priority': 8, 'rank': 0})"));
  EXPECT_FALSE(PriorityAndRank::fromString("Value('Mrp::PriorityAndRank', ** {'priority': 0, 'rank': 2})"));
  EXPECT_FALSE(FailureInformation::fromString(
      "Value('Mrp::FailureInformation', ** {'bridgeId': 18446744073709551616, 'failureCode': 9})"));
  EXPECT_FALSE(
      FailureInformation::fromString("Value('Mrp::FailureInformation', ** {'bridgeId': 1, 'failureCode': 256})"));
  EXPECT_FALSE(MsrpListenerAttribute::fromString(
      "Value('Mrp::MsrpListenerAttribute', ** {'streamId': 7, 'listenerEvent': bogus})"));
  EXPECT_FALSE(
      MsrpListenerStreamAttribute::fromString("Value('Mrp::MsrpListenerStreamAttribute', ** {'streamId': x})"));
  EXPECT_FALSE(MsrpDomainAttribute::fromString(
      "Value('Mrp::MsrpDomainAttribute', ** {'srClassId': 256, 'srClassPriority': 3, 'srClassVID': 2})"));
  std::string badInner = kFailedText;
  badInner.replace(badInner.find("'rank': 1"), 9, "'rank': 5");
  EXPECT_FALSE(MsrpTalkerFailedAttribute::fromString(badInner)) << "a malformed nested value";
  EXPECT_FALSE(MsrpTalkerAdvertiseAttribute::fromString(kFailedText)) << "another type";
}

TEST(ValueTextTest, EveryCutOfATalkerFailedTextIsRefused) {
  for (std::size_t n = 0; n < kFailedText.size(); ++n) {
    const std::string cut = kFailedText.substr(0, n);
    ASSERT_FALSE(MsrpTalkerFailedAttribute::fromString(cut)) << cut;
  }
}

}  // namespace
