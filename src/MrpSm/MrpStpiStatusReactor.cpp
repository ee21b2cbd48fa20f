#include "MrpSm/MrpStpiStatusReactor.h"

namespace Mrp {

MrpStpiStatusReactor::MrpStpiStatusReactor(Quarn::Ptr<Stp::StpiStatus> stpiStatus, MrpSm* mrpSm)
    : stpiStatus_(std::move(stpiStatus)), mrpSm_(mrpSm) {
  notifierIs(stpiStatus_.ptr());
}

}  // namespace Mrp
