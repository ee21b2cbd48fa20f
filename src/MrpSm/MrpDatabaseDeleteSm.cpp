#include "MrpSm/MrpDatabaseDeleteSm.h"

#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpDatabaseDeleteSm::MrpDatabaseDeleteSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock)
    : MrpDatabaseReviewSm("MrpDatabaseDeleteSm", mrpSm, mrpAttrLogSm, std::move(clock)) {}

bool MrpDatabaseDeleteSm::pendingEmpty() const { return mrpSm()->attributeStore().deletePendingAttrs().empty(); }

void MrpDatabaseDeleteSm::doReview() {
  if (!initialized()) return;
  MRP_TRACE(8, "MrpDatabaseDeleteSm::doReview()");
  MrpSm& engine = *mrpSm();
  // Commits from the front, so what a clogged log leaves keeps its order.
  while (!engine.attributeStore().deletePendingAttrs().empty() && !attrLogOutClogged()) {
    const MrpAttribute attribute = engine.attributeStore().deletePendingAttrs().begin()->first;
    const auto& [intfId, attributeType, key] = attribute;
    if (Quarn::Ptr<MrpIntfTypeApplicant> type = engine.attributeStore().mrpIntfTypeApplicant(intfId, attributeType)) {
      type->mrpAttributeDel(key);
    }
    engine.removeFromAttrIter(intfId, attributeType, key);
    MRP_TRACE(7, "intf:" << intfId << " type = " << static_cast<unsigned>(attributeType) << " "
                         << "key = 0x" << std::hex << key << std::dec << " DELETED ");
    engine.attributeStore().deletePendingAttrDel(attribute);
  }
  doUpdateReviewTimer();
}

}  // namespace Mrp
