#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Mrp {

// The Listener declaration carried in a four-packed position.
#define MRP_MSRP_LISTENER_EVENT_VALUES(X) \
  X(ignore, 0, "ignore")                  \
  X(askingFailed, 1, "askingFailed")      \
  X(ready, 2, "ready")                    \
  X(readyFailed, 3, "readyFailed")

enum class MsrpListenerEvent : std::uint32_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_MSRP_LISTENER_EVENT_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

std::ostream& operator<<(std::ostream& os, MsrpListenerEvent value);
// The value's name; its number for a code without one.
const char* enumText(MsrpListenerEvent value);
// The value named by its text or its number; nullopt for anything else.
std::optional<MsrpListenerEvent> msrpListenerEventFromText(std::string_view text);

}  // namespace Mrp
