#include "MrpModel/MrpRegistrarEvent.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpRegistrarEvent, MRP_REGISTRAR_EVENT_VALUES)

}  // namespace Mrp
