#include "MrpModel/MrpParseStatus.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpParseStatus, MRP_PARSE_STATUS_VALUES)

}  // namespace Mrp
