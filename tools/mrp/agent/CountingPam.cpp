#include "agent/CountingPam.h"

#include <optional>

namespace MrpCli {

CountingPam::CountingPam(Quarn::Ptr<Velo::Pam> socket, PortCounters& counters, Decoder& decoder,
                         EngineCounters engineCounters)
    : Pam(socket->intfId(), socket->ethAddr()),
      socket_(std::move(socket)),
      counters_(counters),
      decoder_(decoder),
      engineCounters_(std::move(engineCounters)),
      reactor_(this) {
  reactor_.notifierIs(socket_.ptr());
  if (socket_->closed()) closedIs();
}

Quarn::Ptr<Velo::Pkt> CountingPam::pktRead() {
  Quarn::Ptr<Velo::Pkt> frame = socket_->rxPkt();
  // Read before the engine takes the frame apart in place.
  if (frame) counters_.leaveAllsReceived += decoder_.leaveAllsIn(frame->span());
  return frame;
}

bool CountingPam::pktWrite(const Velo::Pkt& frame) {
  if (!socket_->txPkt(frame)) return false;
  ++counters_.framesSent;
  counters_.leaveAllsSent += decoder_.leaveAllsIn(frame.span());
  return true;
}

void CountingPam::handleReadable() {
  std::optional<Mrp::MrpCounters> before;
  if (const Mrp::MrpCounters* counters = engineCounters_()) before = *counters;
  readableCountInc();
  const Mrp::MrpCounters* after = engineCounters_();
  if (before && after) counters_.add(*before, *after);
}

}  // namespace MrpCli
