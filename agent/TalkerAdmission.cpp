#include "TalkerAdmission.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace MrpAgent {

std::string failureCodeText(std::uint8_t code) {
  // Every code a bridge may send, for those of other bridges too.
  static constexpr const char* kWords[] = {
      nullptr,
      "insufficient bandwidth",
      "insufficient bridge resources",
      "insufficient bandwidth for traffic class",
      "StreamID in use by another talker",
      "stream destination address already in use",
      "stream preempted by higher rank",
      "reported latency has changed",
      "egress port is not AVB capable",
      "use a different destination address",
      "out of MSRP resources",
      "out of MMRP resources",
      "cannot store destination address",
      "requested priority is not an SR class priority",
      "MaxFrameSize is too large for media",
      "maxFanInPorts limit has been reached",
      "changes in FirstValue for a registered StreamID",
      "VLAN is blocked on this egress port",
      "VLAN tagging is disabled on this egress port",
      "SR class priority mismatch",
  };
  if (code < std::size(kWords) && kWords[code]) return kWords[code];
  return std::string("failure code ").append(std::to_string(code));
}

namespace {

std::optional<FailureCode> refusal(const Mrp::MsrpTalkerAdvertiseAttribute& heard, const StreamClass& streamClass,
                                   const EgressPort& port) {
  if (!streamClass.srClass) return FailureCode::priorityNotSrClass;
  if (streamClass.boundary) return FailureCode::egressPortNotAvbCapable;
  if (port.reservations.reserved(heard.streamId())) return std::nullopt;
  if (!port.reservations.fits(*streamClass.srClass, streamBandwidth(heard.tSpec(), *streamClass.srClass))) {
    return FailureCode::insufficientBandwidth;
  }
  return std::nullopt;
}

std::uint32_t latencyAdded(std::uint32_t latency, std::uint32_t added) {
  const std::uint64_t sum = std::uint64_t{latency} + added;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(sum, std::numeric_limits<std::uint32_t>::max()));
}

}  // namespace

AttributeValue talkerDeclarationOn(const Mrp::MsrpTalkerAdvertiseAttribute& heard, const StreamClass& streamClass,
                                   const EgressPort& port, std::uint64_t bridgeId) {
  Mrp::MsrpTalkerAdvertiseAttribute declared = heard;
  declared.accumulatedLatencyIs(latencyAdded(heard.accumulatedLatency(), port.latencyNs));
  const std::optional<FailureCode> code = refusal(heard, streamClass, port);
  if (!code) return AttributeValue(declared);
  return AttributeValue(
      Mrp::MsrpTalkerFailedAttribute(declared, Mrp::FailureInformation(bridgeId, static_cast<std::uint8_t>(*code))));
}

}  // namespace MrpAgent
