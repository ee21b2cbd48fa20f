#include "SrClass.h"

#include <iterator>

namespace MrpAgent {

std::optional<SrClass> srClassOfId(std::uint8_t classId) {
  for (const SrClass& srClass : kSrClasses) {
    if (srClass.classId == classId) return srClass;
  }
  return std::nullopt;
}

std::optional<SrClass> srClassNamed(char name) {
  for (const SrClass& srClass : kSrClasses) {
    if (srClass.name == name) return srClass;
  }
  return std::nullopt;
}

std::size_t srClassIndex(const SrClass& srClass) {
  for (std::size_t i = 0; i < std::size(kSrClasses); ++i) {
    if (kSrClasses[i] == srClass) return i;
  }
  return std::size(kSrClasses);
}

std::uint64_t streamBandwidth(const Mrp::Tspec& tSpec, const SrClass& srClass) {
  const std::uint64_t bitsPerInterval =
      (std::uint64_t{tSpec.maxFrameSize()} + kFrameOverheadOctets) * 8 * tSpec.maxIntervalFrames();
  return bitsPerInterval * srClass.intervalsPerSecond();
}

}  // namespace MrpAgent
