#pragma once

#include "quarn/Assert.h"

namespace Quarn {

// The initialized flag of a framework object: set exactly once by its
// handleInitialized(), which aborts with "!initialized()" on a second call.
class Lifecycle {
 public:
  bool initialized() const { return initialized_; }

 protected:
  void initializedIs() {
    QASSERT(!initialized());
    initialized_ = true;
  }
  void requireInitialized() const { QASSERT(initialized()); }

 private:
  bool initialized_ = false;
};

}  // namespace Quarn
