#pragma once

#include "MrpSm/MrpAttrLogSm.h"
#include "quarn/Clock.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// Commits pending deletions from the registration store in rate-limited batches.
class MrpDatabaseDeleteSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpDatabaseDeleteSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock);
  MrpDatabaseDeleteSm(const MrpDatabaseDeleteSm&) = delete;
  MrpDatabaseDeleteSm& operator=(const MrpDatabaseDeleteSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  MrpAttrLogSm* mrpAttrLogSm() const { return mrpAttrLogSm_; }
  const Quarn::Ptr<Quarn::Clock>& clock() const { return clock_; }

  void handleInitialized();

 private:
  MrpSm* mrpSm_;
  MrpAttrLogSm* mrpAttrLogSm_;
  Quarn::Ptr<Quarn::Clock> clock_;
};

}  // namespace Mrp
