#include "MrpModel/MrpThreePackedEvent.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpThreePackedEvent, MRP_THREE_PACKED_EVENT_VALUES)

}  // namespace Mrp
