#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "MrpMsrp/MsrpListenerEvent.h"
#include "quarn/Lbo.h"
#include "quarn/Nbo.h"

namespace Mrp {

// A Listener value: the stream (its 8 octets are the FirstValue on the wire)
// and the declaration, which travels in the four-packed events. Stored as 12
// octets: the StreamID, then the declaration as a 32-bit integer, least
// significant octet first.
class MsrpListenerAttribute {
 public:
  MsrpListenerAttribute() = default;
  MsrpListenerAttribute(std::uint64_t streamId, MsrpListenerEvent listenerEvent)
      : streamId_(streamId), listenerEvent_(static_cast<std::uint32_t>(listenerEvent)) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MsrpListenerAttribute> fromString(std::string_view text);

  std::uint64_t streamId() const { return streamId_.value(); }
  void streamIdIs(std::uint64_t id) { streamId_.valueIs(id); }
  MsrpListenerEvent listenerEvent() const { return static_cast<MsrpListenerEvent>(listenerEvent_.value()); }
  void listenerEventIs(MsrpListenerEvent event) { listenerEvent_.valueIs(static_cast<std::uint32_t>(event)); }

  friend bool operator==(const MsrpListenerAttribute&, const MsrpListenerAttribute&) = default;

 private:
  Quarn::NboU64 streamId_;
  Quarn::LboU32 listenerEvent_;
};

static_assert(sizeof(MsrpListenerAttribute) == 12 && alignof(MsrpListenerAttribute) == 1);

// Value('Mrp::MsrpListenerAttribute', ** {'streamId': 7, 'listenerEvent': ready})
std::ostream& operator<<(std::ostream& os, const MsrpListenerAttribute& value);

}  // namespace Mrp
