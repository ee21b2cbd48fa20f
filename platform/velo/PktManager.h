#pragma once

#include <cstddef>

#include "quarn/Ptr.h"
#include "velo/Pkt.h"

namespace Velo {

// Hands out the buffers of frames to be sent. The process has one
// (pktManagerIs); the default allocates from the heap. A manager may refuse
// a buffer, for example when a memory budget is spent: callers then drop
// what they were about to send.
class PktManager : public Quarn::PtrInterface {
 public:
  // `dataBytes` of zeros with the default head room; null when refused.
  virtual Quarn::Ptr<Pkt> pktNew(std::size_t dataBytes);
};

// The process's manager: the heap unless one was installed.
PktManager& pktManager();
// Installs a manager; nullptr restores the heap.
void pktManagerIs(Quarn::Ptr<PktManager> manager);

}  // namespace Velo
