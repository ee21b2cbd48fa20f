#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"

namespace Mrp {

// Traffic specification of a stream, as on the wire (4 octets).
class Tspec {
 public:
  Tspec() = default;
  Tspec(std::uint16_t maxFrameSize, std::uint16_t maxIntervalFrames)
      : maxFrameSize_(maxFrameSize), maxIntervalFrames_(maxIntervalFrames) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<Tspec> fromString(std::string_view text);

  std::uint16_t maxFrameSize() const { return maxFrameSize_.value(); }
  void maxFrameSizeIs(std::uint16_t size) { maxFrameSize_.valueIs(size); }
  std::uint16_t maxIntervalFrames() const { return maxIntervalFrames_.value(); }
  void maxIntervalFramesIs(std::uint16_t frames) { maxIntervalFrames_.valueIs(frames); }

  friend bool operator==(const Tspec&, const Tspec&) = default;

 private:
  Quarn::NboU16 maxFrameSize_;
  Quarn::NboU16 maxIntervalFrames_;
};

static_assert(sizeof(Tspec) == 4 && alignof(Tspec) == 1);

// Value('Mrp::Tspec', ** {'maxFrameSize': 1500, 'maxIntervalFrames': 1})
std::ostream& operator<<(std::ostream& os, const Tspec& value);

}  // namespace Mrp
