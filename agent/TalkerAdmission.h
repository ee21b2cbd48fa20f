#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "AttributeValue.h"
#include "PortReservations.h"
#include "SrClass.h"

namespace MrpAgent {

// The reasons a bridge refuses a stream on a port, as FailureInformation
// carries them.
enum class FailureCode : std::uint8_t {
  insufficientBandwidth = 1,
  egressPortNotAvbCapable = 8,
  priorityNotSrClass = 13,
};
// "insufficient bandwidth", ... for the codes 1 to 19; "failure code N" for another.
std::string failureCodeText(std::uint8_t code);

// What a bridge knows of one egress port when it decides on a stream there.
struct EgressPort {
  const PortReservations& reservations;
  std::uint32_t latencyNs = 0;
};

// The stream's class here: the class the bridge runs at the stream's
// priority; nullopt when that priority is no SR class priority of the bridge.
struct StreamClass {
  std::optional<SrClass> srClass;
  // No Domain of that class and priority is registered on the egress port.
  bool boundary = false;
};

// What a bridge declares on an egress port for a Talker Advertise it
// registered on another: the advertisement with the port's latency added
// when the stream may be reserved there, else a Talker Failed from
// `bridgeId`. A stream already reserved on the port keeps its bandwidth.
AttributeValue talkerDeclarationOn(const Mrp::MsrpTalkerAdvertiseAttribute& heard, const StreamClass& streamClass,
                                   const EgressPort& port, std::uint64_t bridgeId);

}  // namespace MrpAgent
