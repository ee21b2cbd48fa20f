#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>

#include "quarn/Clock.h"
#include "quarn/Types.h"

namespace MrpCli {

// The process's resident set in bytes, from /proc/self/statm; nullopt where
// that cannot be read.
std::optional<std::uint64_t> residentBytes();

// Writes the process's resident set every `period` seconds of a clock, one
// JSON line each, {"t": 60.0, "rss": 41234432} ("rss": null when it cannot
// be read), so that a long run shows whether its memory keeps growing.
// Times count from the clock's time at construction.
class MemorySampler : public Quarn::Clock::Notifiee {
 public:
  using Reader = std::function<std::optional<std::uint64_t>()>;

  // `period` is more than 0.
  MemorySampler(Quarn::Clock* clock, Quarn::Seconds period, std::ostream& out, Reader reader = residentBytes);

  void onTime() override;

 private:
  Quarn::Seconds start_;
  Quarn::Seconds period_;
  std::ostream& out_;
  Reader reader_;
  // Samples written; the next is due at start_ + (samples_ + 1) * period_.
  std::uint64_t samples_ = 0;
};

}  // namespace MrpCli
