#pragma once

#include "quarn/Ptr.h"
#include "velo/PamFactory.h"

namespace Velo {

// Makes `factory` the process's socket factory while it lives, then puts
// back the one it found, so scopes nest. Packet access keeps the factory of
// its creation: an engine built inside a scope opens its ports through it.
class PamFactoryScope {
 public:
  explicit PamFactoryScope(Quarn::Ptr<PamFactory> factory) : previous_(pamFactory()) {
    pamFactoryIs(std::move(factory));
  }
  ~PamFactoryScope() { pamFactoryIs(std::move(previous_)); }
  PamFactoryScope(const PamFactoryScope&) = delete;
  PamFactoryScope& operator=(const PamFactoryScope&) = delete;

 private:
  Quarn::Ptr<PamFactory> previous_;
};

}  // namespace Velo
