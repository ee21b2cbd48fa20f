#include "sim/MemorySampler.h"

#include <unistd.h>

#include <cmath>
#include <fstream>
#include <ostream>

#include "format/JsonLine.h"

namespace MrpCli {

std::optional<std::uint64_t> residentBytes() {
  // Pages: total size, then resident.
  std::ifstream statm("/proc/self/statm");
  std::uint64_t size = 0;
  std::uint64_t resident = 0;
  if (!(statm >> size >> resident)) return std::nullopt;
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pageSize <= 0) return std::nullopt;
  return resident * static_cast<std::uint64_t>(pageSize);
}

MemorySampler::MemorySampler(Quarn::Clock* clock, Quarn::Seconds period, std::ostream& out, Reader reader)
    : Notifiee(clock), start_(clock->now()), period_(period), out_(out), reader_(std::move(reader)) {
  timeIs(start_ + period_);
}

void MemorySampler::onTime() {
  ++samples_;
  // Counted from the start, so that the times do not drift by rounding.
  const Quarn::Seconds t = start_ + static_cast<double>(samples_) * period_;
  // To the microsecond, as the timelines print times.
  nlohmann::ordered_json line = {{"t", std::round((t - start_) * 1e6) / 1e6}, {"rss", nullptr}};
  if (const auto bytes = reader_()) line["rss"] = *bytes;
  out_ << jsonLine(line) << std::endl;
  timeIs(t + period_);
}

}  // namespace MrpCli
