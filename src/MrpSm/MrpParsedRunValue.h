#pragma once

#include <cstddef>
#include <type_traits>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpParsedRuns.h"
#include "MrpSm/MrpValueAt.h"

namespace Mrp {

// Value `index` of `run` as a record of type `Record`, with a Listener's
// declaration.
template <class Record>
Record mrpParsedRunValue(const MrpParsedRuns& runs, const MrpParsedRuns::Run& run, std::size_t index) {
  Record value = mrpValueAt(valueFromBytes<Record>(run.firstValue), index);
  if constexpr (std::is_same_v<Record, MsrpListenerAttribute>) {
    if (run.declared) value.listenerEventIs(static_cast<MsrpListenerEvent>(runs.declaration(run, index)));
  }
  return value;
}

}  // namespace Mrp
