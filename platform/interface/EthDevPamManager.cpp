#include "interface/EthDevPamManager.h"

#include <exception>
#include <stdexcept>
#include <vector>

#include "quarn/Assert.h"
#include "quarn/Trace.h"

namespace Interface {

namespace {

Quarn::TraceTag& interfaceTrace = Quarn::traceTag("Interface");

}  // namespace

EthDevPamManager::EthDevPamManager(Quarn::Ptr<PamDesiredIntfDir> desiredIntfDir,
                                   Quarn::Ptr<EthDevPamCollection> pamCollection,
                                   Quarn::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir,
                                   Quarn::Ptr<Velo::PamFactory> pamFactory)
    : desiredIntfDir_(std::move(desiredIntfDir)),
      pamCollection_(std::move(pamCollection)),
      deviceIntfStatusDir_(std::move(deviceIntfStatusDir)),
      pamFactory_(std::move(pamFactory)),
      desiredReactor_(this) {
  desiredReactor_.notifierIs(desiredIntfDir_.ptr());
}

// The sockets stay in the collection for whoever still holds it; they close
// when the last holder lets go.
EthDevPamManager::~EthDevPamManager() = default;

void EthDevPamManager::requireDisabled() const { QASSERT(!enabled()); }

void EthDevPamManager::ethProtocolIs(std::uint16_t protocol) {
  requireDisabled();
  pamConfig_.ethProtocol = protocol;
}

void EthDevPamManager::listenAddrIs(const Velo::EthAddr& addr) {
  requireDisabled();
  pamConfig_.listenAddr = addr;
}

void EthDevPamManager::filterProgramIs(Velo::PamFilterProgram program) {
  requireDisabled();
  pamConfig_.filterProgram = std::move(program);
}

void EthDevPamManager::maxRxPktDataIs(std::size_t bytes) {
  requireDisabled();
  pamConfig_.maxRxPktData = bytes;
}

void EthDevPamManager::perIntfSocketIs(bool perIntfSocket) {
  requireDisabled();
  if (!perIntfSocket) throw std::invalid_argument("EthDevPamManager: only per-interface sockets are supported");
  perIntfSocket_ = perIntfSocket;
}

void EthDevPamManager::enabledIs(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  std::vector<Velo::IntfId> ports;
  for (const auto& [intfId, desired] : desiredIntfDir_->intfDesireds()) ports.push_back(intfId);
  for (const auto& [intfId, pam] : pamCollection_->intfPams()) ports.push_back(intfId);
  for (const Velo::IntfId& intfId : ports) doSync(intfId);
}

void EthDevPamManager::handleIntfDesired(const Velo::IntfId& intfId) { doSync(intfId); }

void EthDevPamManager::handlePamClosed(Velo::IntfId intfId) {
  QTRACE(interfaceTrace, 4, "EthDevPamManager: the socket of " << intfId << " closed");
  pamReactors_.erase(intfId);
  if (auto status = deviceIntfStatusDir_->deviceIntfStatus(intfId)) status->pamErrorIs("interface gone");
  pamCollection_->intfPamDel(intfId);
}

void EthDevPamManager::doSync(const Velo::IntfId& intfId) {
  bool wanted = enabled_ && desiredIntfDir_->intfDesired(intfId);
  bool open = pamCollection_->intfPam(intfId) != nullptr;
  if (wanted && !open) doOpen(intfId);
  if (!wanted && open) doClose(intfId);
  if (!desiredIntfDir_->intfDesired(intfId)) deviceIntfStatusDir_->deviceIntfStatusDel(intfId);
}

void EthDevPamManager::doOpen(const Velo::IntfId& intfId) {
  Quarn::Ptr<DeviceIntfStatus> status = deviceIntfStatusDir_->deviceIntfStatusIs(intfId);
  Quarn::Ptr<Velo::Pam> pam;
  try {
    if (!pamFactory_) throw std::runtime_error("no packet access factory");
    pam = pamFactory_->pamNew(intfId, pamConfig_);
  } catch (const std::exception& e) {
    QTRACE(interfaceTrace, 4, "EthDevPamManager: cannot open " << intfId << ": " << e.what());
    status->pamErrorIs(e.what());
    return;
  }
  status->ethAddrIs(pam->ethAddr());
  status->pamErrorIs("");
  pamReactors_[intfId] = std::make_unique<PamReactor>(this, pam.ptr());
  pamCollection_->intfPamIs(intfId, std::move(pam));
}

void EthDevPamManager::doClose(const Velo::IntfId& intfId) {
  pamReactors_.erase(intfId);
  pamCollection_->intfPamDel(intfId);
}

}  // namespace Interface
