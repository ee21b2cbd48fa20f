#pragma once

#include <cstdint>

#include "quarn/Ptr.h"
#include "quarn/Types.h"

namespace Mrp {

// The engine's counters, in the order the engine resets them.
#define MRP_COUNTERS(X)          \
  X(numOfIncorrectPduVersion)    \
  X(numOfUnknownAttributeType)   \
  X(numOfMalformedPkts)          \
  X(numOfUnknownApplication)     \
  X(numOfIncorrectDmac)          \
  X(numOfIncorrectEtype)         \
  X(numOfPktsProcessed)          \
  X(numOfPktsTransmitted)        \
  X(numOfJoinIndications)        \
  X(numOfLeaveIndications)

class MrpCounters : public Quarn::PtrInterface {
 public:
  explicit MrpCounters(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

#define MRP_COUNTER_ACCESSORS(counter)                          \
  std::uint64_t counter() const { return counter##_; }          \
  void counter##Is(std::uint64_t value) { counter##_ = value; } \
  void counter##Inc(std::uint64_t by = 1) { counter##_ += by; }
  MRP_COUNTERS(MRP_COUNTER_ACCESSORS)
#undef MRP_COUNTER_ACCESSORS

 private:
  Quarn::Name name_;
#define MRP_COUNTER_FIELD(counter) std::uint64_t counter##_ = 0;
  MRP_COUNTERS(MRP_COUNTER_FIELD)
#undef MRP_COUNTER_FIELD
};

}  // namespace Mrp
