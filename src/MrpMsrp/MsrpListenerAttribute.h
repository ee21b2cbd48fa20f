#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpListenerEvent.h"
#include "quarn/Nbo.h"

namespace Mrp {

// A Listener value: the stream (its 8 octets are the FirstValue on the wire)
// and the declaration, which travels in the four-packed events.
class MsrpListenerAttribute {
 public:
  MsrpListenerAttribute() = default;

  std::uint64_t streamId() const { return streamId_.value(); }
  void streamIdIs(std::uint64_t id) { streamId_.valueIs(id); }
  MsrpListenerEvent listenerEvent() const { return listenerEvent_; }
  void listenerEventIs(MsrpListenerEvent event) { listenerEvent_ = event; }

  friend bool operator==(const MsrpListenerAttribute&, const MsrpListenerAttribute&) = default;

 private:
  Quarn::NboU64 streamId_;
  MsrpListenerEvent listenerEvent_ = MsrpListenerEvent::ignore;
};

}  // namespace Mrp
