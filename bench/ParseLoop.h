#pragma once

// The parse-only measurement, shared by the programs that compare with it.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "velo/Pkt.h"

namespace MrpBench {

// Parses `pdu` (from its ProtocolVersion octet on) once per iteration: the
// values are read and collected as the receive path collects them for its
// dispatch, and dropped. The packet is built from `pdu` each time, since
// parsing consumes it. items_per_second counts `values`.
inline void parseLoop(benchmark::State& state, Mrp::MrpSm& engine, const std::vector<std::uint8_t>& pdu,
                      std::size_t values) {
  for (auto _ : state) {
    engine.parseMrpdu(Velo::Pkt::pktNew(pdu.data(), pdu.size()));
    benchmark::DoNotOptimize(engine.parseContext()->eventsCounter());
    engine.receivedFrame().parseResultsDelAll();
  }
  if (engine.mrpCounters()->numOfMalformedPkts() != 0) state.SkipWithError("malformed PDU");
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values));
  state.counters["pdu_octets"] = static_cast<double>(pdu.size());
}

}  // namespace MrpBench
