#include "velo/PktManager.h"

#include <new>
#include <stdexcept>

namespace Velo {

namespace {

Quarn::Ptr<PktManager>& processManager() {
  static Quarn::Ptr<PktManager> manager;
  return manager;
}

}  // namespace

Quarn::Ptr<Pkt> PktManager::pktNew(std::size_t dataBytes) {
  try {
    return Pkt::pktNew(dataBytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  } catch (const std::length_error&) {
    return nullptr;
  }
}

PktManager& pktManager() {
  static const Quarn::Ptr<PktManager> heap = new PktManager;
  const Quarn::Ptr<PktManager>& installed = processManager();
  return installed ? *installed : *heap;
}

void pktManagerIs(Quarn::Ptr<PktManager> manager) { processManager() = std::move(manager); }

}  // namespace Velo
