#pragma once

#include <map>
#include <string>

#include "agent/CountingPam.h"
#include "agent/PortCounters.h"
#include "decode/Decoder.h"
#include "velo/PamFactory.h"

namespace MrpCli {

// Opens ports through another factory and wraps each socket in a
// CountingPam. The counters of a port outlive its sockets: a port that goes
// down and comes back counts on.
class CountingPamFactory : public Velo::PamFactory {
 public:
  CountingPamFactory(Quarn::Ptr<Velo::PamFactory> sockets, CountingPam::EngineCounters engineCounters)
      : sockets_(std::move(sockets)), engineCounters_(std::move(engineCounters)) {}

  Quarn::Ptr<Velo::Pam> pamNew(const Velo::IntfId& intfId, const Velo::PamConfig& config) override;

  // The counters of every port opened so far, by name.
  std::map<std::string, PortCounters>& portCounters() { return portCounters_; }
  const std::map<std::string, PortCounters>& portCounters() const { return portCounters_; }

 private:
  Quarn::Ptr<Velo::PamFactory> sockets_;
  CountingPam::EngineCounters engineCounters_;
  Decoder decoder_;
  std::map<std::string, PortCounters> portCounters_;
};

}  // namespace MrpCli
