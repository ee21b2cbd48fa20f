#include "velo/MemPam.h"

#include <stdexcept>

#include "velo/EthHdr.h"

namespace Velo {

MemPam::MemPam(IntfId intfId, const EthAddr& ethAddr, Quarn::Ptr<Quarn::Clock> clock)
    : Pam(std::move(intfId), ethAddr), clock_(std::move(clock)), delivery_(clock_.ptr(), this) {}

MemPam::~MemPam() { peerIs(nullptr); }

void MemPam::peerIs(MemPam* peer) {
  if (peer == peer_) return;
  MemPam* old = peer_;
  peer_ = nullptr;
  if (old) old->peerIs(nullptr);
  peer_ = peer;
  if (peer_) peer_->peerIs(this);
}

void MemPam::close() {
  rxQueue_.clear();
  delivery_.timeIs(Quarn::kInfinity);
  closedIs();
}

Quarn::Ptr<Pkt> MemPam::pktRead() {
  if (rxQueue_.empty()) return nullptr;
  Quarn::Ptr<Pkt> pkt = std::move(rxQueue_.front());
  rxQueue_.pop_front();
  return pkt;
}

bool MemPam::pktWrite(const Pkt& frame) {
  if (frame.bytes() < EthHdr::kSize || !peer_) return false;
  if (tap_) tap_->onFrame(*this, frame);
  peer_->pktArrive(frame);
  return true;
}

void MemPam::pktArrive(const Pkt& frame) {
  if (closed()) return;
  if (frame.bytes() > rxLimit_) {
    rxDroppedInc();
    return;
  }
  rxQueue_.push_back(frame.copy());
  if (delivery_.time() == Quarn::kInfinity) delivery_.timeIs(clock_->now());
}

void MemPam::handleDelivery() {
  if (rxQueue_.empty()) return;
  // A notifiee may drop the last reference to this Pam.
  Quarn::Ptr<MemPam> self(this);
  std::size_t waiting = rxQueue_.size();
  readableCountInc();
  // Go on only while someone takes frames; otherwise they wait for rxPkt().
  if (!rxQueue_.empty() && rxQueue_.size() < waiting) delivery_.timeIs(clock_->now());
}

MemWire::MemWire(const IntfId& a, const EthAddr& aAddr, const IntfId& b, const EthAddr& bAddr,
                 Quarn::Ptr<Quarn::Clock> clock)
    : a_(new MemPam(a, aAddr, clock)), b_(new MemPam(b, bAddr, clock)) {
  a_->peerIs(b_.ptr());
}

Quarn::Ptr<MemPam> MemPamFactory::pam(const IntfId& intfId) const {
  auto it = pams_.find(intfId);
  return it == pams_.end() ? nullptr : it->second;
}

Quarn::Ptr<Pam> MemPamFactory::pamNew(const IntfId& intfId, const PamConfig& config) {
  Quarn::Ptr<MemPam> memPam = pam(intfId);
  if (!memPam) throw std::runtime_error("MemPamFactory: no port " + intfId.name());
  if (memPam->closed()) throw std::runtime_error("MemPamFactory: port " + intfId.name() + " is gone");
  memPam->rxLimitIs(pamRxLimit(config));
  return memPam;
}

}  // namespace Velo
