#include "MrpSm/MrpPamSm.h"

#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"

namespace Mrp {

MrpPamSm::MrpPamSm(Quarn::Ptr<Interface::EthDevPamCollection> pamCollection, bool standbyMode, MrpSm* mrpSm)
    : pamCollection_(std::move(pamCollection)), mrpSm_(mrpSm), standbyMode_(standbyMode), collectionReactor_(this) {
  collectionReactor_.notifierIs(pamCollection_.ptr());
}

MrpPamSm::MrpPamSm(std::unique_ptr<MrpPamWiring> wiring, bool standbyMode, MrpSm* mrpSm)
    : MrpPamSm(wiring->pamCollection(), standbyMode, mrpSm) {
  wiring_ = std::move(wiring);
}

void MrpPamSm::wiringDel() {
  if (!wiring_) return;
  wiring_->release();
  wiring_.reset();
}

void MrpPamSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpPamSm::handleInitialized()");
  initializedIs();
  for (const auto& [intfId, pam] : pamCollection_->intfPams()) handlePam(intfId);
}

void MrpPamSm::handleStandbyMode() {
  MRP_TRACE(8, "void Mrp::MrpPamSm::handleStandbyMode()");
  for (const auto& [intfId, intfPamSm] : mrpIntfPamSm_) {
    if (intfPamSm->standbyMode() == standbyMode_) continue;
    intfPamSm->standbyModeIs(standbyMode_);
    intfPamSm->handleStandbyMode();
  }
}

void MrpPamSm::handlePam(const Velo::IntfId& intfId) {
  requireInitialized();
  MRP_TRACE(8, "MrpPamSm::handlePam( " << intfId << " )");
  if (Quarn::Ptr<Velo::Pam> pam = pamCollection_->intfPam(intfId)) {
    QASSERT(!mrpIntfPamSmHas( intfId ));
    mrpIntfPamSmIs(intfId, std::move(pam), standbyMode_);
  } else {
    QASSERT(mrpIntfPamSmHas( intfId ));
    mrpIntfPamSmDel(intfId);
  }
}

void MrpPamSm::floodMsrpdu(const Velo::IntfId& intfId, const Quarn::Ptr<Velo::Pkt>& pkt) {
  MRP_TRACE(8, "MrpPamSm::floodMsrpdu( " << intfId << " )");
  requireInitialized();
  for (const auto& [port, intfPamSm] : mrpIntfPamSm_) {
    if (port == intfId) continue;
    MRP_TRACE(7, "Msrp Tx on " << port);
    intfPamSm->pam()->txPkt(*pkt);
  }
}

void MrpPamSm::transmitAllLeaveAll(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "MrpPamSm::transmitAllLeaveAll( " << intfId << " )");
  if (!initialized() || standbyMode_) return;
  if (Quarn::Ptr<MrpIntfPamSm> intfPamSm = mrpIntfPamSm(intfId)) intfPamSm->transmitAllLeaveAll();
}

Quarn::Ptr<MrpIntfPamSm> MrpPamSm::mrpIntfPamSm(const Velo::IntfId& intfId) const {
  auto it = mrpIntfPamSm_.find(intfId);
  return it == mrpIntfPamSm_.end() ? nullptr : it->second;
}

Quarn::Ptr<MrpIntfPamSm> MrpPamSm::mrpIntfPamSmIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pam> pam,
                                                  bool standbyMode) {
  if (Quarn::Ptr<MrpIntfPamSm> existing = mrpIntfPamSm(intfId)) return existing;
  Quarn::Ptr<MrpIntfPamSm> intfPamSm = new MrpIntfPamSm(intfId, std::move(pam), standbyMode, this);
  mrpIntfPamSm_.emplace(intfId, intfPamSm);
  intfPamSm->handleInitialized();
  return intfPamSm;
}

void MrpPamSm::mrpIntfPamSmDel(Velo::IntfId intfId) {
  auto it = mrpIntfPamSm_.find(intfId);
  if (it == mrpIntfPamSm_.end()) return;
  Quarn::Ptr<MrpIntfPamSm> intfPamSm = std::move(it->second);
  mrpIntfPamSm_.erase(it);
  intfPamSm->doClose();
}

void MrpPamSm::mrpIntfPamSmDelAll() {
  while (!mrpIntfPamSm_.empty()) mrpIntfPamSmDel(mrpIntfPamSm_.begin()->first);
}

}  // namespace Mrp
