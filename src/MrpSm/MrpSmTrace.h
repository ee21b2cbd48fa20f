#pragma once

#include "quarn/Trace.h"

namespace Mrp {

// The engine's trace tag. Enable with MRP_TRACE="MrpSm/0-9" (or a subset).
extern Quarn::TraceTag& mrpSmTrace;

}  // namespace Mrp

#define MRP_TRACE(level, expr) QTRACE(::Mrp::mrpSmTrace, level, expr)
