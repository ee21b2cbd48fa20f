#include <gtest/gtest.h>

#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

class MrpSmAttrKeyTest : public EngineFixture {
 protected:
  std::uint64_t txKey(std::uint8_t type) {
    engine->parseContext()->attributeTypeIs(type);
    return engine->mrpGetTxAttributeKey();
  }
  std::uint64_t rxKey(std::uint8_t type) {
    engine->parseContext()->attributeTypeIs(type);
    return engine->mrpGetRxAttributeKey();
  }

  Quarn::Ptr<Mrp::MrpSm> engine;
};

TEST_F(MrpSmAttrKeyTest, MsrpKeysAreStreamIdsAndTheDomainClassId) {
  engine = engineNew(MrpApplication::msrp, false);
  mrpLib->msrpTalkerAdvertiseTx().streamIdIs(0x0011223344556677ULL);
  Mrp::MsrpTalkerAdvertiseAttribute failedTalker;
  failedTalker.streamIdIs(0x8899aabbccddeeffULL);
  mrpLib->msrpTalkerFailedRx().talkerAdvertiseAttributeIs(failedTalker);
  mrpLib->msrpListenerVectorTx().streamIdIs(5);
  mrpLib->msrpDomainVectorRx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 5, 100);

  EXPECT_EQ(txKey(1), 0x0011223344556677ULL);
  EXPECT_EQ(rxKey(1), 0u) << "receive and transmit fields are separate";
  EXPECT_EQ(rxKey(2), 0x8899aabbccddeeffULL);
  EXPECT_EQ(txKey(3), 5u);
  EXPECT_EQ(rxKey(4), 6u);
  EXPECT_EQ(txKey(4), 6u) << "a Domain's key is its class id whatever its priority and VID";
  EXPECT_EQ(txKey(0), 0u);
  EXPECT_EQ(txKey(5), 0u);
}

TEST_F(MrpSmAttrKeyTest, MvrpKeyIsTheVlanId) {
  engine = engineNew(MrpApplication::mvrp, false);
  mrpLib->mvrpVlanVectorTx().vlanIdIs(4094);
  mrpLib->mvrpVlanVectorRx().vlanIdIs(10);
  EXPECT_EQ(txKey(1), 4094u);
  EXPECT_EQ(rxKey(1), 10u);
  EXPECT_EQ(txKey(2), 0u);
}

TEST_F(MrpSmAttrKeyTest, UnknownApplicationHasKeyZero) {
  engine = engineNew(static_cast<MrpApplication>(3), false);
  mrpLib->mvrpVlanVectorTx().vlanIdIs(7);
  mrpLib->msrpTalkerAdvertiseTx().streamIdIs(7);
  EXPECT_EQ(txKey(1), 0u);
  EXPECT_EQ(rxKey(1), 0u);
}

}  // namespace
}  // namespace MrpTest
