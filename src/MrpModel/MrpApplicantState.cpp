#include "MrpModel/MrpApplicantState.h"

#include "MrpModel/MrpEnumText.h"

namespace Mrp {

MRP_ENUM_OUTPUT_OPERATOR(MrpApplicantState, MRP_APPLICANT_STATE_VALUES)

}  // namespace Mrp
