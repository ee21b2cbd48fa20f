#include "MrpSm/MrpParsedRuns.h"

#include <algorithm>

namespace Mrp {

namespace {

// The last key of a run; the run fits its key space.
std::uint64_t lastKeyOf(const MrpParsedRuns::Run& run) { return run.firstKey + run.count - 1; }

}  // namespace

void MrpParsedRuns::clear() {
  runs_.clear();
  events_.clear();
  declarations_.clear();
}

bool MrpParsedRuns::add(std::uint8_t attributeType, std::span<const std::uint8_t> firstValue, std::uint64_t firstKey,
                        std::uint64_t keyLimit, std::span<const std::uint8_t> events,
                        std::span<const std::uint8_t> declarations) {
  const std::uint64_t span = events.size() - 1;
  if (firstKey > keyLimit || keyLimit - firstKey < span) return false;
  const std::uint64_t lastKey = firstKey + span;
  for (const Run& run : runs_) {
    if (run.attributeType == attributeType && run.firstKey <= lastKey && firstKey <= lastKeyOf(run)) return false;
  }
  Run run;
  run.attributeType = attributeType;
  run.count = static_cast<std::uint16_t>(events.size());
  run.firstKey = firstKey;
  run.firstEvent = static_cast<std::uint32_t>(events_.size());
  run.firstDeclaration = static_cast<std::uint32_t>(declarations_.size());
  run.declared = !declarations.empty();
  std::copy_n(firstValue.begin(), std::min(firstValue.size(), run.firstValue.size()), run.firstValue.begin());
  events_.insert(events_.end(), events.begin(), events.end());
  declarations_.insert(declarations_.end(), declarations.begin(), declarations.end());
  runs_.push_back(run);
  return true;
}

std::optional<std::uint8_t> MrpParsedRuns::eventOf(std::uint8_t attributeType, std::uint64_t key) const {
  for (const Run& run : runs_) {
    if (run.attributeType == attributeType && run.firstKey <= key && key <= lastKeyOf(run)) {
      return event(run, key - run.firstKey);
    }
  }
  return std::nullopt;
}

}  // namespace Mrp
