#pragma once

#include <optional>
#include <span>

#include "MrpMsrp/MsrpListenerEvent.h"

namespace MrpAgent {

// A stream's Listener as heard on one port of a bridge, beside what the
// bridge did for the stream there.
struct PortListener {
  Mrp::MsrpListenerEvent declaration{};
  bool reserved = false;               // the stream is reserved on the port
  bool talkerFailedDeclared = false;   // the bridge declared Talker Failed there
};

// The Listener declaration a bridge sends towards the stream's Talker for
// the Listeners of its other ports: Ready when every one is Ready and
// reserved, AskingFailed when none is Ready or ReadyFailed and reserved,
// ReadyFailed otherwise. A port on which the bridge declared Talker Failed
// counts as AskingFailed, whatever its Listener says. nullopt for no
// Listener.
std::optional<Mrp::MsrpListenerEvent> mergedListenerDeclaration(std::span<const PortListener> listeners);

}  // namespace MrpAgent
