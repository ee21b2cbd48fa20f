#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "MrpMsrp/DataFrameParameters.h"
#include "MrpMsrp/PriorityAndRank.h"
#include "MrpMsrp/Tspec.h"
#include "quarn/Nbo.h"

namespace Mrp {

// A Talker Advertise value: the 25-octet FirstValue, field for field.
class MsrpTalkerAdvertiseAttribute {
 public:
  MsrpTalkerAdvertiseAttribute() = default;
  MsrpTalkerAdvertiseAttribute(std::uint64_t streamId, const DataFrameParameters& frame, const Tspec& tSpec,
                               PriorityAndRank priorityAndRank, std::uint32_t accumulatedLatency)
      : streamId_(streamId),
        frame_(frame),
        tSpec_(tSpec),
        priorityAndRank_(priorityAndRank),
        accumulatedLatency_(accumulatedLatency) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MsrpTalkerAdvertiseAttribute> fromString(std::string_view text);

  std::uint64_t streamId() const { return streamId_.value(); }
  void streamIdIs(std::uint64_t id) { streamId_.valueIs(id); }
  const DataFrameParameters& frame() const { return frame_; }
  void frameIs(const DataFrameParameters& frame) { frame_ = frame; }
  const Tspec& tSpec() const { return tSpec_; }
  void tSpecIs(const Tspec& tSpec) { tSpec_ = tSpec; }
  PriorityAndRank priorityAndRank() const { return priorityAndRank_; }
  void priorityAndRankIs(PriorityAndRank pr) { priorityAndRank_ = pr; }
  std::uint32_t accumulatedLatency() const { return accumulatedLatency_.value(); }
  void accumulatedLatencyIs(std::uint32_t latency) { accumulatedLatency_.valueIs(latency); }

  // True for the all-zero value.
  bool operator!() const { return *this == MsrpTalkerAdvertiseAttribute(); }
  friend bool operator==(const MsrpTalkerAdvertiseAttribute&, const MsrpTalkerAdvertiseAttribute&) = default;

 private:
  Quarn::NboU64 streamId_;
  DataFrameParameters frame_;
  Tspec tSpec_;
  PriorityAndRank priorityAndRank_;
  Quarn::NboU32 accumulatedLatency_;
};

static_assert(sizeof(MsrpTalkerAdvertiseAttribute) == 25 && alignof(MsrpTalkerAdvertiseAttribute) == 1);

// Value('Mrp::MsrpTalkerAdvertiseAttribute', ** {'streamId': 1, 'frame': <DataFrameParameters>,
// 'tSpec': <Tspec>, 'priorityAndRank': <PriorityAndRank>, 'accumulatedLatency': 0})
std::ostream& operator<<(std::ostream& os, const MsrpTalkerAdvertiseAttribute& value);

}  // namespace Mrp
