#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quarn/Types.h"

struct pcap;  // libpcap's handle, kept out of this header

namespace MrpCli {

// One frame of a capture: its octets as captured, and when it was captured.
struct CapturedFrame {
  Quarn::Seconds seconds = 0;  // since the epoch
  std::vector<std::uint8_t> bytes;
};

// Reads the Ethernet frames of a capture file through libpcap: classic pcap
// (either byte order, microsecond or nanosecond timestamps) and pcapng.
class CaptureReader {
 public:
  // Opens the file and reads its header; on failure error() says why.
  explicit CaptureReader(const std::string& path);
  ~CaptureReader();
  CaptureReader(const CaptureReader&) = delete;
  CaptureReader& operator=(const CaptureReader&) = delete;

  bool ok() const { return error_.empty(); }
  // One line that names the file and what is wrong with it.
  const std::string& error() const { return error_; }

  // The next frame; nullopt at the end of the file or on error (then error()
  // is set, and the frames before it stay valid).
  std::optional<CapturedFrame> next();

 private:
  std::string path_;
  pcap* handle_ = nullptr;
  std::string error_;
};

}  // namespace MrpCli
