#include "MrpSm/MrpLib.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpLib;

TEST(MrpLibTest, FactoryGivesEveryFieldZeroOrEmpty) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  EXPECT_EQ(static_cast<unsigned>(lib->application()), 0u);
  EXPECT_TRUE(lib->applicationMacAddr().isZero());
  EXPECT_EQ(lib->applicationEtype(), 0u);
  EXPECT_TRUE(!lib->msrpTalkerAdvertiseRx());
  EXPECT_TRUE(!lib->msrpTalkerFailedRx());
  EXPECT_EQ(lib->msrpListenerVectorRx(), Mrp::MsrpListenerAttribute());
  EXPECT_EQ(lib->msrpDomainVectorRx(), Mrp::MsrpDomainAttribute());
  EXPECT_EQ(lib->mvrpVlanVectorRx().vlanId(), 0u);
  EXPECT_TRUE(!lib->msrpTalkerAdvertiseTx());
  EXPECT_TRUE(!lib->msrpTalkerFailedTx());
  EXPECT_EQ(lib->msrpListenerVectorTx(), Mrp::MsrpListenerAttribute());
  EXPECT_EQ(lib->msrpDomainVectorTx(), Mrp::MsrpDomainAttribute());
  EXPECT_EQ(lib->mvrpVlanVectorTx().vlanId(), 0u);
  EXPECT_TRUE(lib->mrpTxPacketContexts().empty());
  EXPECT_TRUE(lib->mrpTxSecondPacketContexts().empty());
  EXPECT_TRUE(lib->mrpOutIntfQueue().empty());
  EXPECT_TRUE(lib->mrpCurrentTxIntf().empty());
  EXPECT_EQ(lib->mrpSm(), nullptr);
}

TEST(MrpLibTest, BaseIndicationsAndRequestsDoNothing) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  const Mrp::MrpParameters p{Velo::IntfId("Ethernet1"), 1, 1};
  EXPECT_FALSE(lib->mrpJoinIndication(p)) << "the base keeps every join";
  lib->mrpLeaveIndication(p);
  lib->mrpLeaveAllIndication(p);
  lib->mrpJoinReq(p);
  lib->mrpLeaveReq(p);
  EXPECT_TRUE(lib->mrpOutIntfQueue().empty());
  EXPECT_TRUE(lib->mrpTxPacketContexts().empty());
}

TEST(MrpLibTest, DerivedAgentHearsIndicationsThroughTheBase) {
  Quarn::Ptr<RecordingMrpLib> agent = new RecordingMrpLib;
  MrpLib& base = *agent;
  const Mrp::MrpParameters p{Velo::IntfId("Ethernet2"), 3, 5};
  base.mrpJoinIndication(p);
  base.mrpLeaveIndication(p);
  base.mrpLeaveAllIndication(p);
  ASSERT_EQ(agent->joins.size(), 1u);
  EXPECT_EQ(agent->joins[0], p);
  EXPECT_EQ(agent->leaves.size(), 1u);
  EXPECT_EQ(agent->leaveAlls.size(), 1u);
}

TEST(MrpLibTest, PacketContextIsCreatesOnceAndRefusesAnotherPacket) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  const Velo::IntfId eth1("Ethernet1");
  auto pkt = Velo::Pkt::pktNew(1500);
  auto context = lib->mrpTxPacketContextIs(eth1, pkt);
  ASSERT_TRUE(context);
  EXPECT_EQ(context->intfId(), eth1);
  EXPECT_EQ(context->pkt(), pkt);
  EXPECT_FALSE(context->curMessage().has_value());
  EXPECT_FALSE(context->curVector().has_value());
  EXPECT_EQ(context->currentAttrType(), 0);
  EXPECT_EQ(lib->mrpTxPacketContextIs(eth1, pkt), context);
  EXPECT_FALSE(lib->mrpTxSecondPacketContext(eth1)) << "the two maps are separate";
  try {
    lib->mrpTxPacketContextIs(eth1, Velo::Pkt::pktNew(1500));
    FAIL() << "a different packet for the same port must be refused";
  } catch (const std::invalid_argument& e) {
    const std::string text = e.what();
    EXPECT_EQ(text.rfind("Reinstantiating the pointer interface where constructor parameter attribute _pkt has a "
                         "different value of",
                         0),
              0u);
    EXPECT_NE(text.find(" than the current value of "), std::string::npos);
    EXPECT_NE(text.find(" not allowed"), std::string::npos);
  }
  lib->mrpTxPacketContextDel(eth1);
  EXPECT_FALSE(lib->mrpTxPacketContext(eth1));
}

TEST(MrpLibTest, SecondPacketContextsDeleteAll) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  lib->mrpTxSecondPacketContextIs(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(1500));
  lib->mrpTxSecondPacketContextIs(Velo::IntfId("Ethernet2"), Velo::Pkt::pktNew(1500));
  EXPECT_EQ(lib->mrpTxSecondPacketContexts().size(), 2u);
  lib->mrpTxSecondPacketContextDelAll();
  EXPECT_TRUE(lib->mrpTxSecondPacketContexts().empty());
}

TEST(MrpLibTest, OutputQueueIsFifoWithIndexesAfterTheTail) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  const Velo::IntfId a("Ethernet1"), b("Ethernet2"), c("Ethernet3");
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(a), 0u);
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(b), 1u);
  lib->mrpOutIntfQueueIs(10, c);
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(a), 11u) << "after the tail, not after the next index";
  EXPECT_EQ(lib->mrpOutIntfQueueDeq(), a);
  lib->mrpOutIntfQueueDel(10);
  EXPECT_EQ(lib->mrpOutIntfQueueDeq(), b);
  EXPECT_EQ(lib->mrpOutIntfQueueDeq(), a);
  EXPECT_TRUE(lib->mrpOutIntfQueue().empty());
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(b), 12u) << "the next index survives an emptied queue";
  lib->mrpOutIntfQueueDelAll();
  EXPECT_TRUE(lib->mrpOutIntfQueue().empty());
}

TEST(MrpLibTest, OutputQueueRefusesWhenTheIndexSpaceIsFull) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  lib->mrpOutIntfQueueIs(std::numeric_limits<std::uint32_t>::max(), Velo::IntfId("Ethernet1"));
  try {
    lib->mrpOutIntfQueueEnq(Velo::IntfId("Ethernet2"));
    FAIL() << "no index is left";
  } catch (const std::range_error& e) {
    EXPECT_STREQ(e.what(), "linkqueue index space full");
  }
  EXPECT_EQ(lib->mrpOutIntfQueue().size(), 1u);
}

// A process that runs for years hands out more than 2^32 indices.
TEST(MrpLibTest, OutputQueueNumbersAgainFromZeroOnceItsIndicesAreUsedUp) {
  Quarn::Ptr<MrpLib> lib = Mrp::mrpLibFactory();
  const Velo::IntfId a("Ethernet1"), b("Ethernet2");
  lib->mrpOutIntfQueueIs(std::numeric_limits<std::uint32_t>::max() - 1, a);
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(b), std::numeric_limits<std::uint32_t>::max());
  lib->mrpOutIntfQueueDeq();
  lib->mrpOutIntfQueueDeq();
  EXPECT_EQ(lib->mrpOutIntfQueueEnq(a), 0u);
  EXPECT_EQ(lib->mrpOutIntfQueueDeq(), a);
}

}  // namespace
}  // namespace MrpTest
