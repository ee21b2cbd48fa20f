#pragma once

#include "MrpSm/MrpDatabaseReviewSm.h"

namespace Mrp {

// Commits pending deletions from the registration store in rate-limited
// batches, port by port in ascending type and key.
class MrpDatabaseDeleteSm : public MrpDatabaseReviewSm {
 public:
  MrpDatabaseDeleteSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock);

  void doReview() override;

 protected:
  ~MrpDatabaseDeleteSm() override = default;
  bool pendingEmpty() const override;
};

}  // namespace Mrp
