#include "stp/PvstInstanceName.h"

namespace Stp {

std::string pvstInstanceName(std::uint16_t vlanId) { return "Vl" + std::to_string(vlanId); }

}  // namespace Stp
