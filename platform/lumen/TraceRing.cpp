#include "lumen/TraceRing.h"

#include <algorithm>
#include <stdexcept>

namespace Lumen {

TraceRing::TraceRing(std::size_t capacity) : records_(capacity) {
  if (capacity == 0) throw std::invalid_argument("TraceRing capacity 0 not allowed");
}

std::size_t TraceRing::size() const {
  return static_cast<std::size_t>(std::min<std::uint64_t>(recorded_, records_.size()));
}

void TraceRing::record(const char* event, std::int64_t arg0, std::int64_t arg1, const char* subject) {
  records_[recorded_ % records_.size()] = {event, arg0, arg1, subject};
  ++recorded_;
}

const TraceRing::Record& TraceRing::at(std::size_t i) const {
  const std::uint64_t oldest = recorded_ - size();
  return records_[(oldest + i) % records_.size()];
}

TraceRing& fastTrace() {
  static TraceRing ring(1024);
  return ring;
}

}  // namespace Lumen
