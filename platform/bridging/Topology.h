#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "quarn/Ptr.h"

namespace Bridging::Topology {

// A named bridging topology and its number. Immutable: a renumbered topology
// is a new record in Config.
class Topology : public Quarn::PtrInterface {
 public:
  Topology(std::string name, std::uint32_t number) : name_(std::move(name)), number_(number) {}

  const std::string& name() const { return name_; }
  std::uint32_t number() const { return number_; }

 private:
  std::string name_;
  std::uint32_t number_;
};

}  // namespace Bridging::Topology
