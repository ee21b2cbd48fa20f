#pragma once

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpConfig.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// The applicant machine: one executor per engine acting on the current attribute.
class MrpApplicantSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpApplicantSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig);
  MrpApplicantSm(const MrpApplicantSm&) = delete;
  MrpApplicantSm& operator=(const MrpApplicantSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }

  void handleInitialized();

  // The event the next handleApplicantEvent() applies to the current attribute.
  void applicantEventIs(MrpApplicantEvent event);
  void handleApplicantEvent();

 private:
  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
};

}  // namespace Mrp
