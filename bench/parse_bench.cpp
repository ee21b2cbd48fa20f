// Receive parsing: one MRPDU parsed in place and its values collected, per
// iteration. items_per_second counts attribute values.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "ParseLoop.h"
#include "support/EngineBuilder.h"
#include "support/MrpduFrames.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t kAllVlans = 4094;
constexpr std::uint8_t kJoinIn = 1;
constexpr std::size_t kMaxPdu = 1500;

void putU16(Bytes& out, std::uint16_t value) {
  out.push_back(static_cast<std::uint8_t>(value >> 8));
  out.push_back(static_cast<std::uint8_t>(value));
}

// One Talker Advertise message of single-value vectors (unrelated streams),
// as many as fit in one PDU.
constexpr std::size_t kTalkerVectorOctets = 2 + 25 + 1;
constexpr std::size_t kTalkerVectors = (kMaxPdu - 1 - 4 - 2 - 2) / kTalkerVectorOctets;

Bytes msrpTalkersPdu() {
  Bytes pdu = {0x00, 0x01, 0x19};  // ProtocolVersion, Talker Advertise, AttributeLength 25
  putU16(pdu, static_cast<std::uint16_t>(kTalkerVectors * kTalkerVectorOctets + 2));  // AttributeListLength
  for (std::size_t v = 0; v < kTalkerVectors; ++v) {
    putU16(pdu, 1);  // VectorHeader: 1 value
    const Bytes firstValue = {
        0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x10, static_cast<std::uint8_t>(v * 2),  // StreamID
        0x91, 0xE0, 0xF0, 0x00, 0xFE, static_cast<std::uint8_t>(v * 2),              // Destination_Address
        0x00, 0x02,                                                                  // VLAN_identifier
        0x00, 0x80, 0x00, 0x01,                                                      // TSpec
        0x60,                                                                        // priority 3, rank 0
        0x00, 0x00, 0x10, 0x00,                                                      // AccumulatedLatency
    };
    pdu.insert(pdu.end(), firstValue.begin(), firstValue.end());
    pdu.push_back(0x24);  // JoinIn
  }
  putU16(pdu, 0);  // EndMark of the list
  putU16(pdu, 0);  // EndMark of the MRPDU
  return pdu;
}

void BM_ParseMvrpAllVlans(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpSm> engine = MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build();
  MrpBench::parseLoop(state, *engine, MrpTest::Frames::mvrpVlanRunPdu(1, kAllVlans, kJoinIn), kAllVlans);
}
BENCHMARK(BM_ParseMvrpAllVlans);

// The same PDU with flooding on: the values are decoded and keyed, not collected.
void BM_ParseMvrpAllVlansUncollected(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpSm> engine = MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build();
  engine->mrpConfig()->mrpFloodingIs(true);
  MrpBench::parseLoop(state, *engine, MrpTest::Frames::mvrpVlanRunPdu(1, kAllVlans, kJoinIn), kAllVlans);
}
BENCHMARK(BM_ParseMvrpAllVlansUncollected);

void BM_ParseMsrpTalkerAdvertises(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpSm> engine = MrpTest::EngineBuilder(Mrp::MrpApplication::msrp).build();
  MrpBench::parseLoop(state, *engine, msrpTalkersPdu(), kTalkerVectors);
}
BENCHMARK(BM_ParseMsrpTalkerAdvertises);

}  // namespace
