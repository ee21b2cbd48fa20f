#include "MrpModel/MrpApplication.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpApplication, MRP_APPLICATION_VALUES)

}  // namespace Mrp
