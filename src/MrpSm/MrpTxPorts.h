#pragma once

#include <cstdint>

#include "quarn/Ptr.h"
#include "velo/IntfId.h"
#include "velo/Pam.h"

namespace Mrp {

// What a transmitter needs of the engine around it: the ports it sends on
// and the engine's say on sending. The engine supplies one (MrpSmTxPorts);
// a test can supply its own.
class MrpTxPorts {
 public:
  virtual ~MrpTxPorts() = default;

  // The port's packet access; null while the port has none.
  virtual Quarn::Ptr<Velo::Pam> txPam(const Velo::IntfId& intfId) const = 0;
  // The largest frame the port publishes; 0 when it has published none.
  virtual std::uint32_t txMtu(const Velo::IntfId& intfId) const = 0;
  // While MRPDUs are flooded the engine sends none of its own.
  virtual bool txFlooding() const = 0;
  // The ProtocolVersion written into every MRPDU.
  virtual std::uint8_t txProtocolVersion() const = 0;
  // Counts one MRPDU handed to a port.
  virtual void numOfPktsTransmittedInc() = 0;
};

}  // namespace Mrp
