#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

Quarn::TraceTag& mrpSmTrace = Quarn::traceTag("MrpSm");

}  // namespace Mrp
