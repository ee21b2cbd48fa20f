#include "MrpModel/MrpParameters.h"

namespace Mrp {

std::ostream& operator<<(std::ostream& os, const MrpParameters& parameters) {
  return os << "Value('Mrp::MrpParameters', ** {'intfId': " << parameters.intfId
            << ", 'attributeType': " << static_cast<unsigned>(parameters.attributeType)
            << ", 'attributeEvent': " << static_cast<unsigned>(parameters.attributeEvent)
            << ", 'attributeKey': " << parameters.attributeKey << "})";
}

}  // namespace Mrp
