#include "ListenerMerge.h"

namespace MrpAgent {

namespace {

// What one port's Listener amounts to once the bridge's part is counted.
Mrp::MsrpListenerEvent effective(const PortListener& listener) {
  using Declaration = Mrp::MsrpListenerEvent;
  if (listener.talkerFailedDeclared || !listener.reserved) return Declaration::askingFailed;
  if (listener.declaration == Declaration::ready || listener.declaration == Declaration::readyFailed) {
    return listener.declaration;
  }
  return Declaration::askingFailed;
}

}  // namespace

std::optional<Mrp::MsrpListenerEvent> mergedListenerDeclaration(std::span<const PortListener> listeners) {
  std::optional<Mrp::MsrpListenerEvent> merged;
  for (const PortListener& listener : listeners) {
    const Mrp::MsrpListenerEvent one = effective(listener);
    if (!merged) {
      merged = one;
    } else if (*merged != one) {
      merged = Mrp::MsrpListenerEvent::readyFailed;
    }
  }
  return merged;
}

}  // namespace MrpAgent
