#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace MrpCli {

// Classic pcap files: a global header, then one record per frame. Both byte
// orders and both the microsecond and nanosecond variants are read;
// Ethernet (link type 1) is written.
class PcapReader {
 public:
  static constexpr std::uint32_t kLinkTypeEthernet = 1;
  // Larger records are refused rather than allocated.
  static constexpr std::uint32_t kMaxRecordBytes = 256 * 1024;

  // Reads the global header; on failure error() says why.
  explicit PcapReader(std::istream& in);

  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }
  std::uint32_t linkType() const { return linkType_; }

  // The next record's octets; nullopt at the end of the file or on error
  // (then error() is set).
  std::optional<std::vector<std::uint8_t>> next();

 private:
  std::uint32_t u32(const std::uint8_t* p) const;

  std::istream& in_;
  bool swapped_ = false;
  std::uint32_t linkType_ = 0;
  std::string error_;
};

class PcapWriter {
 public:
  // Writes the global header for Ethernet frames.
  explicit PcapWriter(std::ostream& out);
  void write(const std::vector<std::uint8_t>& frame);

 private:
  std::ostream& out_;
  std::uint32_t seconds_ = 0;
};

}  // namespace MrpCli
