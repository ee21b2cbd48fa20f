#include "MrpModel/MrpApplicantEvent.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpApplicantEvent, MRP_APPLICANT_EVENT_VALUES)

}  // namespace Mrp
