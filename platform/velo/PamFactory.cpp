#include "velo/PamFactory.h"

#include <algorithm>

namespace Velo {

namespace {

Quarn::Ptr<PamFactory>& processFactory() {
  static Quarn::Ptr<PamFactory> factory;
  return factory;
}

std::size_t processMaxRxPktData = kDefaultMaxRxPktData;

}  // namespace

Quarn::Ptr<PamFactory> pamFactory() { return processFactory(); }
void pamFactoryIs(Quarn::Ptr<PamFactory> factory) { processFactory() = std::move(factory); }

std::size_t pamMaxRxPktData() { return processMaxRxPktData; }
void pamMaxRxPktDataIs(std::size_t bytes) { processMaxRxPktData = bytes; }

std::size_t pamRxLimit(const PamConfig& config) { return std::min(config.maxRxPktData, processMaxRxPktData); }

}  // namespace Velo
