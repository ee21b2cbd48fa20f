#include "MrpMsrp/MsrpListenerEvent.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MsrpListenerEvent, MRP_MSRP_LISTENER_EVENT_VALUES)
MRP_ENUM_FROM_TEXT(MsrpListenerEvent, msrpListenerEventFromText, MRP_MSRP_LISTENER_EVENT_VALUES)

}  // namespace Mrp
