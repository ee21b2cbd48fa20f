#include "format/CaptureWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "format/CaptureReader.h"
#include "support/FileBytes.h"
#include "support/TempDir.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using MrpCli::CapturedFrame;
using MrpCli::CaptureReader;
using MrpCli::CaptureWriter;

std::vector<CapturedFrame> readAll(const std::string& path) {
  CaptureReader reader(path);
  std::vector<CapturedFrame> frames;
  while (auto frame = reader.next()) frames.push_back(*frame);
  EXPECT_TRUE(reader.ok()) << reader.error();
  return frames;
}

Bytes frameOf(std::size_t size, std::uint8_t fill) { return Bytes(size, fill); }

class CaptureWriterTest : public ::testing::Test {
 protected:
  MrpTest::TempDir dir_;
  const std::string path_ = dir_.file("written.pcap");
};

struct Timestamp {
  Quarn::Seconds written;
  Quarn::Seconds read;  // to the microsecond
};

TEST_F(CaptureWriterTest, FramesReadBackWithTheirOctetsAndTimestamps) {
  const std::vector<Timestamp> timestamps = {
      {0, 0},
      {1.5, 1.5},
      {2.0000004, 2.0},            // rounded down to the microsecond
      {3.0000006, 3.000001},       // rounded up
      {4.9999996, 5.0},            // up into the next second
      {1700000000.25, 1700000000.25},
      {2147483647.0, 2147483647.0},  // the last second a pcap record holds
  };
  {
    CaptureWriter writer(path_);
    for (std::size_t i = 0; i < timestamps.size(); ++i) {
      writer.write(timestamps[i].written, frameOf(60 + i, static_cast<std::uint8_t>(i)));
    }
    writer.flush();
    ASSERT_TRUE(writer.ok()) << writer.error();
  }
  const std::vector<CapturedFrame> frames = readAll(path_);
  ASSERT_EQ(frames.size(), timestamps.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].bytes, frameOf(60 + i, static_cast<std::uint8_t>(i))) << "frame " << i;
    EXPECT_NEAR(frames[i].seconds, timestamps[i].read, 1e-7) << "frame " << i;
  }
}

TEST_F(CaptureWriterTest, WritesAClassicEthernetPcapInHostOrder) {
  {
    CaptureWriter writer(path_);
    writer.write(7.000008, {0xaa, 0xbb});
  }
  const Bytes expected = {
      0xd4, 0xc3, 0xb2, 0xa1,  // magic: microsecond timestamps, little-endian
      2,    0,    4,    0,     // version 2.4
      0,    0,    0,    0,     // time zone
      0,    0,    0,    0,     // timestamp accuracy
      0xff, 0xff, 0,    0,     // snapshot length 65535
      1,    0,    0,    0,     // link type 1: Ethernet
      7,    0,    0,    0,     // seconds
      8,    0,    0,    0,     // microseconds
      2,    0,    0,    0,     // captured length
      2,    0,    0,    0,     // original length
      0xaa, 0xbb,              // the frame
  };
  EXPECT_EQ(MrpTest::readFileBytes(path_), expected);
}

TEST_F(CaptureWriterTest, CutsAFrameLongerThanTheSnapLengthAndKeepsItsLength) {
  {
    CaptureWriter writer(path_);
    writer.write(0, frameOf(CaptureWriter::kSnapLength + 10, 0x5a));
  }
  const Bytes file = MrpTest::readFileBytes(path_);
  ASSERT_EQ(file.size(), 24u + 16u + CaptureWriter::kSnapLength);
  const std::uint32_t originalLength = file[36] | file[37] << 8 | file[38] << 16 | file[39] << 24;
  EXPECT_EQ(originalLength, CaptureWriter::kSnapLength + 10u);
  const std::vector<CapturedFrame> frames = readAll(path_);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, frameOf(CaptureWriter::kSnapLength, 0x5a));
}

struct OutOfRange {
  Quarn::Seconds seconds;
  std::string shown;
};

class CaptureWriterRangeTest : public CaptureWriterTest, public ::testing::WithParamInterface<OutOfRange> {};

TEST_P(CaptureWriterRangeTest, RefusesATimeAPcapFileCannotHoldAndWritesNothingMore) {
  {
    CaptureWriter writer(path_);
    writer.write(1, frameOf(60, 1));
    writer.write(GetParam().seconds, frameOf(60, 2));
    EXPECT_EQ(writer.error(), path_ + ": a frame at " + GetParam().shown + " s is outside what a pcap file can time");
    writer.write(2, frameOf(60, 3));
  }
  const std::vector<CapturedFrame> frames = readAll(path_);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, frameOf(60, 1));
}

INSTANTIATE_TEST_SUITE_P(
    Times, CaptureWriterRangeTest,
    ::testing::Values(OutOfRange{-1, "-1"}, OutOfRange{-0.0000006, "-6e-07"}, OutOfRange{2147483648.0, "2.14748e+09"},
                      OutOfRange{2147483647.9999996, "2.14748e+09"},
                      OutOfRange{std::numeric_limits<double>::infinity(), "inf"},
                      OutOfRange{std::numeric_limits<double>::quiet_NaN(), "nan"}));

TEST(CaptureWriterOpenTest, ReportsAFileItCannotCreate) {
  CaptureWriter writer("/nonexistent/dir/out.pcap");
  EXPECT_FALSE(writer.ok());
  EXPECT_EQ(writer.error(), "cannot write /nonexistent/dir/out.pcap: No such file or directory");
  writer.write(0, frameOf(60, 1));  // does nothing
  writer.flush();
  EXPECT_FALSE(writer.ok());
}

}  // namespace
