// Parses arbitrary bytes as a received MRPDU. The first input byte picks the
// engine: even for MSRP, odd for MVRP; the rest is the MRPDU from its
// ProtocolVersion octet on. Checks only that nothing crashes or reads out of
// bounds (run it with the sanitizers).

#include <cstddef>
#include <cstdint>

#include "../tests/support/EngineBuilder.h"
#include "quarn/Log.h"

namespace {

// The parser logs every malformed frame; the fuzzer has no use for them.
Quarn::DiscardLogSink discardLogSink;
Quarn::Ptr<Mrp::MrpSm> msrpEngine;
Quarn::Ptr<Mrp::MrpSm> mvrpEngine;

// Each frame starts from empty collections, as after the engine's dispatch.
void frameHandled(Mrp::MrpSm& engine) {
  engine.receivedFrame().parseResultsDelAll();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Quarn::logSinkIs(&discardLogSink);
  msrpEngine = MrpTest::EngineBuilder(Mrp::MrpApplication::msrp).build();
  mvrpEngine = MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Mrp::MrpSm& engine = (data[0] & 1) == 0 ? *msrpEngine : *mvrpEngine;
  engine.parseMrpdu(Velo::Pkt::pktNew(data + 1, size - 1));
  frameHandled(engine);
  return 0;
}
