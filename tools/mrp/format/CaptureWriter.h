#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quarn/Types.h"

struct pcap_dumper;  // libpcap's file writer, kept out of this header

namespace MrpCli {

// Writes Ethernet frames to a classic pcap file (link type 1, microsecond
// timestamps, host byte order) through libpcap; tshark and Wireshark open it.
class CaptureWriter {
 public:
  // Frames longer than this are cut to it; the record keeps their length.
  static constexpr int kSnapLength = 65535;

  // Creates (or empties) the file and writes its header; on failure error()
  // says why.
  explicit CaptureWriter(const std::string& path);
  // Flushes and closes the file.
  ~CaptureWriter();
  CaptureWriter(const CaptureWriter&) = delete;
  CaptureWriter& operator=(const CaptureWriter&) = delete;

  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }

  // Appends one frame captured at `seconds` since the epoch, rounded to the
  // microsecond. A time the file cannot hold (negative, not finite, from
  // 2^31 seconds on) sets error() and writes nothing; after an error nothing is
  // written.
  void write(Quarn::Seconds seconds, const std::vector<std::uint8_t>& frame);
  // Pushes what was written to the file; sets error() if that fails.
  void flush();

 private:
  std::string path_;
  pcap_dumper* dumper_ = nullptr;
  std::string error_;
};

}  // namespace MrpCli
