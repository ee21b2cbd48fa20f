#pragma once

#include "MrpSm/MrpTxPorts.h"

namespace Mrp {

class MrpSm;

// The engine's ports as its transmitter sees them: the packet-access
// collection, the physical ports' status, the configuration's flooding flag
// and the engine's counters, each read when asked, since the engine creates
// them after it attaches.
class MrpSmTxPorts final : public MrpTxPorts {
 public:
  explicit MrpSmTxPorts(const MrpSm& sm) : sm_(sm) {}

  Quarn::Ptr<Velo::Pam> txPam(const Velo::IntfId& intfId) const override;
  std::uint32_t txMtu(const Velo::IntfId& intfId) const override;
  bool txFlooding() const override;
  std::uint8_t txProtocolVersion() const override;
  void numOfPktsTransmittedInc() override;

 private:
  const MrpSm& sm_;
};

}  // namespace Mrp
