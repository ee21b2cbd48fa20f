#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"
#include "velo/EthAddr.h"

namespace Mrp {

// Destination address and VLAN of a stream, as on the wire (8 octets).
class DataFrameParameters {
 public:
  DataFrameParameters() = default;
  DataFrameParameters(const Velo::EthAddr& dmac, std::uint16_t vlanId) : dmac_(dmac), vlanId_(vlanId) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<DataFrameParameters> fromString(std::string_view text);

  const Velo::EthAddr& dmac() const { return dmac_; }
  void dmacIs(const Velo::EthAddr& dmac) { dmac_ = dmac; }
  std::uint16_t vlanId() const { return vlanId_.value(); }
  void vlanIdIs(std::uint16_t vlanId) { vlanId_.valueIs(vlanId); }

  friend bool operator==(const DataFrameParameters&, const DataFrameParameters&) = default;

 private:
  Velo::EthAddr dmac_;
  Quarn::NboU16 vlanId_;
};

static_assert(sizeof(DataFrameParameters) == 8 && alignof(DataFrameParameters) == 1);

// Value('Mrp::DataFrameParameters', ** {'dmac': 91:e0:f0:00:fe:00, 'vlanId': 2})
std::ostream& operator<<(std::ostream& os, const DataFrameParameters& value);

}  // namespace Mrp
