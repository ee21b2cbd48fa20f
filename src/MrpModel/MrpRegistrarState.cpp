#include "MrpModel/MrpRegistrarState.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpRegistrarState, MRP_REGISTRAR_STATE_VALUES)

}  // namespace Mrp
