#include "MrpSm/MrpDatabaseAddSm.h"

#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

void copyEntry(const MrpAttrDatabase& from, MrpAttrDatabase& to) {
  to.applicantStateIs(from.applicantState());
  to.registrarStateIs(from.registrarState());
  for (unsigned i = ValueIndex::min; i <= ValueIndex::max; ++i) {
    to.attributeValueIs(ValueIndex(i), from.attributeValue(ValueIndex(i)));
  }
}

}  // namespace

MrpDatabaseAddSm::MrpDatabaseAddSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock)
    : MrpDatabaseReviewSm("MrpDatabaseAddSm", mrpSm, mrpAttrLogSm, std::move(clock)) {}

bool MrpDatabaseAddSm::pendingEmpty() const { return mrpSm()->attributeStore().addPendingAttrs().empty(); }

void MrpDatabaseAddSm::doReview() {
  if (!initialized()) return;
  MRP_TRACE(8, "MrpDatabaseAddSm::doReview()");
  MrpSm& engine = *mrpSm();
  // Commits from the front, so what a clogged log leaves keeps its order.
  while (!engine.attributeStore().addPendingAttrs().empty() && !attrLogOutClogged()) {
    const auto& [attribute, pending] = *engine.attributeStore().addPendingAttrs().begin();
    const Quarn::Ptr<MrpAttrDatabase> stored =
        engine.createEntryInDatabase(attribute.intfId, attribute.attributeType, attribute.attributeKey);
    copyEntry(*pending, *stored);
    engine.attributeStore().addPendingAttrDel(MrpAttribute(attribute));
  }
  doUpdateReviewTimer();
}

}  // namespace Mrp
