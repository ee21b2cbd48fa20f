#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "MrpMsrp/Tspec.h"

namespace MrpAgent {

// A stream reservation class: the letter people call it by, the SRclassID
// its Domain carries and its class measurement interval. A bridge gives
// each class it runs a priority (its Domain's).
struct SrClass {
  char name = 'A';
  std::uint8_t classId = 0;
  std::uint32_t intervalNs = 0;

  // Class measurement intervals in one second.
  std::uint32_t intervalsPerSecond() const { return 1'000'000'000U / intervalNs; }
  friend bool operator==(const SrClass&, const SrClass&) = default;
};

inline constexpr SrClass kSrClassA{'A', 6, 125'000};
inline constexpr SrClass kSrClassB{'B', 5, 250'000};
// In priority order: a class's bandwidth limit counts every class before it.
inline constexpr SrClass kSrClasses[] = {kSrClassA, kSrClassB};

// Octets a frame costs on the wire beyond its MaxFrameSize: preamble and
// start delimiter 8, MAC header 14, VLAN tag 4, FCS 4, interframe gap 12.
inline constexpr std::uint32_t kFrameOverheadOctets = 42;
// The largest frame on the wire: 1522 octets tagged, with preamble and gap.
inline constexpr std::uint64_t kMaxFrameOnWireOctets = 1542;

// The class with this SRclassID; nullopt for one the bridge does not know.
std::optional<SrClass> srClassOfId(std::uint8_t classId);
// The class by its letter ('A', 'B'); nullopt for another.
std::optional<SrClass> srClassNamed(char name);
// Where the class stands in priority order (A 0, B 1).
std::size_t srClassIndex(const SrClass& srClass);

// A stream's bandwidth in bit/s: its frames with their overhead, in every
// class measurement interval.
std::uint64_t streamBandwidth(const Mrp::Tspec& tSpec, const SrClass& srClass);

}  // namespace MrpAgent
