#pragma once

#include "quarn/Lifecycle.h"
#include "quarn/NboAttrLogSocketOutSm.h"
#include "quarn/Ptr.h"

namespace Mrp {

// Watches the attribute log's output socket so that batched store updates
// can pause while it is clogged.
class MrpAttrLogSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // `socketOutput` may be null: the process has no attribute log output.
  explicit MrpAttrLogSm(Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput);
  MrpAttrLogSm(const MrpAttrLogSm&) = delete;
  MrpAttrLogSm& operator=(const MrpAttrLogSm&) = delete;

  const Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm>& socketOutput() const { return socketOutput_; }

  void handleInitialized();

 private:
  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput_;
};

}  // namespace Mrp
