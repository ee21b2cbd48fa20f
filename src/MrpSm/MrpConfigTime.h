#pragma once

#include <optional>

#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

// A time from the configuration as the timers can take it: one that is not
// finite or is negative is traced and taken as 0, not set, rather than
// arming a timer that never fires or cannot be armed at all.
Quarn::Seconds mrpConfigTime(const char* field, Quarn::Seconds seconds);

// A port's time: its own (`intfField`) when set and not 0, else the
// engine-wide one (`field`), each taken as mrpConfigTime takes it.
Quarn::Seconds mrpConfigIntfTime(const char* intfField, const Velo::IntfId& intfId,
                                 std::optional<Quarn::Seconds> intfSeconds, const char* field,
                                 Quarn::Seconds seconds);

}  // namespace Mrp
