#include "format/CaptureReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/FileBytes.h"
#include "support/PcapngBuilder.h"
#include "support/TempDir.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using MrpCli::CaptureReader;
using MrpTest::PcapngBuilder;

class CaptureReaderTest : public ::testing::Test {
 protected:
  MrpTest::TempDir dir_;
  const std::string path_ = dir_.file("capture");
};

const Bytes kFrameA(60, 0xa1);
const Bytes kFrameB = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21, 0x02, 0, 0, 0, 0, 1, 0x88, 0xf5, 0x00};

TEST_F(CaptureReaderTest, ReadsPcapngFramesWithEachInterfacesTimestampResolution) {
  PcapngBuilder capture;
  capture.interface(PcapngBuilder::kLinkTypeEthernet)     // interface 0: microseconds
      .interface(PcapngBuilder::kLinkTypeEthernet, 9)     // interface 1: nanoseconds
      .packet(0, 2'500'000, kFrameA)                      // 2.5 s
      .packet(1, 1'700'000'000'123'456'789ULL, kFrameB);  // 1700000000.123456789 s
  MrpTest::writeFileBytes(path_, capture.bytes());
  CaptureReader reader(path_);
  ASSERT_TRUE(reader.ok()) << reader.error();

  const auto first = reader.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->bytes, kFrameA);
  EXPECT_DOUBLE_EQ(first->seconds, 2.5);
  const auto second = reader.next();
  ASSERT_TRUE(second);
  EXPECT_EQ(second->bytes, kFrameB);
  EXPECT_NEAR(second->seconds, 1700000000.123456789, 1e-6);
  EXPECT_FALSE(reader.next());
  EXPECT_TRUE(reader.ok()) << "the end of the file is no error";
}

TEST_F(CaptureReaderTest, KeepsNanosecondsOfANanosecondPcap) {
  Bytes file = {
      0x4d, 0x3c, 0xb2, 0xa1,  // magic: nanosecond timestamps, little-endian
      2,    0,    4,    0,     // version 2.4
      0,    0,    0,    0,     // time zone
      0,    0,    0,    0,     // timestamp accuracy
      0xff, 0xff, 0,    0,     // snapshot length 65535
      1,    0,    0,    0,     // link type 1: Ethernet
      3,    0,    0,    0,     // seconds
      5,    0,    0,    0,     // nanoseconds
      15,   0,    0,    0,     // captured length
      15,   0,    0,    0,     // original length
  };
  file.insert(file.end(), kFrameB.begin(), kFrameB.end());
  MrpTest::writeFileBytes(path_, file);
  CaptureReader reader(path_);
  const auto frame = reader.next();
  ASSERT_TRUE(frame) << reader.error();
  EXPECT_EQ(frame->bytes, kFrameB);
  EXPECT_NEAR(frame->seconds, 3.000000005, 1e-12);
}

TEST_F(CaptureReaderTest, AnEmptyCaptureHasNoFrames) {
  PcapngBuilder capture;
  capture.interface(PcapngBuilder::kLinkTypeEthernet);
  MrpTest::writeFileBytes(path_, capture.bytes());
  CaptureReader reader(path_);
  EXPECT_FALSE(reader.next());
  EXPECT_TRUE(reader.ok()) << reader.error();
}

TEST_F(CaptureReaderTest, StopsForGoodAtACutPcapngBlock) {
  PcapngBuilder capture;
  capture.interface(PcapngBuilder::kLinkTypeEthernet).packet(0, 0, kFrameA).packet(0, 1, kFrameB);
  Bytes file = capture.bytes();
  file.resize(file.size() - 8);
  MrpTest::writeFileBytes(path_, file);
  CaptureReader reader(path_);
  const auto first = reader.next();
  ASSERT_TRUE(first) << reader.error();
  EXPECT_EQ(first->bytes, kFrameA);
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reader.error(), path_ + ": truncated pcapng dump file; tried to read 40 bytes, only got 32");
  EXPECT_FALSE(reader.next()) << "nothing is read after an error";
}

TEST(CaptureReaderOpenTest, ReportsAFileItCannotOpen) {
  CaptureReader reader("/nonexistent/capture.pcapng");
  EXPECT_FALSE(reader.ok());
  EXPECT_EQ(reader.error(), "cannot open '/nonexistent/capture.pcapng'");
  EXPECT_FALSE(reader.next());
}

}  // namespace
