#include "MrpMvrp/MvrpAttrType.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MvrpAttrType, MRP_MVRP_ATTR_TYPE_VALUES)
MRP_ENUM_FROM_TEXT(MvrpAttrType, mvrpAttrTypeFromText, MRP_MVRP_ATTR_TYPE_VALUES)

}  // namespace Mrp
