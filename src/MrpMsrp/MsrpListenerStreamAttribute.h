#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"

namespace Mrp {

// The stream of a Listener value without its declaration (8 octets).
class MsrpListenerStreamAttribute {
 public:
  MsrpListenerStreamAttribute() = default;
  explicit MsrpListenerStreamAttribute(std::uint64_t streamId) : streamId_(streamId) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MsrpListenerStreamAttribute> fromString(std::string_view text);

  std::uint64_t streamId() const { return streamId_.value(); }
  void streamIdIs(std::uint64_t id) { streamId_.valueIs(id); }

  friend bool operator==(const MsrpListenerStreamAttribute&, const MsrpListenerStreamAttribute&) = default;

 private:
  Quarn::NboU64 streamId_;
};

static_assert(sizeof(MsrpListenerStreamAttribute) == 8 && alignof(MsrpListenerStreamAttribute) == 1);

// Value('Mrp::MsrpListenerStreamAttribute', ** {'streamId': 7})
std::ostream& operator<<(std::ostream& os, const MsrpListenerStreamAttribute& value);

}  // namespace Mrp
