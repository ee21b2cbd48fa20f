#pragma once

#include <map>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpApplicationDatabase.h"
#include "quarn/Ptr.h"

namespace Mrp {

// An engine's published status: the application it serves and the
// registration store, by application.
class MrpStatus : public Quarn::PtrInterface {
 public:
  using ApplicationMap = std::map<MrpApplication, Quarn::Ptr<MrpApplicationDatabase>>;

  MrpApplication application() const { return application_; }
  void applicationIs(MrpApplication application) { application_ = application; }

  Quarn::Ptr<MrpApplicationDatabase> applicationDatabaseIs(MrpApplication application);
  Quarn::Ptr<MrpApplicationDatabase> applicationDatabase(MrpApplication application) const;
  void applicationDatabaseDel(MrpApplication application) { applicationDatabase_.erase(application); }
  const ApplicationMap& applicationDatabases() const { return applicationDatabase_; }

 private:
  MrpApplication application_{};
  ApplicationMap applicationDatabase_;
};

}  // namespace Mrp
