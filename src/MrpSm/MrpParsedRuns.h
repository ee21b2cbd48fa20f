#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Mrp {

// The values of the current frame collected vector by vector: each vector's
// first value, its count and its events (a Listener vector's declarations
// too). The n-th value and its key follow from the first by the increment
// rules, so that collecting a vector costs its events and nothing per value.
//
// Runs hold only vectors whose keys appear once in the frame: a vector whose
// keys meet those of an earlier vector of its type, or wrap around their
// key space, is refused, and the frame is then collected value by value,
// where a later occurrence of a key overrides an earlier one.
class MrpParsedRuns {
 public:
  // The largest value record (Talker Failed).
  static constexpr std::size_t kMaxValueOctets = 34;

  struct Run {
    std::uint8_t attributeType = 0;
    std::uint16_t count = 0;
    std::uint64_t firstKey = 0;
    std::uint32_t firstEvent = 0;        // in the frame's events
    std::uint32_t firstDeclaration = 0;  // in the frame's declarations (Listener runs)
    bool declared = false;               // whether the run has declarations
    std::array<std::uint8_t, kMaxValueOctets> firstValue{};  // the value record's octets
  };

  bool empty() const { return runs_.empty(); }
  // Drops the runs; their storage stays for the next frame.
  void clear();

  // Takes a vector of `events.size()` values (at least one) whose first
  // value's record octets are `firstValue`, with key `firstKey`, the largest
  // key of its type being `keyLimit`; `declarations` holds a Listener's, one
  // per value, and is empty for other types. False, taking nothing, when a
  // key would repeat one taken before or pass `keyLimit`.
  bool add(std::uint8_t attributeType, std::span<const std::uint8_t> firstValue, std::uint64_t firstKey,
           std::uint64_t keyLimit, std::span<const std::uint8_t> events, std::span<const std::uint8_t> declarations);

  const std::vector<Run>& runs() const { return runs_; }
  std::uint8_t event(const Run& run, std::size_t index) const { return events_[run.firstEvent + index]; }
  std::uint8_t declaration(const Run& run, std::size_t index) const {
    return declarations_[run.firstDeclaration + index];
  }
  // The event received for the attribute, if a run holds it.
  std::optional<std::uint8_t> eventOf(std::uint8_t attributeType, std::uint64_t key) const;

 private:
  std::vector<Run> runs_;
  std::vector<std::uint8_t> events_;
  std::vector<std::uint8_t> declarations_;
};

}  // namespace Mrp
