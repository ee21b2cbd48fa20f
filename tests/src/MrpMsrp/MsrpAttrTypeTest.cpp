#include "MrpMsrp/MsrpAttrType.h"

#include <gtest/gtest.h>

#include <sstream>

#include "MrpMsrp/MsrpListenerEvent.h"

namespace {

using Mrp::MsrpAttrType;
using Mrp::MsrpListenerEvent;

template <class Enum>
std::string textOf(Enum value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

struct AttrTypeCase {
  MsrpAttrType type;
  unsigned code;
  const char* text;
};

TEST(MsrpAttrTypeTest, CodesAndNamesAreThoseOfTheWire) {
  for (const AttrTypeCase& c : {AttrTypeCase{MsrpAttrType::invalidAttribute, 0, "invalidAttribute"},
                                AttrTypeCase{MsrpAttrType::talkerAdvertise, 1, "talkerAdvertise"},
                                AttrTypeCase{MsrpAttrType::talkerFailed, 2, "talkerFailed"},
                                AttrTypeCase{MsrpAttrType::listenerVector, 3, "listenerVector"},
                                AttrTypeCase{MsrpAttrType::domainVector, 4, "domainVector"}}) {
    EXPECT_EQ(static_cast<unsigned>(c.type), c.code);
    EXPECT_EQ(textOf(c.type), c.text);
    EXPECT_EQ(Mrp::msrpAttrTypeFromText(c.text), c.type);
  }
}

TEST(MsrpAttrTypeTest, UnnamedCodePrintsAndReadsAsItsNumber) {
  EXPECT_EQ(textOf(static_cast<MsrpAttrType>(9)), "9");
  EXPECT_EQ(Mrp::msrpAttrTypeFromText("9"), static_cast<MsrpAttrType>(9));
  EXPECT_EQ(Mrp::msrpAttrTypeFromText("3"), MsrpAttrType::listenerVector);
  EXPECT_FALSE(Mrp::msrpAttrTypeFromText("256"));
  EXPECT_FALSE(Mrp::msrpAttrTypeFromText("TalkerAdvertise"));
  EXPECT_FALSE(Mrp::msrpAttrTypeFromText(""));
}

TEST(MsrpAttrTypeTest, ListenerEventReadsBackFromItsName) {
  for (MsrpListenerEvent e : {MsrpListenerEvent::ignore, MsrpListenerEvent::askingFailed, MsrpListenerEvent::ready,
                              MsrpListenerEvent::readyFailed}) {
    EXPECT_EQ(Mrp::msrpListenerEventFromText(textOf(e)), e);
  }
  EXPECT_EQ(textOf(MsrpListenerEvent::readyFailed), "readyFailed");
  EXPECT_FALSE(Mrp::msrpListenerEventFromText("Ready"));
}

}  // namespace
