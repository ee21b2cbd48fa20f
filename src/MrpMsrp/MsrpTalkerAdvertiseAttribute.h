#pragma once

#include <cstdint>

#include "MrpMsrp/DataFrameParameters.h"
#include "MrpMsrp/PriorityAndRank.h"
#include "MrpMsrp/Tspec.h"
#include "quarn/Nbo.h"

namespace Mrp {

// A Talker Advertise value: the 25-octet FirstValue, field for field.
class MsrpTalkerAdvertiseAttribute {
 public:
  MsrpTalkerAdvertiseAttribute() = default;

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

static_assert(sizeof(MsrpTalkerAdvertiseAttribute) == 25);

}  // namespace Mrp
