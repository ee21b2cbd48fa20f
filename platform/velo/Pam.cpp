#include "velo/Pam.h"

namespace Velo {

Quarn::Ptr<Pkt> Pam::rxPkt() {
  if (closed_) return nullptr;
  Quarn::Ptr<Pkt> pkt = pktRead();
  if (pkt) ++rxPkts_;
  return pkt;
}

bool Pam::txPkt(const Pkt& frame) {
  if (!closed_ && pktWrite(frame)) {
    ++txPkts_;
    return true;
  }
  ++txErrors_;
  return false;
}

void Pam::readableCountInc() {
  ++readableCount_;
  notifiees_.forEach([](Notifiee& n) { n.onReadableCount(); });
}

void Pam::closedIs() {
  if (closed_) return;
  closed_ = true;
  notifiees_.forEach([](Notifiee& n) { n.onClosed(); });
}

}  // namespace Velo
