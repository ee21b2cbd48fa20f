#include "MrpMsrp/MsrpAttrType.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MsrpAttrType, MRP_MSRP_ATTR_TYPE_VALUES)
MRP_ENUM_FROM_TEXT(MsrpAttrType, msrpAttrTypeFromText, MRP_MSRP_ATTR_TYPE_VALUES)

}  // namespace Mrp
