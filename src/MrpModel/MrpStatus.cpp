#include "MrpModel/MrpStatus.h"

#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpApplicationDatabase> MrpStatus::applicationDatabaseIs(MrpApplication application) {
  return Quarn::entryIs(applicationDatabase_, application, [] { return new MrpApplicationDatabase; });
}

Quarn::Ptr<MrpApplicationDatabase> MrpStatus::applicationDatabase(MrpApplication application) const {
  return Quarn::entryOf(applicationDatabase_, application);
}

}  // namespace Mrp
