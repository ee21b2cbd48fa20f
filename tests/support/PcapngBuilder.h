#pragma once

#include <cstdint>
#include <vector>

namespace MrpTest {

// Builds a pcapng capture by hand, little-endian, as Wireshark saves one: a
// section header, interface descriptions and enhanced packet blocks.
//
//   PcapngBuilder b;
//   b.interface(1, 9);                  // Ethernet, nanosecond timestamps
//   b.packet(0, 1'500'000'000, frame);  // 1.5 s after the epoch
//   std::vector<std::uint8_t> file = b.bytes();
class PcapngBuilder {
 public:
  static constexpr std::uint16_t kLinkTypeEthernet = 1;

  PcapngBuilder() {
    block(0x0a0d0d0a, [&] {       // section header block
      u32(0x1a2b3c4d);            //   byte-order magic
      u16(1);                     //   major version
      u16(0);                     //   minor version
      u32(0xffffffff);            //   section length: not given
      u32(0xffffffff);
    });
  }

  // Describes the next interface (ids count from 0). `tsresolExponent` is the
  // if_tsresol option: timestamps in units of 10^-exponent s (6 when absent).
  PcapngBuilder& interface(std::uint16_t linkType, std::uint8_t tsresolExponent = 6) {
    block(1, [&] {                // interface description block
      u16(linkType);
      u16(0);                     //   reserved
      u32(0);                     //   snap length: no limit
      u16(9);                     //   option if_tsresol
      u16(1);                     //     of one octet
      u32(tsresolExponent);       //     the exponent, padded to 4 octets
      u32(0);                     //   opt_endofopt
    });
    return *this;
  }

  // One frame on interface `interfaceId`, `timestamp` in the interface's units.
  PcapngBuilder& packet(std::uint32_t interfaceId, std::uint64_t timestamp, const std::vector<std::uint8_t>& frame) {
    block(6, [&] {                // enhanced packet block
      u32(interfaceId);
      u32(static_cast<std::uint32_t>(timestamp >> 32));
      u32(static_cast<std::uint32_t>(timestamp));
      u32(static_cast<std::uint32_t>(frame.size()));  // captured length
      u32(static_cast<std::uint32_t>(frame.size()));  // original length
      bytes_.insert(bytes_.end(), frame.begin(), frame.end());
      while (bytes_.size() % 4 != 0) bytes_.push_back(0);
    });
    return *this;
  }

  const std::vector<std::uint8_t>& bytes() const { return bytes_; }

 private:
  // Type, total length, the body that `body` appends, total length again.
  template <typename Body>
  void block(std::uint32_t type, Body body) {
    const std::size_t start = bytes_.size();
    u32(type);
    u32(0);  // total length, filled in below
    body();
    const auto length = static_cast<std::uint32_t>(bytes_.size() - start + 4);
    u32(length);
    for (int i = 0; i < 4; ++i) bytes_[start + 4 + i] = static_cast<std::uint8_t>(length >> (8 * i));
  }
  void u16(std::uint16_t v) {
    for (int i = 0; i < 2; ++i) bytes_.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
  }
  void u32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
  }

  std::vector<std::uint8_t> bytes_;
};

}  // namespace MrpTest
