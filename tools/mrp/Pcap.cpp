#include "Pcap.h"

#include <array>

namespace MrpCli {

namespace {

constexpr std::uint32_t kMagicMicros = 0xa1b2c3d4;
constexpr std::uint32_t kMagicNanos = 0xa1b23c4d;
constexpr std::size_t kGlobalHeaderBytes = 24;
constexpr std::size_t kRecordHeaderBytes = 16;

std::uint32_t swap32(std::uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0xff00) | ((v << 8) & 0xff0000) | (v << 24);
}

// Little-endian, the order this writer uses.
void putU32(std::ostream& out, std::uint32_t v) {
  const char b[4] = {static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                     static_cast<char>(v >> 24)};
  out.write(b, 4);
}

void putU16(std::ostream& out, std::uint16_t v) {
  const char b[2] = {static_cast<char>(v), static_cast<char>(v >> 8)};
  out.write(b, 2);
}

}  // namespace

PcapReader::PcapReader(std::istream& in) : in_(in) {
  std::array<std::uint8_t, kGlobalHeaderBytes> header{};
  if (!in_.read(reinterpret_cast<char*>(header.data()), header.size())) {
    error_ = "not a pcap file: shorter than its 24-octet header";
    return;
  }
  const std::uint32_t magic = u32(header.data());
  if (magic == swap32(kMagicMicros) || magic == swap32(kMagicNanos)) {
    swapped_ = true;
  } else if (magic != kMagicMicros && magic != kMagicNanos) {
    error_ = "not a pcap file: unknown magic number";
    return;
  }
  linkType_ = u32(header.data() + 20);
  if (linkType_ != kLinkTypeEthernet) error_ = "pcap link type " + std::to_string(linkType_) + " is not Ethernet";
}

std::uint32_t PcapReader::u32(const std::uint8_t* p) const {
  const std::uint32_t v = p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
  return swapped_ ? swap32(v) : v;
}

std::optional<std::vector<std::uint8_t>> PcapReader::next() {
  if (!ok()) return std::nullopt;
  std::array<std::uint8_t, kRecordHeaderBytes> header{};
  in_.read(reinterpret_cast<char*>(header.data()), header.size());
  if (in_.gcount() == 0) return std::nullopt;
  if (static_cast<std::size_t>(in_.gcount()) != header.size()) {
    error_ = "truncated pcap record header";
    return std::nullopt;
  }
  const std::uint32_t length = u32(header.data() + 8);
  if (length > kMaxRecordBytes) {
    error_ = "pcap record of " + std::to_string(length) + " octets is too large";
    return std::nullopt;
  }
  std::vector<std::uint8_t> frame(length);
  if (!in_.read(reinterpret_cast<char*>(frame.data()), length)) {
    error_ = "truncated pcap record";
    return std::nullopt;
  }
  return frame;
}

PcapWriter::PcapWriter(std::ostream& out) : out_(out) {
  putU32(out_, kMagicMicros);
  putU16(out_, 2);  // version 2.4
  putU16(out_, 4);
  putU32(out_, 0);  // time zone
  putU32(out_, 0);  // accuracy
  putU32(out_, 65535);
  putU32(out_, PcapReader::kLinkTypeEthernet);
}

void PcapWriter::write(const std::vector<std::uint8_t>& frame) {
  // Reproducible files: one second between frames, from the epoch.
  putU32(out_, seconds_++);
  putU32(out_, 0);
  putU32(out_, static_cast<std::uint32_t>(frame.size()));
  putU32(out_, static_cast<std::uint32_t>(frame.size()));
  out_.write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
}

}  // namespace MrpCli
