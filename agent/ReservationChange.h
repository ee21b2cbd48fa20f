#pragma once

#include <cstdint>

#include "SrClass.h"

namespace MrpAgent {

// One reservation made or released on a port.
struct ReservationChange {
  std::uint64_t streamId = 0;
  bool reserved = false;
  SrClass srClass;
  std::uint64_t bandwidth = 0;  // the stream's, bit/s
  std::uint64_t total = 0;      // the port's, for the class and those before it, after the change
  std::uint64_t limit = 0;
  friend bool operator==(const ReservationChange&, const ReservationChange&) = default;
};

}  // namespace MrpAgent
