#include "MrpSm/MrpConfigTime.h"

#include <cmath>

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

bool usable(Quarn::Seconds seconds) { return std::isfinite(seconds) && seconds >= 0; }

}  // namespace

Quarn::Seconds mrpConfigTime(const char* field, Quarn::Seconds seconds) {
  if (usable(seconds)) return seconds;
  MRP_TRACE(4, "Invalid " << field << " " << seconds << ", taken as 0");
  return 0;
}

Quarn::Seconds mrpConfigIntfTime(const char* intfField, const Velo::IntfId& intfId,
                                 std::optional<Quarn::Seconds> intfSeconds, const char* field,
                                 Quarn::Seconds seconds) {
  if (intfSeconds && !usable(*intfSeconds)) {
    MRP_TRACE(4, "Invalid " << intfField << " " << *intfSeconds << " on " << intfId << ", taken as 0");
    intfSeconds.reset();
  }
  return intfSeconds && *intfSeconds != 0 ? *intfSeconds : mrpConfigTime(field, seconds);
}

}  // namespace Mrp
