#pragma once

#include <cstdint>

#include "quarn/Lifecycle.h"
#include "quarn/NboAttrLogSocketOutSm.h"
#include "quarn/Ptr.h"

namespace Mrp {

// Watches the attribute log's output socket so that batched store updates
// can pause while it is clogged: the output counts as clogged while more
// than half of the socket's kernel send buffer is queued. A log that cannot
// be queried never counts as clogged, so a broken log never stops the
// protocol.
class MrpAttrLogSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // `socketOutput` may be null: the process has no attribute log output.
  explicit MrpAttrLogSm(Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput);
  MrpAttrLogSm(const MrpAttrLogSm&) = delete;
  MrpAttrLogSm& operator=(const MrpAttrLogSm&) = delete;

  const Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm>& socketOutput() const { return socketOutput_; }

  // -1 until known.
  std::int32_t attrLogSockFd() const { return attrLogSockFd_; }
  std::int32_t attrLogKernTxBufferSize() const { return attrLogKernTxBufferSize_; }
  std::int32_t attrLogKernTxBufferThreshold() const { return attrLogKernTxBufferThreshold_; }
  // As read by the last isAttrLogOutClogged().
  std::int32_t attrLogKernTxBufferUsage() const { return attrLogKernTxBufferUsage_; }

  // A new descriptor re-reads the send buffer size; the same one does nothing.
  void attrLogSockFdIs(std::int32_t fd);

  void handleInitialized();
  void handleAttrLogSockFd();

  // Bytes queued in the socket's send queue, or -1 when unknown.
  std::int32_t getAttrLogKernTxBufferUsage() const;
  bool isAttrLogOutClogged();

 protected:
  ~MrpAttrLogSm() override = default;

 private:
  friend class MrpAttrLogSmPeer;

  // Follows the output's descriptor when it changes.
  class OutputReactor : public Quarn::NboAttrLog::SocketOutSm::Notifiee {
   public:
    explicit OutputReactor(MrpAttrLogSm* owner) : owner_(owner) {}
    void onFd() override { owner_->doFollowOutputFd(); }

   private:
    MrpAttrLogSm* owner_;
  };

  // A descriptor of 0 means the output has not opened its socket.
  void doFollowOutputFd();

  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput_;
  std::int32_t attrLogSockFd_ = -1;
  std::int32_t attrLogKernTxBufferSize_ = -1;
  std::int32_t attrLogKernTxBufferThreshold_ = -1;
  std::int32_t attrLogKernTxBufferUsage_ = -1;
  OutputReactor outputReactor_{this};
};

}  // namespace Mrp
