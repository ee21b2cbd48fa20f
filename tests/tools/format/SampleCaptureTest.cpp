#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "format/CaptureWriter.h"
#include "support/FileBytes.h"
#include "support/FrameBuilder.h"
#include "support/TempDir.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using MrpTest::FrameBuilder;

// The capture the README decodes, made with the engine's own encoder.
// MRP_REGENERATE_SAMPLES=1 rewrites it; review the diff before committing.
const std::string kSamplePath = std::string(MRP_SOURCE_DIR) + "/samples/sample.pcap";
const Velo::EthAddr kSource(0x02, 0x00, 0x00, 0x00, 0x00, 0x01);

Bytes mvrpFrame() {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  FrameBuilder b(*lib, Mrp::MrpApplication::mvrp);
  // VLANs 10 and 11 joined, 12 leaving.
  b.message(1).vlan(Mrp::MvrpVlanAttribute(10), 1).append(1).append(5);
  return b.frame(kSource);
}

Bytes msrpFrame() {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  FrameBuilder b(*lib, Mrp::MrpApplication::msrp);
  Mrp::MsrpTalkerAdvertiseAttribute talker;
  talker.streamIdIs(0x0200000000010001ULL);
  talker.frameIs(Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00), 2));
  talker.tSpecIs(Mrp::Tspec(256, 1));
  talker.priorityAndRankIs(Mrp::PriorityAndRank(3, 1));
  talker.accumulatedLatencyIs(1000);
  Mrp::MsrpListenerAttribute listener;
  listener.streamIdIs(0x0200000000010001ULL);
  listener.listenerEventIs(Mrp::MsrpListenerEvent::ready);
  // Two streams advertised, both listened to, in SR class A (6, priority 3, VID 2).
  b.message(1).talker(talker, 1).append(1);
  b.message(3).listener(listener, 1).appendListener(1, Mrp::MsrpListenerEvent::ready);
  b.message(4).domain(Mrp::MsrpDomainAttribute(6, 3, 2), 1);
  return b.frame(kSource);
}

// The MVRP frame again, behind a VLAN tag (VID 5).
Bytes taggedMvrpFrame() {
  Bytes frame = mvrpFrame();
  frame.insert(frame.begin() + 12, {0x81, 0x00, 0x00, 0x05});
  return frame;
}

Bytes otherFrame() {
  return {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x02, 0, 0, 0, 0, 1, 0x08, 0x06, 0, 1, 8, 0, 6, 4, 0, 1};
}

// The frames a second apart, from the epoch, so that the file is the same
// on every run.
Bytes sampleCapture() {
  MrpTest::TempDir dir;
  const std::string path = dir.file("sample.pcap");
  {
    MrpCli::CaptureWriter writer(path);
    Quarn::Seconds seconds = 0;
    for (const Bytes& frame : {mvrpFrame(), msrpFrame(), taggedMvrpFrame(), otherFrame()}) {
      writer.write(seconds++, frame);
    }
  }
  return MrpTest::readFileBytes(path);
}

TEST(SampleCaptureTest, ShippedSampleIsWhatTheEncoderMakes) {
  const Bytes expected = sampleCapture();
  if (const char* regenerate = std::getenv("MRP_REGENERATE_SAMPLES"); regenerate && std::string(regenerate) == "1") {
    MrpTest::writeFileBytes(kSamplePath, expected);
  }
  Bytes shipped;
  ASSERT_NO_THROW(shipped = MrpTest::readFileBytes(kSamplePath))
      << kSamplePath << " is missing; run with MRP_REGENERATE_SAMPLES=1";
  EXPECT_EQ(shipped, expected) << "the encoder changed; regenerate with MRP_REGENERATE_SAMPLES=1 and review";
}

}  // namespace
