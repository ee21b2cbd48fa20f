#include "support/PamEngineFixture.h"

#include <algorithm>

#include "support/MrpSmPamPeer.h"
#include "velo/PamFactory.h"

namespace MrpTest {

PamEngineFixture::PamEngineFixture() : pamFactory(new Velo::MemPamFactory) {
  Mrp::MrpSmPamPeer::pamFilterProgramClear();
}

PamEngineFixture::~PamEngineFixture() { Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData); }

Quarn::Ptr<Velo::MemPam> PamEngineFixture::wireNew(const std::string& name) {
  Quarn::Ptr<Velo::MemWire> wire =
      new Velo::MemWire(Velo::IntfId(name), kEngineMac, Velo::IntfId(name + "-peer"), kTestMac, clock);
  pamFactory->pamIs(wire->a());
  return wire->b();
}

Quarn::Ptr<Velo::MemPam> PamEngineFixture::portUp(Mrp::MrpSm& engine, const std::string& name) {
  Quarn::Ptr<Velo::MemPam> testEnd = wireNew(name);
  mrpLib->mrpInterfaceEnable(Velo::IntfId(name));
  EXPECT_TRUE(engine.pamCollection()->intfPam(Velo::IntfId(name))) << name << " has no socket";
  return testEnd;
}

Quarn::Ptr<Velo::MemPam> PamEngineFixture::enginePam(const std::string& name) const {
  return pamFactory->pam(Velo::IntfId(name));
}

void PamEngineFixture::inject(Velo::MemPam& testEnd, const Bytes& frame) {
  EXPECT_TRUE(testEnd.txPkt(*pktOf(frame)));
  deliver();
}

std::vector<Bytes> PamEngineFixture::received(Velo::MemPam& testEnd) {
  std::vector<Bytes> frames;
  while (Quarn::Ptr<Velo::Pkt> pkt = testEnd.rxPkt()) frames.push_back(bytesOf(*pkt));
  return frames;
}

Bytes bytesOf(const Velo::Pkt& pkt) { return Bytes(pkt.data(), pkt.data() + pkt.bytes()); }

Quarn::Ptr<Velo::Pkt> pktOf(const Bytes& bytes) { return Velo::Pkt::pktNew(bytes.data(), bytes.size()); }

Bytes withEtherType(Bytes frame, std::uint16_t etherType) {
  frame[12] = static_cast<std::uint8_t>(etherType >> 8);
  frame[13] = static_cast<std::uint8_t>(etherType);
  return frame;
}

Bytes withDmac(Bytes frame, const Velo::EthAddr& dmac) {
  std::copy(dmac.octets().begin(), dmac.octets().end(), frame.begin());
  return frame;
}

}  // namespace MrpTest
