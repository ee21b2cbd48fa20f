#pragma once

#include <cstddef>
#include <vector>

#include "quarn/EventLoop.h"
#include "quarn/Ptr.h"
#include "velo/Pam.h"
#include "velo/PamFactory.h"

namespace Velo {

// A port's Linux packet socket (AF_PACKET, raw), bound to the network
// interface named like the port, non-blocking, watched by an EventLoop. The
// filter program is attached before the socket is bound, so it never sees an
// unfiltered frame; the group address is joined on the interface.
//
// Frames are delivered as they were on the wire: when the kernel has taken a
// VLAN tag out of a received frame (receive VLAN offload), the tag is put
// back from the packet's auxiliary data. Frames this socket sent itself, and
// frames longer than the receive limit, are dropped (the latter counted in
// rxDropped).
//
// Each readability wakeup reads one frame and announces it; a frame that no
// notifiee takes is dropped (counted), so a socket nobody reads cannot keep
// the loop busy. When the interface is deleted the kernel reports the
// network as down; the socket then finds its interface gone, closes and
// tells its notifiees. (An interface already down when it is deleted reports
// nothing more; that socket stays open until it is released.)
class PacketSocketPam : public Pam {
 public:
  // Opens the socket of the interface named intfId.name(); throws
  // std::system_error naming the step that failed.
  PacketSocketPam(const IntfId& intfId, const PamConfig& config, Quarn::Ptr<Quarn::EventLoop> loop);
  ~PacketSocketPam() override;

  // -1 once closed.
  int fd() const { return fd_; }
  int ifindex() const { return ifindex_; }
  std::size_t rxLimit() const { return rxBuffer_.size(); }

 private:
  class FdReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit FdReactor(PacketSocketPam* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleReadable(); }

   private:
    PacketSocketPam* owner_;
  };

  Quarn::Ptr<Pkt> pktRead() override;
  bool mediumHasData() const override;
  bool pktWrite(const Pkt& frame) override;

  void handleReadable();
  // The next frame from the socket that is for this port; null when none.
  Quarn::Ptr<Pkt> frameRecv();
  // A receive error: closes the socket when its interface has gone.
  void handleRxError(int error);
  bool interfaceExists() const;
  void doClose();

  Quarn::Ptr<Quarn::EventLoop> loop_;
  int fd_ = -1;
  int ifindex_ = 0;
  std::vector<unsigned char> rxBuffer_;
  // The frame read by the current wakeup, until a notifiee takes it.
  Quarn::Ptr<Pkt> pending_;
  FdReactor reactor_;
};

// Opens PacketSocketPams watched by one EventLoop.
class PacketSocketPamFactory : public PamFactory {
 public:
  explicit PacketSocketPamFactory(Quarn::Ptr<Quarn::EventLoop> loop) : loop_(std::move(loop)) {}
  Quarn::Ptr<Pam> pamNew(const IntfId& intfId, const PamConfig& config) override;

 private:
  Quarn::Ptr<Quarn::EventLoop> loop_;
};

}  // namespace Velo
