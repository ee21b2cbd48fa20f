#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/EngineFixture.h"
#include "support/VlanTag.h"
#include "velo/MemPam.h"
#include "velo/PamFactoryScope.h"
#include "velo/Pkt.h"

namespace MrpTest {

using Bytes = std::vector<std::uint8_t>;

// An engine fixture whose ports are in-memory wires: the engine's socket of
// a port is one end, the test holds the other end, on the fixture's
// simulated clock. The process's socket filter starts unbuilt, as in a
// fresh process.
class PamEngineFixture : public EngineFixture {
 protected:
  PamEngineFixture();
  ~PamEngineFixture() override;

  // Plugs port `name` into a new wire; returns the test's end.
  Quarn::Ptr<Velo::MemPam> wireNew(const std::string& name);
  // A new wire for port `name`, enabled on `engine` so that its socket is
  // open; returns the test's end.
  Quarn::Ptr<Velo::MemPam> portUp(Mrp::MrpSm& engine, const std::string& name);
  // The engine's end of port `name`.
  Quarn::Ptr<Velo::MemPam> enginePam(const std::string& name) const;

  // Delivers everything sent so far (in-memory wires deliver through the clock).
  void deliver() { clock->advance(0); }
  // Sends `frame` from the test's end and delivers it.
  void inject(Velo::MemPam& testEnd, const Bytes& frame);
  // The frames waiting at the test's end, oldest first.
  static std::vector<Bytes> received(Velo::MemPam& testEnd);

  Quarn::Ptr<Velo::MemPamFactory> pamFactory;

 private:
  Velo::PamFactoryScope pamFactoryScope_{pamFactory};
};

// The test end's own address; the engine's end of a port is kEngineMac.
inline const Velo::EthAddr kTestMac(0x02, 0x00, 0x00, 0x00, 0x00, 0x01);
inline const Velo::EthAddr kEngineMac(0x02, 0x00, 0x00, 0x00, 0x00, 0x02);

Bytes bytesOf(const Velo::Pkt& pkt);
Quarn::Ptr<Velo::Pkt> pktOf(const Bytes& bytes);
// `frame` with its EtherType (bytes 12-13) replaced.
Bytes withEtherType(Bytes frame, std::uint16_t etherType);
// `frame` with its destination address replaced.
Bytes withDmac(Bytes frame, const Velo::EthAddr& dmac);

}  // namespace MrpTest
