#pragma once

#include "MrpSm/MrpDatabaseReviewSm.h"

namespace Mrp {

// Commits pending additions to the registration store in rate-limited
// batches, port by port in ascending type and key.
class MrpDatabaseAddSm : public MrpDatabaseReviewSm {
 public:
  MrpDatabaseAddSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock);

  void doReview() override;

 protected:
  ~MrpDatabaseAddSm() override = default;
  bool pendingEmpty() const override;
};

}  // namespace Mrp
