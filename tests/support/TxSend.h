#pragma once

#include <cstdint>
#include <string>

#include "MrpSm/MrpLib.h"
#include "support/EngineScenario.h"
#include "velo/IntfId.h"

namespace MrpTest {

// Puts one attribute event of `value` into the first (or second) transmit
// packet of `port`, as the applicant's send operations do: the value goes
// into the transmit field of its type, then mrpSendAttributeIntf.
template <class Value>
void sendIntf(Mrp::MrpLib& lib, const std::string& port, const Value& value, std::uint8_t event,
              bool secondPktContext = false) {
  TxSlot<Value>::field(lib) = value;
  const Velo::IntfId intfId(port);
  lib.mrpSendAttributeIntf({intfId, TxSlot<Value>::kType, event}, intfId, secondPktContext);
}

// A Talker Advertise for stream `streamId` to destination
// 91:E0:F0:00:FE:`dmacLow` in VLAN 2: MaxFrameSize 128, MaxIntervalFrames 1,
// priority 3, rank 0, AccumulatedLatency 4096. Consecutive stream ids with
// consecutive addresses continue one vector.
inline Mrp::MsrpTalkerAdvertiseAttribute talkerAdvertise(std::uint64_t streamId, std::uint8_t dmacLow) {
  return {streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xE0, 0xF0, 0x00, 0xFE, dmacLow), 2),
          Mrp::Tspec(128, 1), Mrp::PriorityAndRank(3, 0), 4096};
}

// The 25 octets of that Talker Advertise on the wire.
inline Bytes talkerAdvertiseOctets(std::uint64_t streamId, std::uint8_t dmacLow) {
  Bytes octets;
  for (int shift = 56; shift >= 0; shift -= 8) octets.push_back(static_cast<std::uint8_t>(streamId >> shift));
  const Bytes rest = {
      0x91, 0xE0, 0xF0, 0x00, 0xFE, dmacLow,  // Destination_Address
      0x00, 0x02,                             // VLAN_identifier
      0x00, 0x80,                             // MaxFrameSize
      0x00, 0x01,                             // MaxIntervalFrames
      0x60,                                   // priority 3, rank 0
      0x00, 0x00, 0x10, 0x00,                 // AccumulatedLatency
  };
  octets.insert(octets.end(), rest.begin(), rest.end());
  return octets;
}

}  // namespace MrpTest
