#pragma once

#include <functional>

#include "MrpModel/MrpCounters.h"
#include "agent/PortCounters.h"
#include "decode/Decoder.h"
#include "quarn/Ptr.h"
#include "velo/Pam.h"

namespace MrpCli {

// A port's socket seen through a counter: it hands frames to and from the
// socket it wraps unchanged, and counts into the port's PortCounters the
// frames sent, the LeaveAlls of the frames both ways (read by `decoder`)
// and, for every frame it announces to the engine, what the engine counted
// while it handled that frame.
class CountingPam : public Velo::Pam {
 public:
  // The engine's counters; null while it has none (in standby).
  using EngineCounters = std::function<const Mrp::MrpCounters*()>;

  CountingPam(Quarn::Ptr<Velo::Pam> socket, PortCounters& counters, Decoder& decoder, EngineCounters engineCounters);

 private:
  class SocketReactor : public Velo::Pam::Notifiee {
   public:
    explicit SocketReactor(CountingPam* owner) : owner_(owner) {}
    void onReadableCount() override { owner_->handleReadable(); }
    void onClosed() override { owner_->closedIs(); }

   private:
    CountingPam* owner_;
  };

  Quarn::Ptr<Velo::Pkt> pktRead() override;
  bool mediumHasData() const override { return socket_->hasDataOnSocket(); }
  bool pktWrite(const Velo::Pkt& frame) override;

  // Announces the socket's frame, and counts what handling it added to the
  // engine's counters.
  void handleReadable();

  Quarn::Ptr<Velo::Pam> socket_;
  PortCounters& counters_;
  Decoder& decoder_;
  EngineCounters engineCounters_;
  SocketReactor reactor_;
};

}  // namespace MrpCli
