#pragma once

#include "quarn/Clock.h"
#include "quarn/ClockScope.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"
#include "velo/MemPam.h"
#include "velo/PamFactoryScope.h"

namespace MrpTest {

// What engines under test run on: a simulated clock and ports on in-memory
// wires, the process's clock and socket factory while the host lives. Engines
// built on it must go before it does.
// Header-only: the benchmarks and fuzz targets use it too.
class SimHost {
 public:
  SimHost() = default;
  SimHost(const SimHost&) = delete;
  SimHost& operator=(const SimHost&) = delete;

  Quarn::SimClock& clock() const { return *clock_; }
  const Quarn::Ptr<Quarn::SimClock>& clockPtr() const { return clock_; }
  Velo::MemPamFactory& pamFactory() const { return *pamFactory_; }
  const Quarn::Ptr<Velo::MemPamFactory>& pamFactoryPtr() const { return pamFactory_; }

  // Plugs port `intfId` (address `ethAddr`) into a new wire to `farIntfId`
  // (address `farEthAddr`); returns the far end, which nobody opens.
  Quarn::Ptr<Velo::MemPam> wireNew(const Velo::IntfId& intfId, const Velo::EthAddr& ethAddr,
                                   const Velo::IntfId& farIntfId, const Velo::EthAddr& farEthAddr) const {
    Quarn::Ptr<Velo::MemWire> wire = new Velo::MemWire(intfId, ethAddr, farIntfId, farEthAddr, clock_);
    pamFactory_->pamIs(wire->a());
    return wire->b();
  }

 private:
  Quarn::Ptr<Quarn::SimClock> clock_ = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> pamFactory_ = new Velo::MemPamFactory;
  Quarn::System::ClockScope clockScope_{clock_};
  Velo::PamFactoryScope pamFactoryScope_{pamFactory_};
};

}  // namespace MrpTest
