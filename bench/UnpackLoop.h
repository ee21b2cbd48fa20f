#pragma once

// The bare-loop baseline of the receive benchmarks: the least any receiver
// does with a vector's three-packed events.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace MrpBench {

// Unpacks the three events of each packed octet of `pdu`, an MVRP MRPDU of
// one vector of `values` VLANs (support/MrpduFrames.h's mvrpVlanRunPdu),
// counting them by event, once per iteration. items_per_second counts
// `values`.
inline void unpackLoop(benchmark::State& state, const std::vector<std::uint8_t>& pdu, std::size_t values) {
  constexpr std::size_t kPackedStart = 1 + 2 + 2 + 2;  // ProtocolVersion, type and length, VectorHeader, FirstValue
  constexpr unsigned kEvents = 6;                      // New .. Lv
  const std::size_t packedEnd = kPackedStart + (values + 2) / 3;
  std::uint32_t byEvent[kEvents + 1] = {};
  for (auto _ : state) {
    benchmark::DoNotOptimize(pdu.data());
    for (std::size_t i = kPackedStart; i < packedEnd; ++i) {
      const unsigned octet = pdu[i];
      ++byEvent[std::min<unsigned>(octet / 36, kEvents)];
      ++byEvent[octet / 6 % 6];
      ++byEvent[octet % 6];
    }
    benchmark::DoNotOptimize(byEvent);
  }
  std::size_t counted = 0;
  for (std::uint32_t n : byEvent) counted += n;
  if (counted < values * static_cast<std::size_t>(state.iterations())) state.SkipWithError("the events were not read");
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values));
}

}  // namespace MrpBench
