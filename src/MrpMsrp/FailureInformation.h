#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"

namespace Mrp {

// Why a stream failed and where, as on the wire (9 octets).
class FailureInformation {
 public:
  FailureInformation() = default;
  FailureInformation(std::uint64_t bridgeId, std::uint8_t failureCode)
      : bridgeId_(bridgeId), failureCode_(failureCode) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<FailureInformation> fromString(std::string_view text);

  std::uint64_t bridgeId() const { return bridgeId_.value(); }
  void bridgeIdIs(std::uint64_t id) { bridgeId_.valueIs(id); }
  std::uint8_t failureCode() const { return failureCode_; }
  void failureCodeIs(std::uint8_t code) { failureCode_ = code; }

  friend bool operator==(const FailureInformation&, const FailureInformation&) = default;

 private:
  Quarn::NboU64 bridgeId_;
  std::uint8_t failureCode_ = 0;
};

static_assert(sizeof(FailureInformation) == 9 && alignof(FailureInformation) == 1);

// Value('Mrp::FailureInformation', ** {'bridgeId': 42, 'failureCode': 9})
std::ostream& operator<<(std::ostream& os, const FailureInformation& value);

}  // namespace Mrp
